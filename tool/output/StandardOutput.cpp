#include "tool/output/StandardOutput.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

constexpr std::size_t kBlockSize = std::size_t{64} << 10;

}  // namespace

StandardOutput::StandardOutput() {
    if (::isatty(STDOUT_FILENO) == 1) {
        throw Failure("binary data does not go to a terminal; use -o FILE, or a pipe", Failure::Kind::Request);
    }
}

void StandardOutput::Write(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0) {
        const int error = errno;
        throw Failure(fmt::format("standard output can't be written: {}", ZU_WEP::ErrnoText(error)));
    }
}

void StandardOutput::WriteZeros(std::uint64_t count) {
    const std::string zeros(std::min<std::uint64_t>(count, kBlockSize), '\0');
    for (; count > 0; count -= std::min<std::uint64_t>(count, zeros.size())) {
        Write(std::string_view(zeros).substr(0, count));
    }
}

}  // namespace stmdcm
