#include "stmdcm/reading/ContainerCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "stmdcm/reading/Words.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/RetiredSection.h"
#include "trace/format/SectionLayout.h"
#include "trace/format/StmSections.h"
#include "trace/tdf/ChainEnd.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// How much of what can't be reached is searched for sections, at each end of it.
constexpr std::uint64_t kMaxLookedAt = 4 << 20;

/// A name may have 4095 bytes.
constexpr std::size_t kMaxShownName = 64;

constexpr char kNothingIsRead[] = "loading fails, and nothing is read";

const WantedSection* WantedOf(std::string_view name) {
    const auto found = std::find_if(kWantedSections.begin(), kWantedSections.end(),
                                    [name](const WantedSection& wanted) { return ComparedName(name) == wanted.name; });
    return found == kWantedSections.end() ? nullptr : &*found;
}

/// Whether SaveFindings tells of it.
bool IsOfSave(std::string_view name, std::uint32_t version) {
    const WantedSection* const wanted = WantedOf(name);
    return wanted != nullptr && version == wanted->version && wanted->name != std::string_view(kDeviceSectionName);
}

/// What a stop is called that is not the end of the file.
const FindingKind* KindOf(ScanStop stop) {
    switch (stop) {
        case ScanStop::LengthOverLimit:
            return &Kind("C-LENGTH-LIMIT");
        case ScanStop::NameOverLimit:
            return &Kind("C-NAME-LIMIT");
        case ScanStop::NoProgress:
            return &Kind("C-LENGTH-ZERO");
        case ScanStop::Wrap:
            return &Kind("C-PAST-4GIB");
        case ScanStop::ReadError:  // a Container throws
        case ScanStop::None:
        case ScanStop::EndOfFile:
        case ScanStop::TornHeader:
            break;
    }
    return nullptr;
}

}  // namespace

const std::array<WantedSection, 3> kWantedSections = {{
    {kCommonSectionName, kCommonSectionVersion, &Kind("C-NO-COMMON"), nullptr, kNothingIsRead},
    {kDeviceSectionName, kDeviceSectionVersion, &Kind("C-NO-DEVID"), &Kind("C-EMPTY-DEVID"),
     "loading fails, and nothing but the object files is read"},
    {kStmSectionName, kStmSectionVersion, &Kind("C-NO-STM"), &Kind("C-EMPTY-STM"),
     "loading fails, and nothing but the object files and DEVID is read"},
}};

void ContainerCheck::Run() {
    if (m_container.Size() > kMaxFileSize) {
        TellOverLimit();
    }
    for (const Section& section : m_container.Sections()) {
        CheckSection(section);
    }
    if (m_container.HasMore()) {
        m_findings.Add(Kind("C-TOO-MANY"), {}, fmt::format("there are more than {} sections", Container::kMaxSections),
                       "those behind were not looked at");
        return;
    }
    TellStop();
    m_saves.Tell(m_container.Stop() == ScanStop::EndOfFile, m_findings);
    TellMissingAndEmpty();
}

void ContainerCheck::TellOverLimit() {
    CaptureSource source(m_container.File());
    const bool canSave = FindChainEnd(source, m_container.Size(), ChainLock::Held).offset < kMaxFileSize;
    m_findings.Add(Kind("C-OVER-4GIB"), {}, fmt::format("the file has {} bytes", m_container.Size()),
                   fmt::format("what is behind offset {} can't be found{}", kMaxFileSize,
                               canSave ? "" : ", and nothing can be saved"));
}

void ContainerCheck::CheckSection(const Section& section) {
    const std::string name = m_container.Name(section);
    const Place place{InWords(Unit::None, std::string_view(name).substr(0, kMaxShownName)), section.offset};
    const bool isOdd = !name.empty() && !IsPlausibleName(name);
    if (section.use == SectionUse::Unreachable) {
        if (section.offset != m_container.StopOffset() && !isOdd && !section.IsTooShort()) {
            TellUnreachable(place);
        }
        return;
    }
    if (isOdd) {
        m_findings.Add(
            Kind("C-NAME-ODD"), place, fmt::format("the name is {}", Quoted(name)),
            name.find('\0') == std::string::npos ? "found by exactly these bytes" : "compared up to the zero byte");
    }
    CheckLength(section, place);
    CheckUse(section, name, place);
    m_saves.Take(section, ComparedName(name));
    NoteWanted(section, name, place);
}

void ContainerCheck::CheckLength(const Section& section, const Place& place) {
    if (section.IsTooShort() && section.length != 0) {
        m_findings.Add(Kind("C-LENGTH-SHORT"), place,
                       fmt::format("the length {} does not cover the header and name of {} bytes", section.length,
                                   section.PayloadOffset() - section.offset),
                       "whoever wants it gets the rest of the file as its payload; a search goes on inside it");
    } else if (section.length != 0 && m_container.IsTorn(section) && section.End() <= kMaxFileSize) {
        m_findings.Add(
            Kind("C-TORN-PAYLOAD"), place,
            fmt::format("the section ends {} past the end of the file",
                        Counted(section.End() - m_container.Size(), "byte")),
            fmt::format("the payload's first {} bytes, which are there, are read", m_container.HeldPayload(section)));
    }
}

