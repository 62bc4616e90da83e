#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stmdcm/capture/ChangeMode.h"
#include "stmdcm/capture/ChangeNumber.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/capture/LockedFile.h"
#include "trace/tdf/ChainEnd.h"

namespace stmdcm {

/// A section as it is to be.
struct NewSection {
    std::string name;
    std::uint32_t version = 0;
    std::string payload;
};

/// Puts new sections in the place of old ones, in the capture itself and without a copy of it: see docs/tdf.md,
/// "Changing a configuration in place". Holds the lock of the capture from its construction on, so what is read
/// meanwhile is what will be replaced. Every failure is a Failure that names the file.
class CaptureEditor {
  public:
    /// Refuses a capture in which a new section could not be found. Unless nothing is to be written, a save that was
    /// interrupted in its last step gets that.
    explicit CaptureEditor(const std::string& path, ChangeMode mode = ChangeMode::Write);

    /// As it was when the lock was taken.
    const Container& Contents() const { return m_container; }

    /// Call it once. Each section comes into force by itself, in the order of the list. A failure before that leaves
    /// the capture as it was; a later one leaves some of the new sections in force, each of them whole. Gives whether
    /// they were written.
    bool Replace(const std::vector<NewSection>& sections, ChangeMark mark = {});

  private:
    /// One write of a section's version.
    struct VersionWrite {
        std::uint64_t sectionOffset;
        std::uint32_t version;
        std::string name;  ///< of what it puts in force
    };
    /// A section that nobody reads yet.
    struct HiddenSection {
        std::string start;  ///< header and name
        std::string payload;
    };
    /// What is written: first the sections, then what puts them in force.
    struct Plan {
        std::vector<HiddenSection> sections;
        std::uint64_t size = 0;  ///< of all sections
        std::vector<VersionWrite> switches;
    };

    Plan Prepare(const std::vector<NewSection>& sections, ChangeMark mark) const;
    void Write(const Plan& plan);
    Zu::Wep::Trace::ChainEnd FindEnd() const;
    void RequireReachableEnd() const;
    void EndInterruptedSaves();
    std::vector<const Section*> InUse(const NewSection& section) const;
    HiddenSection Encode(const NewSection& section, std::uint32_t version) const;
    void Append(const Plan& plan);
    void Switch(const VersionWrite& write, const std::string& before);
    /// What of the file is as it was when something fails before the new sections come in force.
    const char* WhatIsChanged() const;

    ChangeMode m_mode;
    LockedFile m_file;
    std::uint64_t m_fileSize;
    Zu::Wep::Trace::ChainEnd m_end;
    Container m_container;
};

}  // namespace stmdcm
