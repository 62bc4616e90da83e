#pragma once

#include <string>
#include <string_view>

namespace ZU_WEP {

enum class ReplaceResult {
    Written,
    CannotOpen,  ///< the file can't be opened for writing; nothing was touched
    Failed       ///< a write, sync, close or rename failed
};

/// Gives the file `path` the content, creating it where it is missing. Follows symbolic links.
///
/// The file is replaced whole, by a temporary file beside it that is renamed over it, with mode and owner kept: after a
/// failure, or a kill at any moment, it holds all of its old or all of its new content (a kill can leave the temporary
/// file, named ".stmdcm-*.tmp"). Only where that can't be done, for want of the right to create a file there or to keep
/// the owner, or because the target is not a regular file, it is written in place.
/// `errno` tells the reason of CannotOpen and Failed. Never throws but for want of memory.
ReplaceResult ReplaceFile(const std::string& path, std::string_view content);

}  // namespace ZU_WEP
