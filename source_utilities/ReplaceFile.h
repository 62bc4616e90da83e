#pragma once

#include <functional>
#include <string>

namespace ZU_WEP {

enum class ReplaceResult {
    Written,
    CannotOpen,  ///< the file can't be opened for writing; nothing was touched, and no text was asked for
    Failed       ///< the disk is full, or making the file, a write, sync, close or rename failed
};

/// Gives the file `path` the text that `build` returns, creating the file where it is missing. Follows symbolic links.
/// `build` is called once, when there is an open file for its text; what it throws is passed on, and an old file stays
/// as it was.
///
/// The file is replaced whole, by a temporary file beside it that is renamed over it, with all that FileMetadata tells
/// kept: after a failure, or a kill at any moment, it holds all of its old or all of its new content. Other names of
/// the same file (hard links) keep the old one. A kill can leave the temporary file, named ".stmdcm-*.tmp"; the next
/// call for a file of the same directory removes it. Only where that can't be done it is written in place: for want of
/// the right to create a file there or to keep its owner, group or an attribute, because the temporary file's name
/// would be too long, or because the target is not a regular file with a name. Hard links stay then, and a kill can
/// leave line feeds behind the new content, up to the old length.
///
/// Waits for nobody: a pipe that nobody reads can't be opened. One free descriptor is enough, and no signal is raised
/// (SIGXFSZ, SIGPIPE). `errno` tells the reason of CannotOpen and Failed. Never throws by itself but for want of
/// memory.
ReplaceResult ReplaceFile(const std::string& path, const std::function<std::string()>& build);

}  // namespace ZU_WEP
