#pragma once

#include <string>
#include <vector>

#include "stmdcm/capture/ChangeMode.h"
#include "stmdcm/images/ImageFinder.h"
#include "stmdcm/pins/PinSection.h"

namespace stmdcm {

class Container;

/// The program images of a capture.
struct ImageList {
    std::string path;
    std::vector<ImageAnswer> answers;
    bool isComplete = true;           ///< false: the capture's list ends within an image, which is not among them
    std::vector<std::string> doubts;  ///< sentences
    std::size_t unresolved = 0;       ///< images that are missing, not readable, or changed and not accepted
    bool hasChanges = false;          ///< there are new places or pins to record
    bool isWritten = false;
};

/// What of the images is recorded.
struct ImageParts {
    bool places = true;  ///< paths and times
    bool pins = false;   ///< what each file is, docs/pins.md
};

/// The pins of the images that were found, or accepted, which get them; the others keep what pins they have. One that
/// can't be read counts no longer as found, which is a doubt more.
std::vector<Pin> MakePins(ImageList& list, ImageExaminer& examiner, bool acceptChanged);

/// How the images of a capture are, as far as `finder` finds them. Throws Failure.
ImageList ListImages(const std::string& path, ImageFinder& finder);

/// Records the images that were found, in place (CaptureEditor). One that its pin tells to be another, or without a pin
/// one with another modification time than the recorded one, is not the one that was captured: it is only recorded when
/// `acceptChanged`, with its own time. Others stay as they were recorded, and pinned.
ImageList UpdateImages(const std::string& path, ImageFinder& finder, bool acceptChanged,
                       ChangeMode mode = ChangeMode::Write, ImageParts parts = {});

}  // namespace stmdcm
