#include "trace/tdf/CaptureSave.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

#include "source_utilities/Log.h"
#include "trace/format/RetiredSection.h"
#include "trace/format/UnfinishedSection.h"
#include "trace/tdf/AppendAt.h"
#include "trace/tdf/TDFError.h"
#include "trace/tdf/TDFFile.h"

namespace Zu::Wep::Trace {

using TDFError::ThrowUnless;
using ZU_WEP::ErrnoText;
using ZU_WEP::FileLock;
using ZU_WEP::PosixFile;

namespace {

/// How often a place is looked for anew where hosts, who take no lock, append just then.
constexpr int kMostAttempts = 100;

ChainLock IsHeld(const FileLock& lock) { return lock.IsHeld() ? ChainLock::Held : ChainLock::NotHeld; }

std::uint64_t SizeOf(const SectionToSave& section) {
    return SectionHeader::kSize + section.name.size() + section.payload.size();
}

/// A length that has wrapped around is of a section that is refused as too large.
std::string StartOf(const SectionToSave& section) {
    return EncodeSectionStart(static_cast<std::uint32_t>(SizeOf(section)), section.name, section.version);
}

bool IsUnwritable(int error) { return error == EACCES || error == EPERM || error == EROFS || error == ETXTBSY; }

}  // namespace

void CaptureSave::PrepareForHost() {
    const PosixFile file = PosixFile::OpenAtOnce(m_path.c_str(), O_RDWR);
    if (!file.IsOpen() || !HasExtension(m_path.c_str(), kTDFExtension) || !StillHasIdentifier(file).value_or(false)) {
        return;
    }
    const FileLock lock(file, m_patience);
    TellUnlocked(lock);
    const auto size = file.Size();
    if (!lock.IsHeld() || !size) {
        return;
    }
    FileSectionSource source(file);
    const ChainEnd end = FindChainEnd(source, *size, ChainLock::Held);
    if (!end.reachable || !MendChain(file, end)) {
        return;  // what fails here fails again in Append
    }
    if (end.offset > *size) {
        file.Truncate(end.offset);  // the host appends at the end of the file
    } else if (end.offset < *size) {
        BridgeZeros(file, end.offset, *size);
    }
}

/// Sections without a name over a tail of zeros, so that what the host appends behind it can be reached. Each is stored
/// before the next, for until then the rest is a tail of zeros, too.
void CaptureSave::BridgeZeros(const PosixFile& file, std::uint64_t offset, std::uint64_t size) {
    const std::uint64_t end = std::max(size, offset + SectionHeader::kSize);
    bool isPassable = file.Truncate(end);
    while (isPassable && offset < end) {
        std::uint64_t length = std::min<std::uint64_t>(end - offset, kMaxSectionLength);
        const std::uint64_t rest = end - offset - length;
        length -= rest > 0 && rest < SectionHeader::kSize ? SectionHeader::kSize : 0;
        const FieldWrite field{offset, EncodeSectionLength(static_cast<std::uint32_t>(length))};
        isPassable = WriteFields(file, {&field, 1});
        offset += length;
    }
}

SaveTarget CaptureSave::Open() {
    if (!HasExtension(m_path.c_str(), kTDFExtension)) {
        return SaveTarget::NotACapture;
    }
    const bool isWritable = Reopen(O_RDWR);
    const int whyNot = errno;
    if (!isWritable && !(IsUnwritable(errno) && Reopen(O_RDONLY))) {
        return CannotOpen(errno);
    }
    const auto hasIdentifier = ReadIdentifier(m_file);
    if (!hasIdentifier && errno != EAGAIN && errno != EISDIR) {
        ZU_WEP::Log(ZU_WEP::LogError, "%s: can't be read, nothing is saved: %s", m_path.c_str(),
                    ErrnoText(errno).c_str());
        return SaveTarget::CannotRead;
    }
    if (hasIdentifier.value_or(false) && !isWritable) {
        errno = whyNot;
        Fail(TDFError::kOpen);
    }
    return hasIdentifier.value_or(false) ? SaveTarget::Capture : SaveTarget::NotACapture;
}

bool CaptureSave::Reopen(int flags) {
    m_file = PosixFile::OpenAtOnce(m_path.c_str(), flags);
    return m_file.IsOpen();
}

SaveTarget CaptureSave::CannotOpen(int error) const {
    if (error == ENOENT || error == ENOTDIR) {
        return SaveTarget::Absent;
    }
    if (error == EISDIR) {
        return SaveTarget::NotACapture;
    }
    ZU_WEP::Log(ZU_WEP::LogError, "%s: can't be opened, nothing is saved: %s", m_path.c_str(),
                ErrnoText(error).c_str());
    return SaveTarget::CannotOpen;
}

void CaptureSave::TellUnlocked(const FileLock& lock) {
    if (!lock.IsHeld() && !m_hasToldOfLock) {
        m_hasToldOfLock = true;
        ZU_WEP::Log(ZU_WEP::LogUnexpected, "%s: %s, saving without it", m_path.c_str(),
                    m_patience.hasRunOut ? "another holds its lock and does not let go" : "its lock can't be had");
    }
}

void CaptureSave::Append(const std::vector<SectionToSave>& sections) {
    {
        const FileLock lock(m_file, m_patience);
        TellUnlocked(lock);
        m_lock = IsHeld(lock);
        FindPlace();
        std::uint64_t span = 0;
        for (const SectionToSave& section : sections) {
            span += SizeOf(section);
        }
        ThrowUnless(m_offset <= kMaxFileSize && span <= kMaxFileSize - m_offset, TDFError::kHeaderOffset);
        if (sections.size() == 2 && span <= kMaxSectionLength) {
            AppendTogether(sections.front(), sections.back());
        } else {
            std::for_each(sections.begin(), sections.end(), [this](const SectionToSave& each) { AppendOne(each); });
        }
    }
    if (!m_file.Close()) {
        Fail(TDFError::kWriteCorrupted);
    }
}

void CaptureSave::FindPlace() {
    m_fileSize = m_file.Size().value_or(0);
    ThrowUnless(m_fileSize >= kFirstSectionOffset, TDFError::kHeaderOffset);
    FileSectionSource source(m_file);
    const ChainEnd end = FindChainEnd(source, m_fileSize, m_lock);
    if (end.stop == ScanStop::ReadError) {
        Fail(TDFError::kReadLength);
    }
    TellBroken(end);
    if (!MendChain(m_file, end)) {
        Fail(TDFError::kWriteLength);
    }
    m_fileSize = std::max(m_fileSize, m_file.Size().value_or(0));  // the mending can have made it longer
    m_offset = end.offset;
}

void CaptureSave::TellBroken(const ChainEnd& end) const {
    if (!end.reachable) {
        ZU_WEP::Log(ZU_WEP::LogError, "%s: no section behind offset %llu can be found: %s", m_path.c_str(),
                    static_cast<unsigned long long>(end.stopOffset), ScanStopText(end.stop));
    }
}

/// Until the section has its true version, no search finds it.
void CaptureSave::AppendOne(const SectionToSave& section) {
    if (SizeOf(section) > kMaxSectionLength) {
        ZU_WEP::Log(ZU_WEP::LogError, "%s: section %s is over 128 MiB: no search finds it, or what is behind it",
                    m_path.c_str(), std::string(section.name).c_str());
    }
    const auto length = static_cast<std::uint32_t>(SizeOf(section));
    FieldWrite version{SectionHeader::kVersionOffset, EncodeSectionVersion(section.version)};
    AppendPieces({EncodeSectionStart(length, section.name, NeverInForce(section.version)), section.payload});
    Finish(version, SizeOf(section));
    m_offset += SizeOf(section);
    m_fileSize = std::max(m_fileSize, m_offset);
}

/// Until the first section has its true length and then its true name, a search passes both as one that nobody reads.
void CaptureSave::AppendTogether(const SectionToSave& first, const SectionToSave& second) {
    const std::uint64_t span = SizeOf(first) + SizeOf(second);
    FieldWrite length{SectionHeader::kLengthOffset, EncodeSectionLength(static_cast<std::uint32_t>(SizeOf(first)))};
    FieldWrite name{SectionHeader::kSize, std::string(first.name)};
    AppendPieces({EncodeSectionStart(static_cast<std::uint32_t>(span), kUnfinishedName, first.version), first.payload,
                  StartOf(second), second.payload});
    Finish(length, span);
    Finish(name, span);
}

void CaptureSave::AppendPieces(std::initializer_list<std::string_view> pieces) {
    AppendResult result = AppendAt(m_file, m_fileSize, m_offset, pieces);
    for (int again = 0; result == AppendResult::HasGrown && again < kMostAttempts; ++again) {
        FindPlace();
        result = AppendAt(m_file, m_fileSize, m_offset, pieces);
    }
    ThrowUnless(result != AppendResult::TooLarge, TDFError::kHeaderOffset);
    if (result != AppendResult::Done) {
        Fail(result == AppendResult::SyncFailed ? TDFError::kWriteCorrupted : TDFError::kWriteData);
    }
}

/// Takes no memory: what wants for it in the midst of a save could not be taken back.
void CaptureSave::Finish(FieldWrite& field, std::uint64_t written) {
    field.offset += m_offset;
    if (!WriteFields(m_file, {&field, 1})) {
        CutBack(m_file, m_fileSize, m_offset, written);
        Fail(TDFError::kWriteCorrupted);
    }
}

void CaptureSave::Fail(const char* text) const {
    const int error = errno;
    ZU_WEP::Log(ZU_WEP::LogError, "%s: %s %s", m_path.c_str(), text, ErrnoText(error).c_str());
    TDFError::Throw(text);
}

}  // namespace Zu::Wep::Trace
