#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tool/ExitStatus.h"
#include "tool/change/ConfigurationBytes.h"
#include "tool/model/Comparison.h"

namespace stmdcm {

class Container;
class Manager;
struct NewSection;
struct PluginSession;

/// What a change did to one file.
struct ChangeResult {
    std::string path;
    std::vector<Difference> changes = {};  ///< left as it was, right as it is to be
    std::vector<std::string> doubts = {};  ///< sentences: what of the old configuration is not in the new one
    bool isNew = false;                    ///< there was no configuration
    bool isWritten = false;

    bool HasChanges() const { return isNew || !changes.empty(); }
    ExitStatus Status() const { return HasChanges() && !doubts.empty() ? ExitStatus::Doubtful : ExitStatus::Done; }
};

/// Changes the properties and use cases that a file holds. The file is locked from reading to writing, so two changes
/// at once lose nothing; where nothing changes nothing is written. Every failure is a Failure that names the file.
class ConfigurationChange {
  public:
    /// Changes what the manager holds.
    using Edit = std::function<void(Manager&)>;

    ConfigurationChange(PluginSession& session, Edit edit)
        : m_session(session), m_bytes(session), m_edit(std::move(edit)) {}

    /// A capture without a configuration.
    enum class Missing { IsFailure, IsMade };

    /// In place, without a copy (docs/tdf.md). The old configuration stays in the capture, for History.
    ChangeResult InCapture(const std::string& path, Missing missing) const;
    /// The same, without writing.
    ChangeResult TryInCapture(const std::string& path, Missing missing) const;
    /// Replaces the file whole. What of its text is not read would be gone: that is a Failure unless `force`.
    ChangeResult InSettings(const std::string& path, bool force) const;

  private:
    struct Plan;

    Plan Make(const Container& capture, Missing missing) const;
    /// Edits what the manager holds, and gives the new text.
    std::string Change(Manager& manager, std::string_view oldText, ChangeResult& result) const;
    void CheckKept(const Configuration& wanted, const std::string& text, ChangeResult& result) const;

    PluginSession& m_session;
    ConfigurationBytes m_bytes;
    Edit m_edit;
};

}  // namespace stmdcm
