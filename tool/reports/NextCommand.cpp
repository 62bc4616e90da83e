#include "tool/reports/NextCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "stmdcm/Failure.h"
#include "stmdcm/change/History.h"
#include "stmdcm/reading/ContainerCheck.h"
#include "stmdcm/reading/Words.h"
#include "stmdcm/recover/RecoveryPlanner.h"
#include "stmdcm/recover/Swallowed.h"

namespace stmdcm {

namespace {

/// With any of these a capture can't be changed in place, like with those that recover mends.
constexpr const FindingKind* kBarriers[] = {&Kind("F-EXTENSION"),    &Kind("F-UNREADABLE"), &Kind("F-EMPTY"),
                                            &Kind("C-OVER-4GIB"),    &Kind("C-PAST-4GIB"),  &Kind("C-TOO-MANY"),
                                            &Kind("C-LENGTH-LIMIT"), &Kind("C-NAME-LIMIT")};

bool Has(const Reading& reading, const FindingKind& kind) { return reading.findings.Count(kind) > 0; }

bool IsBroken(const Reading& reading) {
    return std::any_of(std::begin(kFindingKinds), std::end(kFindingKinds),
                       [&](const FindingKind& kind) { return kind.next == &kRecover && Has(reading, kind); });
}

bool HasBarrier(const Reading& reading) {
    return std::any_of(std::begin(kBarriers), std::end(kBarriers),
                       [&](const FindingKind* kind) { return Has(reading, *kind); });
}

bool HasWholeSection(const Container& capture) {
    return std::any_of(capture.Sections().begin(), capture.Sections().end(),
                       [&](const Section& section) { return !section.IsTooShort() && !capture.IsTorn(section); });
}

/// Whether recover finds anything to keep.
bool IsRecoverable(const std::string& path) try {
    const CaptureFile file(path, CaptureFile::Identifier::Optional);
    if (file.HasIdentifier() && HasWholeSection(Container(path))) {
        return true;
    }
    return RecoveryPlanner(file, [](std::uint64_t) {}).Make().SectionCount() > 0;
} catch (const Failure&) {
    return false;
}

std::string SplitOptions(const Container& capture, const Reading& reading) {
    std::vector<std::string> missing;
    for (const WantedSection& wanted : kWantedSections) {
        if (Has(reading, *wanted.missing)) {
            missing.emplace_back(wanted.name);
        }
    }
    std::string options;
    for (const std::uint64_t offset :
         missing.empty() ? std::vector<std::uint64_t>{} : SwallowedSections(capture, std::move(missing))) {
        options += fmt::format(" --split {}", offset);
    }
    return options;
}

/// Settings before images: they are what most is lost with.
std::size_t NumberOfLater(const Container& capture) {
    const History history(capture);
    std::size_t number = 0;
    bool isSettings = false;
    for (const HistoryEntry& entry : history.Entries()) {
        const bool hasSettings =
            entry.name == std::string_view(kWantedSections[static_cast<std::size_t>(Wanted::Stm)].name);
        if (entry.section.use == SectionUse::Shadowed && hasSettings >= isSettings &&
            !(hasSettings && entry.section.IsEmpty())) {
            number = entry.number;
            isSettings = hasSettings;
        }
    }
    return number;
}

bool IsPlain(char c) {
    constexpr std::string_view kPlain = "_./+-:,@%=";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kPlain.find(c) != std::string_view::npos;
}

}  // namespace

std::string ShellWord(const std::string& text) {
    const std::string word = text.starts_with('-') ? "./" + text : text;
    if (!word.empty() && std::all_of(word.begin(), word.end(), IsPlain)) {
        return word;
    }
    const bool isSafe = Escaped(word) == word;
    std::string quoted = isSafe ? "'" : "$'";
    for (const char c : word) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\'') {
            quoted += isSafe ? "'\\''" : "\\'";
        } else if (!isSafe && (byte < ' ' || byte > '~' || c == '\\')) {
            quoted += fmt::format("\\{:03o}", byte);
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

NextCommands::NextCommands(const Reading& reading, LongNames names)
    : m_reading(reading), m_file(ShellWord(reading.path)) {
    if (names == LongNames::AsFile && m_file.size() > kMaxColumns) {
        m_file = "FILE";
    }
    if (reading.path == kStandardStream) {
        return;
    }
    const bool isBroken = IsBroken(reading);
    m_isRecoverable = isBroken && IsRecoverable(reading.path);
    m_isWhole = reading.kind == ConfigurationKind::Capture && !isBroken && !HasBarrier(reading);
    if (m_isWhole) {
        LookInside();
    }
}

void NextCommands::LookInside() try {
    const auto isMissing = [&](const WantedSection& wanted) { return Has(m_reading, *wanted.missing); };
    const bool isLater = Has(m_reading, Kind("C-LATER-SAVES"));
    if (!isLater && std::none_of(kWantedSections.begin(), kWantedSections.end(), isMissing)) {
        return;
    }
    const Container capture(m_reading.path);
    m_splits = SplitOptions(capture, m_reading);
    m_laterNumber = isLater ? NumberOfLater(capture) : 0;
} catch (const Failure&) {  // it has become another file meanwhile
    m_isWhole = false;
}

std::string NextCommands::For(const FindingKind& kind) const {
    if (m_reading.path == kStandardStream) {
        return "";
    }
    for (const NextStep* step : {kind.next, kind.orElse}) {
        const std::string line = step != nullptr && Meets(step->needs) ? Line(*step) : "";
        if (!line.empty()) {
            return "stmdcm " + line;
        }
    }
    return "";
}

bool NextCommands::Meets(Needs needs) const {
    switch (needs) {
        case Needs::Nothing:
            return true;
        case Needs::WholeCapture:
            return m_isWhole;
        case Needs::Device:
            return m_isWhole && m_reading.hasDevice;
        case Needs::Configuration:
            break;
    }
    const bool isCapture = m_reading.kind == ConfigurationKind::Capture;
    return m_reading.isLoaded && (!isCapture || m_isWhole);
}

std::string NextCommands::Line(const NextStep& step) const {
    if (&step == &kRecover) {
        return m_isRecoverable ? fmt::format("recover {} -o NEW.tdf", m_file) : "";
    }
    if (&step == &kSplit) {
        return m_splits.empty() ? "" : fmt::format("recover{} {} -o NEW.tdf", m_splits, m_file);
    }
    if (&step == &kRestore) {
        return m_laterNumber == 0 ? "" : fmt::format("restore {} {}", m_file, m_laterNumber);
    }
    if (&step == &kApply) {
        return fmt::format("apply GOOD {}", m_file);
    }
    if (&step == &kSearch) {
        return fmt::format("objects {} --search DIR --update", m_file);
    }
    return &step == &kMap ? fmt::format("objects {} --map OLD=NEW --update", m_file)
                          : fmt::format("set {} NAME=VALUE", m_file);
}

}  // namespace stmdcm
