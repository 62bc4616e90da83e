#pragma once

#include <functional>
#include <string>
#include <vector>

#include "stmdcm/bundle/BundleManifest.h"
#include "stmdcm/capture/ByteSink.h"
#include "stmdcm/pins/ImageExaminer.h"
#include "stmdcm/reading/Configuration.h"

namespace stmdcm {

/// A bundle in a directory, of which every file is what its manifest and the capture's pins say.
class VerifiedBundle {
  public:
    /// Verifies it. Throws Failure, which names the file, for a bundle that is not whole or in which anything is
    /// otherwise: a name that leads elsewhere, a link, another size or hash than that of the manifest or the pin.
    VerifiedBundle(const std::string& directory, ImageExaminer& examiner);

    const BundleManifest& Manifest() const { return m_manifest; }
    std::string CapturePath() const;

    /// The object files of the capture, those of the bundle's images at their place in its directory.
    const std::vector<ObjectFile>& Images() const { return m_images; }
    /// Sentences: which images are not in the bundle.
    const std::vector<std::string>& Doubts() const { return m_doubts; }

    /// Writes the capture with those places. Throws Failure.
    void WriteCapture(ByteSink& to) const;

  private:
    void RequireFile(const BundledFile& file, ImageExaminer& examiner) const;
    void MapImages(ImageExaminer& examiner);
    void Take(const BundledImage& image, ObjectFile& file, ImageExaminer& examiner) const;
    std::string PathOf(const std::string& file) const { return m_directory + "/" + file; }

    std::string m_directory;  ///< absolute, without links
    BundleManifest m_manifest;
    std::vector<ObjectFile> m_images;
    std::vector<std::string> m_doubts;
};

}  // namespace stmdcm
