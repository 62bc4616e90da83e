#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "stmdcm/capture/ChangeMode.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/reading/Comparison.h"

namespace stmdcm {

/// One configuration section that a capture holds, in force or not.
struct HistoryEntry {
    std::size_t number = 0;  ///< from 1, in the order of the file, so it stays as long as the capture
    const char* name = "";
    Section section;

    bool IsCurrent() const { return section.use == SectionUse::Read; }
};

/// The configurations that a capture holds: the sections STMDECODERINFO and DCM_COMMON that are read, that were
/// retired, or that an older one hides. Borrows the container.
class History {
  public:
    explicit History(const Container& container);

    const std::vector<HistoryEntry>& Entries() const { return m_entries; }
    /// As much of it as the file holds.
    std::string Payload(const HistoryEntry& entry) const;
    /// Throws Failure where there is none of that number.
    const HistoryEntry& At(std::size_t number) const;
    /// The one of that name that is in force, nullptr for none.
    const HistoryEntry* Current(const std::string& name) const;

    /// In what it differs from the one that is in force; nothing where none is.
    std::optional<std::vector<Difference>> Compare(const HistoryEntry& entry) const;

  private:
    Configuration Read(const HistoryEntry& entry) const;

    const Container& m_container;
    std::vector<HistoryEntry> m_entries;
};

/// What became of a restored configuration.
struct RestoreResult {
    HistoryEntry restored;
    std::vector<std::string> doubts = {};  ///< sentences: what of it is not read
    bool hasChanges = false;               ///< false: the one in force has the same bytes
    bool isWritten = false;
};

/// What an undone change has left.
struct UndoResult {
    std::vector<HistoryEntry> restored = {};  ///< DCM_COMMON first
    std::vector<Difference> changes = {};     ///< left as it was until now, right as it is to be
    std::vector<std::string> doubts = {};     ///< as of RestoreResult
    bool isWritten = false;
};

/// Puts in force what was in force before the last change, as RestoreConfiguration does: of the section that was
/// appended last the youngest retired one that is not the same, and where DCM_COMMON was appended directly in front of
/// it, which one change does, that of both. Done twice it undoes itself. Throws Failure where nothing was changed.
UndoResult UndoLastChange(const std::string& path, ChangeMode mode = ChangeMode::Write);

/// Puts a copy of the configuration `number` in force, byte for byte, and retires the one that was. See CaptureEditor.
RestoreResult RestoreConfiguration(const std::string& path, std::size_t number, ChangeMode mode = ChangeMode::Write);

}  // namespace stmdcm
