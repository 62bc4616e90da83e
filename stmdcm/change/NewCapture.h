#pragma once

#include <string>
#include <string_view>

namespace stmdcm {

/// The bytes of a capture that holds a device identification alone: a manager can save into it.
std::string EmptyCapture();

/// The bytes of a capture that holds a configuration and nothing else; `settings` is its settings text, `images` the
/// payload of its list of object files (docs/object-files.md).
std::string NewCapture(std::string_view settings, std::string_view images = {});

}  // namespace stmdcm
