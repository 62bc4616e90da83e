#include "tool/commands/SectionsText.h"

#include <fmt/format.h>

#include "stmdcm/capture/Retired.h"
#include "stmdcm/reading/Words.h"
#include "tool/output/Progress.h"

namespace stmdcm {

namespace {

using Zu::Wep::Trace::ScanStop;
using Zu::Wep::Trace::ScanStopText;

constexpr std::size_t kShortestRun = 4;
constexpr std::size_t kBlockSize = std::size_t{64} << 10;

Style UseStyle(SectionUse use) {
    switch (use) {
        case SectionUse::Read:
            return Style::Good;
        case SectionUse::Shadowed:
            return Style::Notable;
        case SectionUse::Retired:
            return Style::Quiet;
        case SectionUse::Unreachable:
            return Style::Bad;
    }
    return Style::Plain;
}

std::string Note(const Container& container, const Section& section) {
    if (section.IsTooShort()) {
        return "its length is below that of its header";
    }
    return container.IsTorn(section)
               ? fmt::format("the file ends within it, {} bytes are missing", section.End() - container.Size())
               : "";
}

}  // namespace

struct SectionsText::Row {
    std::uint64_t offset;
    std::uint64_t length;
    std::uint64_t payload;
    std::uint32_t version;
    SectionUse use;
    std::string name;
    std::string note;
};

void SectionsText::Print(const SectionRuns& runs, bool all) {
    m_text = Heading();
    for (const SectionRun& run : runs) {
        if (run.count >= kShortestRun && !all) {
            AddRun(run);
            continue;
        }
        for (std::size_t i = 0; i < run.count; ++i) {
            AddSection(m_container.Sections()[run.first + i]);
        }
    }
    m_text += Ending();
    Flush(0);
}

std::string SectionsText::Heading() const {
    const std::size_t count = m_container.Sections().size();
    return m_palette.Paint(Style::Heading, m_container.Path()) +
           fmt::format(": {}, {} section{}\n", SizeInWords(m_container.Size()), count, count == 1 ? "" : "s") +
           (count == 0
                ? ""
                : m_palette.Paint(Style::Quiet, fmt::format("{:>12}  {:>10}  {:>10}  {:>10}  {:<11}  {}", "offset",
                                                            "length", "payload", "version", "use", "name")) +
                      "\n");
}

void SectionsText::AddSection(const Section& section) {
    Add({section.offset, section.length, m_container.HeldPayload(section), LiveVersion(section.version), section.use,
         InWords(Unit::None, m_container.Name(section)), Note(m_container, section)});
}

void SectionsText::AddRun(const SectionRun& run) {
    const Section* first = &m_container.Sections()[run.first];
    const Section* last = first + run.count - 1;
    std::uint64_t payload = 0;
    for (const Section* section = first; section <= last; ++section) {
        payload += m_container.HeldPayload(*section);
    }
    std::string name = InWords(Unit::None, m_container.Name(*first));
    const std::string lastName = InWords(Unit::None, m_container.Name(*last));
    if (name != lastName) {
        name += " .. " + lastName;
    }
    Add({first->offset, last->End() - first->offset, payload, LiveVersion(first->version), first->use, name,
         fmt::format("{} sections", run.count)});
}

void SectionsText::Add(const Row& row) {
    m_text += fmt::format("{:>12}  {:>10}  {:>10}  {:>10}  {}  {}", row.offset, row.length, row.payload, row.version,
                          m_palette.Paint(UseStyle(row.use), fmt::format("{:<11}", SectionUseText(row.use))), row.name);
    m_text += row.note.empty() ? "\n" : m_palette.Paint(Style::Notable, fmt::format("  ({})", row.note)) + "\n";
    Flush(kBlockSize);
}

std::string SectionsText::Ending() const {
    std::string text;
    if (m_container.HasMore()) {
        text += fmt::format("There are more than {} sections; those behind are not listed.\n", Container::kMaxSections);
    } else if (m_container.Stop() != ScanStop::EndOfFile) {
        text += fmt::format("Every search ends at offset {}: {}. Try check and recover.\n", m_container.StopOffset(),
                            ScanStopText(m_container.Stop()));
    }
    if (!m_container.HasMore() && m_container.TrailingLength() > 0) {
        text += fmt::format("{} from offset {} on belong to no section.\n", SizeInWords(m_container.TrailingLength()),
                            m_container.TrailingOffset());
    }
    return m_palette.Paint(Style::Notable, text);
}

void SectionsText::Flush(std::size_t above) {
    if (m_text.size() > above) {
        m_print(m_text);
        m_text.clear();
    }
}

}  // namespace stmdcm
