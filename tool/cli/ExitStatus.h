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
};

ExitStatus StatusOf(const Failure& failure);
ExitStatus StatusOf(const std::vector<std::string>& doubts);
ExitStatus StatusOf(const Reading& reading);
ExitStatus StatusOf(const ChangeResult& result);
ExitStatus StatusOf(const ImageList& list);

}  // namespace stmdcm
