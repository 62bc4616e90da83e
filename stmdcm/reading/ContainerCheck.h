#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "stmdcm/capture/Container.h"
#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/SaveFindings.h"

namespace stmdcm {

/// A section that the managers read.
struct WantedSection {
    const char* name;
    std::uint32_t version;
    const FindingKind* missing;
    const FindingKind* empty;  ///< nullptr: it may be
    const char* effect;        ///< of its being missing or empty
};

enum class Wanted : std::size_t { Common, DeviceId, Stm };

/// By `Wanted`, in the order in which loading asks for them.
extern const std::array<WantedSection, 3> kWantedSections;

/// Checks the container (docs/tdf.md) and finds the sections that the managers read.
class ContainerCheck {
  public:
    ContainerCheck(const Container& container, Findings& findings) : m_container(container), m_findings(findings) {}

    void Run();

    /// The one that is read; nullptr for none.
    const Section* Found(Wanted section) const { return m_found[static_cast<std::size_t>(section)]; }

    /// The same, unless it must not be empty and is.
    const Section* FoundWithText(Wanted section) const {
        const Section* const found = Found(section);
        return found != nullptr && found->IsEmpty() ? nullptr : found;
    }

  private:
    void TellOverLimit();
    void CheckSection(const Section& section);
    void CheckLength(const Section& section, const Place& place);
    void CheckUse(const Section& section, const std::string& name, const Place& place);
    void NoteWanted(const Section& section, std::string_view name, const Place& place);
    void TellStop();
    void TellTornHeader(std::uint64_t offset);
    void TellLost(std::uint64_t begin);
    void TellLostIn(std::string_view bytes, std::uint64_t offset);
    void TellUnreachable(const Place& place);
    void TellMissingAndEmpty();

    const Container& m_container;
    Findings& m_findings;
    SaveFindings m_saves;
    std::array<const Section*, 3> m_found{};
};

}  // namespace stmdcm
