#include "tool/reports/SectionsReport.h"

#include <fmt/format.h>

#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Words.h"
#include "trace/format/RetiredSection.h"

namespace stmdcm {

namespace {

using Zu::Wep::Trace::LiveVersion;
using Zu::Wep::Trace::ScanStop;
using Zu::Wep::Trace::ScanStopText;

constexpr std::size_t kShortestRun = 4;
constexpr std::size_t kBlockSize = std::size_t{64} << 10;
constexpr std::string_view kListEnd = "]\n}\n";

/// By use: read, shadowed, retired, unreachable.
constexpr Style kUseStyles[] = {Style::Good, Style::Notable, Style::Quiet, Style::Bad};

std::string MissingInWords(std::uint64_t bytes) { return Counted(bytes, "byte") + (bytes == 1 ? " is" : " are"); }

}  // namespace

struct SectionsReport::Row {
    std::uint64_t offset;
    std::uint64_t length;
    std::uint64_t payload;
    std::uint32_t version;
    SectionUse use;
    std::string name;
    std::string note;
};

void SectionsReport::PrintText(const SectionRuns& runs, bool all) {
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

void SectionsReport::PrintDocument() {
    const Json document = EmptyDocument();
    Json invalid = JsonRenderer::InvalidTexts(document);
    m_text = JsonRenderer::PlainText(document);
    m_text.resize(m_text.size() - kListEnd.size());
    std::size_t index = 0;
    const char* separator = "\n    ";
    for (const Section& section : m_container.Sections()) {
        const std::string name = m_container.Name(section);
        invalid.update(JsonRenderer::InvalidTexts(name, fmt::format("/sections/{}/name", index++)));
        m_text += separator + ItemDocument(section, name);
        separator = ",\n    ";
        Flush(kBlockSize);
    }
    m_text += m_container.Sections().empty() ? "" : "\n  ";
    m_text += invalid.empty() ? kListEnd : fmt::format("],\n  \"bytes\": {}\n}}\n", invalid.dump());
    Flush(0);
}

std::string SectionsReport::Heading() const {
    const std::size_t count = m_container.Sections().size();
    return m_palette.Paint(Style::Heading, Shown(m_container.Path())) +
           fmt::format(": {}, {} section{}\n", SizeInWords(m_container.Size()), count, count == 1 ? "" : "s") +
           (count == 0
                ? ""
                : m_palette.Paint(Style::Quiet, fmt::format("{:>12}  {:>10}  {:>10}  {:>10}  {:<11}  {}", "offset",
                                                            "length", "payload", "version", "use", "name")) +
                      "\n");
}

std::string SectionsReport::Note(const Section& section) const {
    if (section.IsTooShort()) {
        return "its length is below that of its header";
    }
    return m_container.IsTorn(section)
               ? fmt::format("the file ends within it, {} missing", MissingInWords(section.End() - m_container.Size()))
               : "";
}

void SectionsReport::AddSection(const Section& section) {
    Add({section.offset, section.length, m_container.HeldPayload(section), LiveVersion(section.version), section.use,
         Shown(m_container.Name(section)), Note(section)});
}

void SectionsReport::AddRun(const SectionRun& run) {
    const Section* first = &m_container.Sections()[run.first];
    const Section* last = first + run.count - 1;
    std::uint64_t payload = 0;
    for (const Section* section = first; section <= last; ++section) {
        payload += m_container.HeldPayload(*section);
    }
    std::string name = Shown(m_container.Name(*first));
    const std::string lastName = Shown(m_container.Name(*last));
    if (name != lastName) {
        name += " .. " + lastName;
    }
    Add({first->offset, last->End() - first->offset, payload, LiveVersion(first->version), first->use, name,
         fmt::format("{} sections", run.count)});
}

void SectionsReport::Add(const Row& row) {
    m_text += fmt::format(
        "{:>12}  {:>10}  {:>10}  {:>10}  {}  {}", row.offset, row.length, row.payload, row.version,
        m_palette.Paint(kUseStyles[static_cast<std::size_t>(row.use)], fmt::format("{:<11}", SectionUseText(row.use))),
        row.name);
    m_text += row.note.empty() ? "\n" : m_palette.Paint(Style::Notable, fmt::format("  ({})", row.note)) + "\n";
    Flush(kBlockSize);
}

std::string SectionsReport::Ending() const {
    std::string text;
    if (m_container.HasMore()) {
        text += fmt::format("There are more than {} sections; those behind are not listed.\n", Container::kMaxSections);
    } else if (m_container.Stop() != ScanStop::EndOfFile) {
        text +=
            fmt::format("Every search ends at offset {}: {}. Try check{}.\n", m_container.StopOffset(),
                        ScanStopText(m_container.Stop()), m_container.Stop() == ScanStop::Wrap ? "" : " and recover");
    }
    if (!m_container.HasMore() && m_container.TrailingLength() > 0) {
        text += fmt::format("{} from offset {} on belong to no section.\n", SizeInWords(m_container.TrailingLength()),
                            m_container.TrailingOffset());
    }
    return m_palette.Paint(Style::Notable, text);
}

Json SectionsReport::EmptyDocument() const {
    return JsonRenderer::Document(
        "sections",
        {{"file", m_container.Path()},
         {"size", std::to_string(m_container.Size())},
         {"whole", m_container.IsWhole()},
         {"search_ends",
          {{"offset", std::to_string(m_container.StopOffset())}, {"reason", ScanStopText(m_container.Stop())}}},
         {"trailing",
          {{"offset", std::to_string(m_container.TrailingOffset())},
           {"length", std::to_string(m_container.TrailingLength())}}},
         {"more", m_container.HasMore()},
         {"sections", Json::array()}});
}

const char* SectionsReport::Problem(const Section& section) const {
    if (section.IsTooShort()) {
        return "\"too_short\"";
    }
    return m_container.IsTorn(section) ? "\"torn\"" : "null";
}

std::string SectionsReport::ItemDocument(const Section& section, const std::string& sectionName) const {
    const std::string name = Json(sectionName).dump(-1, ' ', false, Json::error_handler_t::replace);
    return fmt::format(
        R"({{"name": {}, "version": {}, "live_version": {}, "offset": "{}", "length": {}, "payload_offset": "{}", )"
        R"("payload_length": {}, "payload_held": "{}", "use": "{}", "problem": {}}})",
        name, section.version, LiveVersion(section.version), section.offset, section.length, section.PayloadOffset(),
        section.IsTooShort() ? "null" : std::to_string(section.PayloadLength()), m_container.HeldPayload(section),
        SectionUseText(section.use), Problem(section));
}

void SectionsReport::Flush(std::size_t above) {
    if (m_text.size() > above) {
        m_print(m_text);
        m_text.clear();
    }
}

}  // namespace stmdcm
