#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "tool/check/BlockCheck.h"
#include "tool/check/Findings.h"
#include "trace/dcm/StmProperties.h"

namespace stmdcm {

enum class FileKind { Capture, Settings };

/// What was found in a file, and what loading it gives.
struct FileReport {
    std::string path;
    std::optional<FileKind> kind;  ///< nothing for a file that can't be read
    Findings findings;

    bool loads = false;  ///< the result of loading
    Zu::Wep::Trace::StmProperties properties;
    UsecaseModels usecases;
    std::size_t objectFiles = 0;
};

/// Checks one file, a capture or a settings text: told by its first bytes and then its name, or as `forced`. Throws
/// nothing for a bad file.
FileReport CheckFile(const std::string& path, std::optional<FileKind> forced);

}  // namespace stmdcm
