#include "tool/output/InputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "trace/format/SectionLayout.h"

namespace stmdcm {

namespace {

constexpr std::size_t kCopyPiece = 1 << 16;

/// As much as fits, less only at the end.
std::size_t ReadStandardInput(char* buffer, std::size_t size) {
    std::size_t done = 0;
    for (ssize_t count = 1; done < size && count != 0;) {
        count = ::read(STDIN_FILENO, buffer + done, size - done);
        if (count < 0 && errno != EINTR) {
            const int error = errno;
            throw Failure(kStandardStream, fmt::format("standard input can't be read: {}", ZU_WEP::ErrnoText(error)));
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return done;
}

/// Gives the path of the copy: hosts want the name of a capture to say what it is.
std::string CopyStandardInput(const std::filesystem::path& directory) {
    std::array<char, kCopyPiece> piece;
    std::size_t count = ReadStandardInput(piece.data(), piece.size());
    const bool isCapture = std::string_view(piece.data(), count).starts_with(Zu::Wep::Trace::kTDFIdentifier);
    const std::string path = directory / (isCapture ? "input.tdf" : "input.txt");
    const auto file = ZU_WEP::PosixFile::Open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    for (; count > 0; count = ReadStandardInput(piece.data(), piece.size())) {
        if (!file.IsOpen() || !file.Write({piece.data(), count})) {
            const int error = errno;
            throw Failure(directory.parent_path().string(),
                          fmt::format("standard input can't be copied to there: {}", ZU_WEP::ErrnoText(error)));
        }
    }
    return path;
}

}  // namespace

InputFile::InputFile(const std::string& name) : m_name(name), m_path(name) {
    if (name == kStandardStream) {
        m_path = CopyStandardInput(m_home.emplace().Path());
    }
}

}  // namespace stmdcm
