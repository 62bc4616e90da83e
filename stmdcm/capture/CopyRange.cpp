#include "stmdcm/capture/CopyRange.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

constexpr std::uint64_t kBlockSize = 1 << 20;

}  // namespace

void CopyRange(const CaptureFile& from, std::uint64_t offset, std::uint64_t length, ByteSink& to,
               const OnCopied& onCopied) {
    std::string buffer(std::min(length, kBlockSize), '\0');
    const std::uint64_t end = offset + length;
    for (std::uint64_t position = offset; position < end;) {
        const std::uint64_t data = std::min(end, from.NextData(position));
        if (data > position) {
            to.WriteZeros(data - position);
            position = data;
        }
        for (const std::uint64_t hole = std::min(end, from.NextHole(position)); position < hole;) {
            const std::size_t wanted = std::min(hole - position, kBlockSize);
            if (from.ReadAt(position, buffer.data(), wanted) != wanted) {
                throw Failure(from.Path(), "the file has become shorter meanwhile; try again");
            }
            to.Write({buffer.data(), wanted});
            position += wanted;
            onCopied(position - offset);
        }
        onCopied(position - offset);
    }
}

}  // namespace stmdcm
