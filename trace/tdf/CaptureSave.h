#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "source_utilities/FileLock.h"
#include "source_utilities/PosixFile.h"
#include "trace/tdf/ChainEnd.h"

namespace Zu::Wep::Trace {

/// What a file is to a save.
enum class SaveTarget {
    Capture,
    Absent,
    NotACapture,  ///< by its name or by its first bytes
    CannotOpen,
    CannotRead
};

/// What SaveSTMConfigurationToTDF answers for a file that is none to save into: hosts call it for any file, and take
/// one that is not a capture for saved. All others answer false. A failure to look is none of this.
constexpr bool IsQuietlySaved(SaveTarget target) {
    return target == SaveTarget::Absent || target == SaveTarget::NotACapture;
}

struct SectionToSave {
    std::string_view name;
    std::uint32_t version = 0;
    std::string payload;
};

/// One save into a capture, all or nothing (docs/tdf.md, "In one step, by a manager"). The lock is waited for as long
/// as its patience lasts, in all; then the save goes on without it. Errors are `vornError` with the text of the step
/// that failed; the file is then as it was.
class CaptureSave {
  public:
    /// Opens nothing yet. Borrows the path.
    explicit CaptureSave(const std::string& path, ZU_WEP::LockPatience patience = {})
        : m_path(path), m_patience(patience) {}
    CaptureSave(const CaptureSave&) = delete;
    CaptureSave& operator=(const CaptureSave&) = delete;

    /// For a save in which the host writes its part first: mends the end of the chain and makes it the end of the file,
    /// if it can, so that this can be reached too. Leaves neither file nor lock held.
    void PrepareForHost();

    /// Opens the file and looks at it, once for the save; says in the log what it can't open or read. Throws for a
    /// capture that can't be written.
    SaveTarget Open();

    /// Appends one section, or two that are there together or not at all; ends the save. Two of more than 128 MiB in
    /// all, which no search passes, are appended one after the other. Call it once, when Open has given Capture.
    void Append(const std::vector<SectionToSave>& sections);

    const ZU_WEP::LockPatience& Patience() const { return m_patience; }

  private:
    void BridgeZeros(const ZU_WEP::PosixFile& file, std::uint64_t offset, std::uint64_t size);
    bool Reopen(int flags);
    SaveTarget CannotOpen(int error) const;
    void TellUnlocked(const ZU_WEP::FileLock& lock);
    void FindPlace();
    void TellBroken(const ChainEnd& end) const;
    void AppendOne(const SectionToSave& section);
    void AppendTogether(const SectionToSave& first, const SectionToSave& second);
    void AppendPieces(std::initializer_list<std::string_view> pieces);
    void Finish(FieldWrite& field, std::uint64_t written);
    [[noreturn]] void Fail(const char* text) const;

    const std::string& m_path;
    ZU_WEP::LockPatience m_patience;
    bool m_hasToldOfLock = false;
    ChainLock m_lock = ChainLock::NotHeld;
    ZU_WEP::PosixFile m_file;
    std::uint64_t m_fileSize = 0;  ///< before what is written next
    std::uint64_t m_offset = 0;    ///< of what is written next
};

}  // namespace Zu::Wep::Trace
