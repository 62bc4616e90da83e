#pragma once

#include <string>
#include <vector>

#include "stmdcm/capture/ChangeMode.h"
#include "stmdcm/images/ImageFinder.h"

namespace stmdcm {

class Container;

/// The program images of a capture.
struct ImageList {
    std::string path;
    std::vector<ImageAnswer> answers;
    std::vector<std::string> doubts;  ///< sentences
    std::size_t unresolved = 0;       ///< images that are missing, or changed and not accepted
    bool hasChanges = false;          ///< there are new places to record
    bool isWritten = false;
};

/// How the images of a capture are, as far as `finder` finds them. Throws Failure.
ImageList ListImages(const std::string& path, ImageFinder& finder);

/// Records the paths of the images that were found as new object files of the capture, in place (CaptureEditor). An
/// image with another modification time than the recorded one is not the one that was captured: it is only recorded
/// when `acceptChanged`, with its own time. Others stay as they were recorded.
ImageList UpdateImages(const std::string& path, ImageFinder& finder, bool acceptChanged,
                       ChangeMode mode = ChangeMode::Write);

}  // namespace stmdcm
