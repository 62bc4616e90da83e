#pragma once

#include <string>
#include <vector>

namespace stmdcm {

struct ChangeResult;
class Failure;
struct ImageList;
struct Reading;

/// What the command tells its caller.
enum class ExitStatus : int {
    Done = 0,
    Failed = 1,    ///< it could not be done, or differences or problems were found
    Usage = 2,     ///< the command line is wrong
    Doubtful = 3,  ///< done, but something was lost or is doubtful
    Unread = 4,    ///< of check and diff: a file could not be read or compared
};

/// `ofWork` is what it is where work could not be done.
ExitStatus StatusOf(const Failure& failure, ExitStatus ofWork);
ExitStatus StatusOf(const std::vector<std::string>& doubts);
/// Of a file that was read with these doubts.
ExitStatus StatusOf(const Reading& reading, const std::vector<std::string>& doubts);
ExitStatus StatusOf(const ChangeResult& result);
ExitStatus StatusOf(const ImageList& list);

}  // namespace stmdcm
