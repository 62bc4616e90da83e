#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "stmdcm/capture/CaptureEditor.h"
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
    /// It was in force before a change retired it, or an older stmdcm did, which did not mark the others.
    bool IsEarlier() const;
    /// "current", "retired", and of those that never were in force "never in force" (retired nevertheless), "shadowed".
    const char* State() const;
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

    /// The one of that name that was in force in front of it, nullptr for none. What an older stmdcm left of an
    /// interrupted change is as `entry` is, and passed over.
    const HistoryEntry* Before(const HistoryEntry& entry) const;
    /// As it comes in force again. `doubts` gets what of it is not read. Throws Failure where it can't.
    NewSection Renewed(const HistoryEntry& entry, std::vector<std::string>& doubts) const;

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

/// Puts a copy of the configuration `number` in force, byte for byte, and retires the one that was. See CaptureEditor.
RestoreResult RestoreConfiguration(const std::string& path, std::size_t number, ChangeMode mode = ChangeMode::Write);

}  // namespace stmdcm
