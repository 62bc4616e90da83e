#pragma once

#include <cstdint>
#include <functional>

#include "stmdcm/capture/ByteSink.h"
#include "stmdcm/capture/CaptureFile.h"

namespace stmdcm {

/// Hears how many bytes are done.
using OnCopied = std::function<void(std::uint64_t done)>;

/// Copies `length` bytes of the file, which it must hold, in pieces; holes stay holes where the sink can keep them.
/// Throws Failure, also when the file has become shorter meanwhile.
void CopyRange(const CaptureFile& from, std::uint64_t offset, std::uint64_t length, ByteSink& to,
               const OnCopied& onCopied);

}  // namespace stmdcm
