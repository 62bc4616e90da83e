#include "stmdcm/capture/LockedFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

constexpr std::chrono::seconds kSilence{1};

std::function<void(const std::string&)>& Teller() {
    static std::function<void(const std::string&)> tell;
    return tell;
}

std::function<void()>& Hearer() {
    static std::function<void()> hear;
    return hear;
}

}  // namespace

void LockedFile::OnLongWait(std::function<void(const std::string&)> tell) { Teller() = std::move(tell); }

void LockedFile::OnInterrupt(std::function<void()> hear) { Hearer() = std::move(hear); }

LockedFile::LockedFile(std::string path) : m_path(std::move(path)) {
    do {
        Open();
    } while (!IsStillAtPath());
}

void LockedFile::Open() {
    m_lock.reset();
    m_file = ZU_WEP::PosixFile::Open(m_path.c_str(), O_RDWR);
    if (!m_file.IsOpen()) {
        const int error = errno;
        throw Failure(m_path, fmt::format("the file can't be opened for writing: {}; nothing was changed",
                                          ZU_WEP::ErrnoText(error)));
    }
    ZU_WEP::LockPatience patience{kSilence};
    m_lock.emplace(m_file, patience);
    if (patience.hasRunOut) {
        if (Teller()) {
            Teller()(m_path);
        }
        m_lock.emplace(m_file, Hearer());
    }
}

/// Who held the lock may have put another file in its place.
bool LockedFile::IsStillAtPath() const {
    struct stat atPath {};
    struct stat locked {};
    return ::stat(m_path.c_str(), &atPath) != 0 || ::fstat(m_file.Descriptor(), &locked) != 0 ||
           (atPath.st_dev == locked.st_dev && atPath.st_ino == locked.st_ino);
}

bool LockedFile::Close() {
    m_lock.reset();
    return m_file.Close();
}

}  // namespace stmdcm
