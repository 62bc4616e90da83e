#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "stmdcm/capture/ChangeMode.h"
#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// What a change did to one file.
struct ChangeResult {
    std::string path;
    std::vector<Difference> changes = {};    ///< left as it was, right as it is to be
    std::vector<std::string> doubts = {};    ///< sentences: what of the old configuration is not in the new one
    std::vector<std::string> warnings = {};  ///< sentences: values of the new one that no target has
    bool isNew = false;                      ///< there was no configuration
    bool isWritten = false;                  ///< false where nothing changes, and after a dry run

    bool HasChanges() const { return isNew || !changes.empty(); }
};

/// Changes the configuration that a capture holds. The file is locked from reading to writing, so two
/// changes at once lose nothing; where nothing changes nothing is written. Every failure is a Failure that names the
/// file.
class ConfigurationChange {
  public:
    using Edit = std::function<void(Settings&)>;

    /// `objectFiles`: the list of program images that the capture is to have; nothing: its own.
    explicit ConfigurationChange(Edit edit, std::optional<std::vector<ObjectFile>> objectFiles = {})
        : m_edit(std::move(edit)), m_objectFiles(std::move(objectFiles)) {}

    /// A capture without a configuration.
    enum class Missing { IsFailure, IsMade };

    /// In place, without a copy (docs/tdf.md). The old configuration stays in the capture, for History.
    ChangeResult InCapture(const std::string& path, Missing missing, ChangeMode mode = ChangeMode::Write) const;

  private:
    struct Plan;

    Plan Make(const Container& capture, Missing missing) const;
    /// Edits what was read, and gives the new text.
    std::string Change(Reading& reading, ChangeResult& result) const;

    Edit m_edit;
    std::optional<std::vector<ObjectFile>> m_objectFiles;
};

/// What of `wanted` is not in what a host reads of the text, such as the end of a long name; in sentences.
std::vector<std::string> NotKept(const Configuration& wanted, const std::string& text);

}  // namespace stmdcm
