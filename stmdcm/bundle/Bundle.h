#pragma once

#include <functional>
#include <string>
#include <vector>

#include "source_utilities/PosixFile.h"
#include "stmdcm/bundle/BundleManifest.h"
#include "stmdcm/capture/ByteSink.h"
#include "stmdcm/images/ImageUpdate.h"

namespace stmdcm {

/// Where the files of a bundle go.
class BundleFolder {
  public:
    virtual ~BundleFolder() = default;
    /// A new file, below the folder, that is whole when `write` returns. Nobody gets more rights to it than to
    /// `source`, which is called `input`; without one it is a file as any. Throws Failure.
    virtual void Add(const std::string& name, const std::string& input, const ZU_WEP::PosixFile* source,
                     const std::function<void(ByteSink&)>& write) = 0;
};

/// What a bundle holds.
struct Bundle {
    BundleManifest manifest;
    ImageList images;                      ///< of the capture, with those that are not in the bundle
    std::vector<std::string> doubts = {};  ///< sentences: what is not in it
};

/// Writes the capture, with pins of all its images, and the images into the folder; the manifest comes last. Refuses a
/// capture of which an image is not found, unless `force`. Throws Failure, also where a file is changed meanwhile.
Bundle WriteBundle(const std::string& capture, ImageFinder& finder, bool force, BundleFolder& folder);

/// The page that says how to decode the capture elsewhere.
std::string BundlePage(const Bundle& bundle);

}  // namespace stmdcm
