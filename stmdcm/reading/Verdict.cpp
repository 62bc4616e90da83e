#include "stmdcm/reading/Verdict.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace stmdcm {

namespace {

/// What a load fails of, in the order in which it would.
constexpr const FindingKind* kHindrances[] = {
    &Kind("F-UNREADABLE"), &Kind("F-EMPTY"),       &Kind("F-NO-CAPTURE"), &Kind("F-EXTENSION"), &Kind("C-NO-COMMON"),
    &Kind("C-NO-DEVID"),   &Kind("C-EMPTY-DEVID"), &Kind("C-NO-STM"),     &Kind("C-EMPTY-STM"), &Kind("T-NOTHING")};

constexpr const FindingKind* kOtherValues[] = {&Kind("T-NOT-A-NUMBER"), &Kind("T-NUMBER-WRAPPED"), &Kind("T-LINE-CUT"),
                                               &Kind("T-ZERO-BYTE"), &Kind("T-EXTRA-FIELD")};
constexpr const FindingKind* kOneLineBlocks[] = {&Kind("T-PACKED-END"), &Kind("T-PACKED-REST"),
                                                 &Kind("T-MIXED-BLOCKS")};

template <class Items, class Item>
bool IsIn(const Items& items, const Item& item) {
    return std::find(std::begin(items), std::end(items), item) != std::end(items);
}

/// What of a configuration the finding says to be missing.
std::string PartOf(const Finding& finding) {
    if (!IsAboutText(*finding.kind)) {
        const std::string& section = finding.place.section;
        return section.empty() ? fmt::format("parts of the section at {}", finding.place.offset.value_or(0))
                               : "parts of " + section;
    }
    if (IsIn(kOtherValues, finding.kind)) {
        return "some values";
    }
    switch (finding.kind->id[0]) {
        case 'U':
            return "some use cases";
        case 'O':
            return "some object files";
        default:
            return IsIn(kOneLineBlocks, finding.kind) ? "some use cases" : "some properties";
    }
}

std::vector<std::string> MissingOfLoaded(const Reading& reading) {
    std::vector<std::string> missing;
    for (const Finding& finding : reading.findings.Sorted()) {
        std::string part = IsLoss(reading, finding) ? PartOf(finding) : "";
        if (!part.empty() && !IsIn(missing, part)) {
            missing.push_back(std::move(part));
        }
    }
    if (reading.findings.Count(Kind("F-TOO-LARGE")) > 0) {
        missing.emplace_back("what is behind 128 MiB");
    }
    if (const std::size_t count = reading.findings.Count(Kind("O-MISSING")); count > 0) {
        missing.push_back(Counted(count, "program image") + " on this machine");
    }
    return missing;
}

std::string Listed(const std::vector<std::string>& words) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const bool isLast = i + 1 == words.size();
        text += fmt::format("{}{}", i == 0 ? "" : isLast ? " and " : ", ", words[i]);
    }
    return text;
}

std::string WhyNot(const Reading& reading) {
    const std::vector<Finding>& findings = reading.findings.Sorted();
    for (const FindingKind* kind : kHindrances) {
        const auto found = std::find_if(findings.begin(), findings.end(),
                                        [&](const Finding& finding) { return finding.kind == kind; });
        if (found != findings.end()) {
            const std::string& section = found->place.section;
            return found->place.offset && !section.empty() ? fmt::format("{}: {}", section, found->what) : found->what;
        }
    }
    return "nothing of it was read";
}

}  // namespace

Verdict VerdictOn(const Reading& reading) {
    if (!reading.isLoaded) {
        const bool isNamed = reading.findings.Count(Kind("F-EXTENSION")) == 0;
        const bool keepsImages = isNamed && reading.kind == ConfigurationKind::Capture && reading.hasObjectFiles;
        std::vector<std::string> missing = {"all properties", "all use cases"};
        if (!keepsImages && reading.kind != ConfigurationKind::Settings) {
            missing.emplace_back("all object files");
        }
        return {false, missing, fmt::format("does not load: {}", WhyNot(reading))};
    }
    std::vector<std::string> missing = MissingOfLoaded(reading);
    std::string sentence = "loads";
    if (!missing.empty()) {
        sentence += ", but without " + Listed(missing);
    }
    if (!reading.loads) {
        sentence += missing.empty() ? ", but the host is told that it failed" : "; the host is told that it failed";
    }
    return {true, std::move(missing), std::move(sentence)};
}

}  // namespace stmdcm
