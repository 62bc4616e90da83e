#include "trace/tdf/OpenCapture.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <tuple>

#include "source_utilities/Log.h"
#include "trace/tdf/TDFError.h"
#include "trace/tdf/TDFFile.h"

namespace Zu::Wep::Trace {

using TDFError::ThrowUnless;

namespace {

/// What differs when a file was replaced or changed since; a change of its rights shows as well.
auto StateOf(const struct stat& file) {
    return std::tuple(file.st_dev, file.st_ino, file.st_size, file.st_mtim.tv_sec, file.st_mtim.tv_nsec,
                      file.st_ctim.tv_sec, file.st_ctim.tv_nsec);
}

}  // namespace

OpenCapture::OpenCapture(const std::string& path, std::initializer_list<SectionKey> wanted)
    : m_path(path), m_keys(wanted), m_notes(wanted.size()) {}

bool OpenCapture::IsTDF() {
    if (!HasExtension(m_path.c_str(), kTDFExtension)) {
        return false;
    }
    Refresh();
    return m_hasIdentifier;
}

std::uint32_t OpenCapture::PayloadLength(const SectionKey& key) { return Require(key).payloadLength; }

std::string OpenCapture::Read(const SectionKey& key) {
    const SectionInfo& section = Require(key);
    ThrowUnless(section.payloadLength != 0, TDFError::kNoBuffer);
    const std::uint64_t size = m_file.Size().value_or(0);
    const std::uint64_t held = size - std::min(size, section.payloadOffset);
    std::string payload(std::min<std::uint64_t>(section.payloadLength, held), '\0');
    const auto count = m_file.ReadAt(section.payloadOffset, payload.data(), payload.size());
    if (!count) {
        TellFailure("can't be read");
        TDFError::Throw(TDFError::kReadCorrupted);
    }
    payload.resize(*count);  // fewer when the file was cut short meanwhile
    return payload;
}

/// Forgets what was noted where it may not hold any more.
void OpenCapture::Refresh() {
    if (!IsUnchanged()) {
        Open();
    } else if (m_hostWasCalled) {
        TakeIdentifier(StillHasIdentifier(m_file), "can't be read");
    } else {
        return;
    }
    m_hostWasCalled = false;
    StartWalk();
}

void OpenCapture::Open() {
    m_file.Close();  // first, so that one free descriptor is enough
    m_file = ZU_WEP::PosixFile::OpenAtOnce(m_path.c_str(), O_RDONLY);
    // Before a byte is read: what is read later is at least as new as this.
    const bool isSeen = m_file.IsOpen() && ::fstat(m_file.Descriptor(), &m_opened) == 0;
    TakeIdentifier(isSeen ? ReadIdentifier(m_file) : std::nullopt, isSeen ? "can't be read" : "can't be opened");
}

/// `failure` is what `errno` tells the reason of, where nobody knows whether it is there.
void OpenCapture::TakeIdentifier(std::optional<bool> hasIdentifier, const char* failure) {
    m_hasIdentifier = hasIdentifier.value_or(false);
    const bool isNoCapture = errno == ENOENT || errno == ENOTDIR || errno == EISDIR || errno == EAGAIN;
    if (!hasIdentifier && !isNoCapture) {
        TellFailure(failure);
    }
}

void OpenCapture::TellFailure(const char* what) const {
    ZU_WEP::Log(ZU_WEP::LogError, "%s: %s: %s", m_path.c_str(), what, ZU_WEP::ErrnoText(errno).c_str());
}

/// While the file is open nothing else gets its device and inode numbers.
bool OpenCapture::IsUnchanged() const {
    struct stat now {};
    return m_file.IsOpen() && ::stat(m_path.c_str(), &now) == 0 && StateOf(now) == StateOf(m_opened);
}

void OpenCapture::StartWalk() {
    std::fill(m_notes.begin(), m_notes.end(), std::nullopt);
    m_scanner.emplace(m_source);
}

std::size_t OpenCapture::IndexOf(const SectionKey& key) {
    const auto known = std::find(m_keys.begin(), m_keys.end(), key);
    const auto index = static_cast<std::size_t>(known - m_keys.begin());
    if (known == m_keys.end()) {
        m_notes.emplace_back();  // first: without memory for the other there is a note too many, not one too few
        m_keys.push_back(key);
        StartWalk();
    }
    return index;
}

const SectionInfo& OpenCapture::Require(const SectionKey& key) {
    Refresh();
    ThrowUnless(m_file.IsOpen(), TDFError::kLoadFileName);
    ThrowUnless(m_hasIdentifier, TDFError::kFormat);
    const Note& wanted = m_notes[IndexOf(key)];
    const bool isOver = m_scanner->Stop() != ScanStop::None;
    for (SectionInfo section; !wanted && m_scanner->Find(m_keys, section);) {
        const auto met =
            std::find_if(m_keys.begin(), m_keys.end(), [&](const SectionKey& k) { return section.Has(k); });
        Note& note = m_notes[static_cast<std::size_t>(met - m_keys.begin())];
        if (!note) {
            note = section;
        }
    }
    if (!isOver && m_scanner->Stop() == ScanStop::ReadError) {
        TellFailure("can't be read");
    }
    ThrowUnless(wanted.has_value(), TDFError::kSectionSizeNotFound);
    return *wanted;
}

}  // namespace Zu::Wep::Trace
