#include "stmdcm/plugin/WorkingFile.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>
#include <limits>

#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

using ZU_WEP::PosixFile;

namespace {

[[noreturn]] void Fail(const std::string& path, const char* what) {
    const int error = errno;
    throw Failure(path, fmt::format("{}: {}", what, ZU_WEP::ErrnoText(error)));
}

}  // namespace

std::string ReadWorkingFile(const std::string& path) {
    const PosixFile file = PosixFile::Open(path.c_str(), O_RDONLY);
    std::string bytes;
    if (!file.IsOpen() ||
        file.ReadToEnd(bytes, std::numeric_limits<std::uint32_t>::max()) != PosixFile::ReadEnd::EndOfFile) {
        Fail(path, "the file can't be read");
    }
    return bytes;
}

void WriteWorkingFile(const std::string& path, std::string_view bytes) {
    PosixFile file = PosixFile::Open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC);
    if (!file.IsOpen() || !file.WriteAt(0, {bytes}) || !file.Close()) {
        Fail(path, "the file can't be written");
    }
}

}  // namespace stmdcm
