#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/cli/Command.h"
#include "tool/render/Count.h"

namespace stmdcm {

/// What became of one file.
struct FileResult {
    ExitStatus status = ExitStatus::Done;
    std::vector<Count> counts = {};
    std::string failure = {};  ///< a sentence that names the file: why nothing was done; empty: something was
    bool hasDoubts = false;    ///< whatever the status is
};

/// A command's work on one file. It prints through the context alone, and may throw.
using FileWork = std::function<FileResult(const Context& context, const std::string& file)>;

/// What the work on one of many files printed, and what became of it.
struct FileOutcome {
    Told told;
    FileResult result;

    /// The same as bytes for another process of this program, and back.
    std::string Encode() const;
    static FileOutcome Decode(std::string_view bytes);
};

/// Does the work on one of many files; what it throws becomes a failure that is told.
FileOutcome WorkOn(const std::string& file, const FileWork& work, const Context& context);

}  // namespace stmdcm
