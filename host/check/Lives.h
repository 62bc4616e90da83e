#pragma once

#include <atomic>
#include <string>

#include "host/check/HostCall.h"

namespace stmdcm_check {

/// A manager from its making to its end.
struct ManagerLife {
    std::string name;   ///< for sentences: `manager 1 (Core_0/Cluster)`
    std::string made;   ///< the call
    std::string ended;  ///< the call; empty as long as it lives
    std::atomic<int> openCalls{0};

    /// Why nothing may be called any more; empty while it lives.
    std::string Objection() const { return ended.empty() ? "" : "the manager was ended before by " + ended; }
};

/// A record between two changes.
struct RecordLife {
    const ManagerLife& manager;
    const char* kind;
    unsigned long changes = 0;
    std::string changedBy;  ///< the call

    std::string Name() const { return std::string(kind) + " record of " + manager.name; }
};

/// A use case that the host has a pointer to. Of a record, or the one scratch object of its kind.
class UsecaseLife {
  public:
    /// The scratch object.
    explicit UsecaseLife(const char* kind) : m_kind(kind) {}
    UsecaseLife(const RecordLife& record, unsigned int index)
        : m_kind(record.kind), m_record(&record), m_index(index), m_changes(record.changes) {}

    const char* Kind() const { return m_kind; }
    std::string Name() const;
    /// Why nothing may be called any more; empty while it is valid.
    std::string Objection() const;
    void DeletedBy(const HostCall& call) { m_deletedBy = call.Name(); }

  private:
    const char* m_kind;
    const RecordLife* m_record = nullptr;
    unsigned int m_index = 0;
    unsigned long m_changes = 0;
    std::string m_deletedBy;
};

}  // namespace stmdcm_check
