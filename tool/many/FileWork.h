#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/cli/Command.h"

namespace stmdcm {

/// Something of which a summary tells how many there were.
struct Count {
    std::string what;  ///< "changed", or a noun
    std::size_t number = 1;
    bool isNoun = false;  ///< "1 error", "2 errors"
};

/// Of a file that was to be changed: "changed", "would be changed", "as asked already".
Count ChangeCount(bool hasChanges, bool isWritten);

/// "2 errors, 1 note", without those of which there is none; "nothing found" where there is none at all.
std::string InWords(const std::vector<Count>& counts);

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
