#pragma once

#include "stmdcm/capture/ByteSink.h"

namespace stmdcm {

/// Standard output for bytes that are no text.
class StandardOutput final : public ByteSink {
  public:
    /// Throws Failure when it is a terminal, which binary data would confuse.
    StandardOutput();

    void Write(std::string_view bytes) override;
};

}  // namespace stmdcm
