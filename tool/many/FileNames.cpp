#include "tool/many/FileNames.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "stmdcm/reading/PossibleName.h"

namespace stmdcm {

namespace {

constexpr char kStandardInput[] = "-";
constexpr std::size_t kListPiece = 65536;

ZU_WEP::PosixFile OpenList(const std::string& list) {
    if (list.empty() || list == kStandardInput) {
        return {};
    }
    ZU_WEP::PosixFile file = ZU_WEP::PosixFile::Open(list.c_str(), O_RDONLY);
    if (!file.IsOpen()) {
        const int error = errno;
        throw Failure(list, fmt::format("the list of files can't be opened: {}", ZU_WEP::ErrnoText(error)));
    }
    return file;
}

}  // namespace

FileNames::FileNames(std::vector<std::string> named, const std::string& list, bool isZeroEnded, int stop)
    : m_named(std::move(named)),
      m_list(list),
      m_end(isZeroEnded ? '\0' : '\n'),
      m_stop(stop),
      m_file(OpenList(list)),
      m_isListOver(list.empty()) {}

int FileNames::Descriptor() const { return m_list == kStandardInput ? STDIN_FILENO : m_file.Descriptor(); }

std::optional<std::string> FileNames::Next() {
    if (m_taken < m_named.size()) {
        return m_named[m_taken++];
    }
    for (;;) {
        if (std::optional<std::string> name = TakeFromList()) {
            return name;
        }
        if (m_isListOver || !WaitFor(-1)) {
            return std::nullopt;
        }
    }
}

bool FileNames::IsReady() const {
    return m_taken < m_named.size() || m_isListOver || m_buffer.find(m_end, m_begin) != std::string::npos;
}

bool FileNames::WaitFor(int descriptor) {
    std::array<pollfd, 3> places{{{Descriptor(), POLLIN, 0}, {descriptor, POLLIN, 0}, {m_stop, POLLIN, 0}}};
    int count = 0;
    while ((count = ::poll(places.data(), places.size(), -1)) < 0 && errno == EINTR) {
    }
    if (count > 0 && places[0].revents == 0) {
        return false;
    }
    ReadSome();
    return true;
}

/// Empty lines are passed over; nothing where there is no whole one.
std::optional<std::string> FileNames::TakeFromList() {
    while (m_begin < m_buffer.size() && IsReady()) {
        const std::size_t end = std::min(m_buffer.find(m_end, m_begin), m_buffer.size());
        std::string name = m_buffer.substr(m_begin, end - m_begin);
        m_begin = std::min(end + 1, m_buffer.size());
        if (!name.empty()) {
            return name;
        }
    }
    return std::nullopt;
}

void FileNames::ReadSome() {
    m_buffer.erase(0, m_begin);
    m_begin = 0;
    m_buffer.resize(std::min(m_buffer.size(), kLongestName + 1));  // of a name that goes on
    std::array<char, kListPiece> piece;
    const ssize_t count = ::read(Descriptor(), piece.data(), piece.size());
    if (count < 0 && errno != EINTR && errno != EAGAIN) {
        m_whyUnread.emplace(m_list, fmt::format("the list of files can't be read: {}", ZU_WEP::ErrnoText(errno)));
        m_buffer.clear();  // half a name may be another file's
    }
    m_isListOver = count == 0 || m_whyUnread;
    m_buffer.append(piece.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
}

/// A list that is a file is read once more for that.
std::optional<std::uint64_t> FileNames::Total() const {
    struct stat info {};
    if (m_list.empty()) {
        return m_named.size();
    }
    if (m_list == kStandardInput || ::fstat(Descriptor(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    FileNames again({}, m_list, m_end == '\0');
    std::uint64_t count = m_named.size();
    while (again.Next()) {
        ++count;
    }
    return count;
}

}  // namespace stmdcm
