#pragma once

#include <sstream>
#include <string>

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// A record: the use cases of one kind, in the order in which they were added. `Interface` is the kind's use-case
/// interface. The manager owns the record and hands it to the host, which never deletes it; the order of the
/// operations is that of the table. Not locked: one thread at a time. Memory exhaustion leaves as `std::bad_alloc`; the
/// record then holds what it held, and what `RetrieveAllRecords` had read whole.
template <class Interface>
class UsecaseRecordIFBase {
  public:
    using UsecaseInterface = Interface;

    UsecaseRecordIFBase(const UsecaseRecordIFBase&) = delete;
    UsecaseRecordIFBase& operator=(const UsecaseRecordIFBase&) = delete;

    virtual ~UsecaseRecordIFBase() = default;
    virtual unsigned int GetNumUsecases() const = 0;
    /// Removes every use case that the number selects: by job number, or by source index for PMI/CMI.
    virtual void RemoveUsecase(int selector) = 0;
    /// Removes all use cases, or only those without a job (job number below 0). Hosts know it by this name.
    virtual void CleaupUsecases(bool keepThoseWithJob) = 0;
    /// Appends a copy. `usecase` must not be null and must be an object of this library's class for the kind, such as
    /// `GetAUsecaseInfo` and `GetUsecase` return: neither is checked.
    virtual void AddUsecase(const Interface* usecase) = 0;
    /// The use case at a position counted from 0 (PMI/CMI: the first one of a source index), or null. It belongs to
    /// the record and is valid until the next add, remove, clean-up or retrieve.
    virtual Interface* GetUsecase(unsigned int index) = 0;
    /// The one object per kind and process for a host to fill and pass to `AddUsecase`; every call resets it.
    virtual Interface* GetAUsecaseInfo() = 0;
    /// Appends the block text of all use cases (docs/use-case-blocks.md). Returns what the last one's export returned,
    /// 0 for an empty record.
    virtual int SaveAllRecords(std::string& out) const = 0;
    /// Appends a use case for each block of this kind from the stream's position on. Returns 0 whatever the text.
    virtual int RetrieveAllRecords(std::istringstream& in) = 0;

  protected:
    UsecaseRecordIFBase() = default;
};

}  // namespace Zu::Wep::Trace
