#include <fmt/format.h>
#include <fmt/ranges.h>

#include "stmdcm/bundle/Bundle.h"
#include "stmdcm/pins/Sha256.h"
#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace {

constexpr char kWhat[] =
    R"(A capture of STM trace, and the program images that ran while it was made: all that it takes to decode it, bundled by
stmdcm.

  {0}
      the capture: {1} bytes, SHA-256
      {2}
  images/
      the program images, each told by size, SHA-256 and build-id in the capture (its section IMAGE_PINS)
  bundle.txt
      what each of these files is to be, and where the images lay when the capture was made

To decode it on this machine, with DIR for the directory of this page:

  stmdcm unbundle DIR

checks every file against the pins, and writes {0} into the current directory, in which the images are those in
DIR/images. Give that capture to the host trace tool. DIR must stay where it is; once it is moved, do the same again.

Without stmdcm, give the decoder the capture here, and where it asks for a program image the file of it:

)";

}  // namespace

std::string BundlePage(const Bundle& bundle) {
    const BundledFile& capture = bundle.manifest.capture;
    std::string page = fmt::format(kWhat, Escaped(capture.file), capture.size, InHexadecimal(capture.sha256));
    for (const BundledImage& image : bundle.manifest.images) {
        page += fmt::format("  {}, recorded as {}\n      {}: {} bytes, SHA-256\n      {}\n", Escaped(image.name),
                            Escaped(image.path), image.file, image.size, InHexadecimal(image.sha256));
    }
    if (!bundle.doubts.empty()) {
        page += fmt::format("\nWhat is missing or doubtful:\n\n  {}\n", fmt::join(bundle.doubts, "\n  "));
    }
    return page;
}

}  // namespace stmdcm