void ContainerCheck::CheckUse(const Section& section, const std::string& name, const Place& place) {
    if (section.use == SectionUse::Retired) {
        m_findings.Add(
            Kind("C-RETIRED"), place,
            fmt::format("version {} {}", LiveVersion(section.version),
                        WasInForce(section.version) ? "was taken out of use by an edit" : "was never in force"),
            "not read");
    } else if (section.use == SectionUse::Shadowed && !IsOfSave(name, section.version)) {
        const WantedSection* const wanted = WantedOf(name);
        const bool isWanted = wanted != nullptr && section.version == wanted->version;
        m_findings.Add(isWanted ? Kind("C-SHADOWED") : Kind("C-REPEATED"), place,
                       fmt::format("there is an older section of this name and version {}", section.version),
                       "the older one is read, this one is not");
    }
}

void ContainerCheck::NoteWanted(const Section& section, std::string_view name, const Place& place) {
    const WantedSection* wanted = WantedOf(name);
    if (wanted == nullptr || section.use == SectionUse::Retired) {
        return;
    }
    if (section.version != wanted->version) {
        m_findings.Add(Kind("C-OTHER-VERSION"), place,
                       fmt::format("the version is {}, not {}", section.version, wanted->version), "not read");
    } else if (section.use == SectionUse::Read) {
        m_found[static_cast<std::size_t>(wanted - kWantedSections.data())] = &section;
    }
}

void ContainerCheck::TellStop() {
    const std::uint64_t offset = m_container.StopOffset();
    const ScanStop stop = m_container.Stop();
    if (stop == ScanStop::TornHeader) {
        TellTornHeader(offset);
    } else if (const FindingKind* kind = KindOf(stop)) {
        const std::uint64_t rest = m_container.File().Held(offset, m_container.Size());
        m_findings.Add(*kind, {{}, offset}, ScanStopText(stop),
                       fmt::format("a search ends here, {} in front of the end of the file", Counted(rest, "byte")));
        TellLost(offset);
    }
}

void ContainerCheck::TellTornHeader(std::uint64_t offset) {
    const std::uint64_t rest = m_container.File().Held(offset, m_container.Size());
    const bool statesLength = rest >= SectionHeader::kLengthSize;
    m_findings.Add(statesLength ? Kind("C-TORN-HEADER") : Kind("C-TRAILING-BYTES"), {{}, offset},
                   fmt::format("{} at the end of the file are no whole header", Counted(rest, "byte")),
                   statesLength ? "a search ends here; what is in front of it is read as ever"
                                : "a search ends here; a section saved behind it will not be found");
    TellLost(offset);
}

/// Looks for the sections that the managers want where no search comes.
void ContainerCheck::TellLost(std::uint64_t begin) {
    const std::uint64_t end = m_container.Size();
    const std::string front = m_container.File().Read(begin, kMaxLookedAt);
    TellLostIn(front, begin);
    if (end - begin > kMaxLookedAt) {
        const std::uint64_t back = std::max(begin + kMaxLookedAt, end - kMaxLookedAt);
        TellLostIn(m_container.File().Read(back, kMaxLookedAt), back);
    }
}

void ContainerCheck::TellLostIn(std::string_view bytes, std::uint64_t offset) {
    for (const WantedSection& wanted : kWantedSections) {
        const std::string start = EncodeSectionStart(0, wanted.name, wanted.version).substr(SectionHeader::kLengthSize);
        for (auto at = bytes.find(start); at != std::string_view::npos; at = bytes.find(start, at + 1)) {
            const std::uint64_t header = offset + at - SectionHeader::kLengthSize;
            if (at >= SectionHeader::kLengthSize && header > m_container.StopOffset() &&
                m_container.At(header) == nullptr) {
                TellUnreachable({wanted.name, header});
            }
        }
    }
}

void ContainerCheck::TellUnreachable(const Place& place) {
    m_findings.Add(Kind("C-UNREACHABLE"), place, "the section stands behind the place where a search ends",
                   "it is not found");
}

void ContainerCheck::TellMissingAndEmpty() {
    bool hasFailed = false;
    const auto tell = [&](const FindingKind& kind, const Place& place, std::string what, const char* effect) {
        m_findings.Add(kind, place, std::move(what), hasFailed ? "loading has failed before it is looked for" : effect);
        hasFailed = true;
    };
    for (std::size_t i = 0; i < kWantedSections.size(); ++i) {
        const WantedSection& wanted = kWantedSections[i];
        const Section* const found = m_found[i];
        if (found == nullptr) {
            tell(*wanted.missing, {wanted.name, std::nullopt},
                 fmt::format("no section {} of version {} is found", wanted.name, wanted.version), wanted.effect);
        } else if (wanted.empty != nullptr && found->IsEmpty()) {
            tell(*wanted.empty, {wanted.name, found->offset}, "the section holds nothing", wanted.effect);
        }
    }
}

}  // namespace stmdcm
