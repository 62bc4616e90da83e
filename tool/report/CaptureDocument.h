#pragma once

#include <string>

#include "stmdcm/images/ImageFinder.h"
#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// What the page knows of one file.
struct CaptureDocument {
    /// Reads it for each of the documents. Of what can't be read the document says why. `finder` holds program images
    /// against their pins.
    CaptureDocument(const std::string& path, ImageFinder& finder);

    std::string line;          ///< docs/report.md, one line with its line feed
    std::string text;          ///< what `show` and `check` print
    std::string whyNotOpened;  ///< a sentence that names the file; empty: it could be opened

  private:
    void AddShown(const std::string& path);
    void AddContainer(const std::string& path);
    void AddImages(const std::string& path, ImageFinder& finder);
    void AddOrigins(const std::string& path);
    void Add(const char* name, const std::string& document);

    Reading m_reading;
};

}  // namespace stmdcm
