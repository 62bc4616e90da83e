#pragma once

// The file "bundle.txt", which tells what the files of a bundle are. Its format is docs/bundle.md.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace stmdcm {

inline constexpr char kManifestFile[] = "bundle.txt";
inline constexpr char kPageFile[] = "README.txt";
inline constexpr char kImageFolder[] = "images";

/// A file of a bundle.
struct BundledFile {
    std::string file;  ///< of an image with "images/" in front
    std::uint64_t size = 0;
    std::string sha256;  ///< kSha256Size bytes
};

/// A program image of the capture, and its file. Several may have one file.
struct BundledImage : BundledFile {
    std::string name;  ///< as it is recorded in the capture, and its path
    std::string path;
};

struct BundleManifest {
    BundledFile capture;
    std::vector<BundledImage> images;

    std::string Text() const;
    /// Throws Failure, with the file's path and the line, for anything that is not just such a text: also for a name
    /// that leads elsewhere than to a file of the bundle.
    static BundleManifest Parse(std::string_view text, const std::string& path);
};

}  // namespace stmdcm
