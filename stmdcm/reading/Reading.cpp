#include "stmdcm/reading/Reading.h"
#include "stmdcm/reading/Words.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureFile.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/reading/BlockFindings.h"
#include "stmdcm/reading/BlockStructure.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/ContainerCheck.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "stmdcm/reading/Plausibility.h"
#include "stmdcm/reading/PropertyFindings.h"
#include "stmdcm/reading/UsecaseFindings.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/SectionLayout.h"
#include "trace/tdf/TDFHandler.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::uint64_t kLookedAt = 4096;

/// Warnings of text that is ignored: it is not in what is read, so it is gone when that is written.
constexpr const FindingKind* kIgnoredText[] = {&Kind("T-EXTRA-FIELD"), &Kind("U-UNKNOWN-KEY"), &Kind("U-STRAY-LINE"),
                                               &Kind("U-FORMULA-LINE")};

/// What ends the row of sections, and recover can't mend.
constexpr const FindingKind* kRowLimits[] = {&Kind("C-OVER-4GIB"), &Kind("C-PAST-4GIB"), &Kind("C-TOO-MANY")};

std::string Sentence(const Finding& finding) {
    const std::string place = InWords(finding.place);
    return fmt::format("{}{}{}; {}", place, place.empty() ? "" : ": ", finding.what, finding.effect);
}

/// Gives whether the text is clean.
bool ReadTextInto(std::string text, const LineLimits& limits, const Place& place, PropertyFindings& properties,
                  Reading& reading) {
    Settings& settings = *reading.settings;
    Findings& findings = reading.findings;
    const SettingsText read(std::move(text), limits, settings.Applier(), &properties);
    properties.Finish(read.Blocks());
    BlockFindings blocks(read.Blocks(), place, findings);
    settings.Read(read.Blocks(), &blocks);
    Fill(reading.configuration, settings);
    TellUsecases(reading.configuration, blocks, place, findings);
    CheckStructure(read.Blocks(), blocks, place, findings);
    const Configuration& configuration = reading.configuration;
    if (properties.CountSet() == 0 && configuration.sc.empty() && configuration.cpt.empty() &&
        configuration.pmi.empty()) {
        findings.Add(Kind("T-NOTHING"), place, "the text sets no property and holds no use case",
                     "everything stays as the reader has it, but for its use cases, which are gone");
    }
    return read.IsClean();
}

/// Reads one file into its answer.
class Reader {
  public:
    explicit Reader(Reading& reading, ImageExaminer* examiner = nullptr)
        : m_reading(reading), m_findings(reading.findings), m_examiner(examiner) {}

    void ReadSettings(const CaptureFile& file) {
        m_reading.kind = ConfigurationKind::Settings;
        const bool isTooLarge = file.Size() > kMaxSettingsFileSize;
        if (isTooLarge) {
            m_findings.Add(Kind("F-TOO-LARGE"), {}, fmt::format("the file has {} bytes", file.Size()),
                           fmt::format("the first {} are read, and loading gives false", kMaxSettingsFileSize));
        }
        PropertyFindings properties(TextKind::File, {}, m_findings);
        const bool isClean =
            ReadTextInto(file.Read(0, kMaxSettingsFileSize), kFileLineLimits, {}, properties, m_reading);
        m_reading.loads = isClean && !isTooLarge;
        TellDoubtfulValues(
            m_reading.settings->properties,
            [&](std::size_t i) { return properties.SetOnLine(i) == 0 ? std::nullopt : properties.OriginOf(i); },
            m_findings);
        m_reading.isLoaded = m_reading.hasSettings = m_findings.Count(Kind("T-NOTHING")) == 0;
    }

    void ReadCapture(const Container& container) {
        m_reading.kind = ConfigurationKind::Capture;
        ContainerCheck sections(container, m_findings);
        sections.Run();
        const bool hasName = KindOfName(container.Path()) == ConfigurationKind::Capture;
        if (!hasName) {
            m_findings.Add(Kind("F-EXTENSION"), {}, "the name does not end in \".tdf\"",
                           "loading fails, and nothing is read");
        }
        const auto common = Payload(container, sections.Found(Wanted::Common));
        const auto device = Payload(container, sections.FoundWithText(Wanted::DeviceId));
        const auto stm = Payload(container, sections.FoundWithText(Wanted::Stm));
        m_reading.hasObjectFiles = common.has_value();
        m_reading.hasDevice = device.has_value();
        m_reading.hasDeviceText = device && !device->empty() && *device != kNoDeviceText;
        m_reading.hasSettings = stm.has_value();
        if (common) {
            m_reading.configuration.objectFiles = ReadObjectFiles(*common, PlaceOf(sections, Wanted::Common),
                                                                  m_findings, ReadPins(container), m_examiner);
        }
        ReadTexts(sections, device, stm);
        m_reading.loads = m_reading.isLoaded = hasName && common && device && stm;
    }

  private:
    PinList ReadPins(const Container& container) {
        PinList pins = PinList::Of(container);
        m_reading.pins = pins.pins.size();
        if (!pins.isComplete) {
            m_findings.Add(Kind("O-PINS-TORN"), {kPinSectionName, std::nullopt},
                           fmt::format("the pins end within number {}", pins.pins.size() + 1),
                           fmt::format("passed over; stmdcm takes the {} in front of it", pins.pins.size()));
        }
        for (const Section& section : pins.unknown) {
            m_findings.Add(Kind("O-PINS-VERSION"), {kPinSectionName, section.offset},
                           fmt::format("the version is {}, not {}", section.version, kPinSectionVersion),
                           "passed over; these pins count for nothing");
        }
        return pins;
    }

    /// DEVID first: STMDECODERINFO sets properties again.
    void ReadTexts(const ContainerCheck& sections, const std::optional<std::string>& device,
                   const std::optional<std::string>& stm) {
        PropertyFindings deviceFindings(TextKind::DeviceId, PlaceOf(sections, Wanted::DeviceId), m_findings);
        if (device) {
            m_reading.settings->ReadDevice(*device, &deviceFindings);
        }
        const StmProperties before = m_reading.settings->properties;
        if (!stm) {
            return;
        }
        const Place place = PlaceOf(sections, Wanted::Stm);
        PropertyFindings textFindings(TextKind::Section, place, m_findings);
        ReadTextInto(*stm, LineLimits{}, place, textFindings, m_reading);
        TellDoubtfulValues(
            m_reading.settings->properties,
            [&](std::size_t i) {
                const bool isOfDevice = textFindings.SetOnLine(i) == 0 && deviceFindings.SetOnLine(i) != 0;
                return (isOfDevice ? deviceFindings : textFindings).OriginOf(i);
            },
            m_findings);
        TellOverridden(sections, before, deviceFindings, textFindings);
    }

    void TellOverridden(const ContainerCheck& sections, const StmProperties& before,
                        const PropertyFindings& deviceFindings, const PropertyFindings& textFindings) {
        for (std::size_t i = 0; i < kStmProperties.size(); ++i) {
            const std::int32_t old = NumberOf(before, kStmProperties[i]);
            const std::int32_t now = NumberOf(m_reading.settings->properties, kStmProperties[i]);
            if (deviceFindings.SetOnLine(i) != 0 && textFindings.SetOnLine(i) != 0 && old != now) {
                m_findings.Add(Kind("D-OVERRIDDEN"),
                               PlaceOf(sections, Wanted::DeviceId).AtLine(deviceFindings.SetOnLine(i)),
                               fmt::format("{} is {} here and {} in {}", kStmProperties[i].name, old, now,
                                           kWantedSections[static_cast<std::size_t>(Wanted::Stm)].name),
                               fmt::format("reads as {}", now));
            }
        }
    }

    static Place PlaceOf(const ContainerCheck& sections, Wanted wanted) {
        const Section* section = sections.Found(wanted);
        return {kWantedSections[static_cast<std::size_t>(wanted)].name,
                section != nullptr ? std::optional(section->offset) : std::nullopt};
    }

    /// As much of the payload as a reader gets; nothing when there is no such section.
    std::optional<std::string> Payload(const Container& container, const Section* section) {
        if (section == nullptr) {
            return std::nullopt;
        }
        m_reading.readSections.push_back(section->offset);
        return container.ReadPayload(*section);
    }

    Reading& m_reading;
    Findings& m_findings;
    ImageExaminer* m_examiner;  ///< nullptr: the program images are not opened
};

/// Whether the finding is about a section that a reader reads.
bool IsAboutReadSection(const Reading& reading, const Finding& finding) {
    const auto& offsets = reading.readSections;
    return finding.place.offset && std::find(offsets.begin(), offsets.end(), *finding.place.offset) != offsets.end();
}

}  // namespace

bool IsLoss(const Reading& reading, const Finding& finding) {
    if (IsAboutText(*finding.kind)) {
        const bool isIgnored =
            std::find(std::begin(kIgnoredText), std::end(kIgnoredText), finding.kind) != std::end(kIgnoredText);
        return isIgnored || finding.kind->severity == Severity::Error;
    }
    // One that ends past 4 GiB is read itself: what is behind it can't be found.
    return finding.kind->severity == Severity::Error && finding.kind != &Kind("C-PAST-4GIB") &&
           IsAboutReadSection(reading, finding);
}

namespace {

void Finish(Reading& reading) {
    if (reading.configuration.properties.empty()) {
        Fill(reading.configuration, *reading.settings);
    }
}

}  // namespace

const char* KindName(ConfigurationKind kind) { return kind == ConfigurationKind::Capture ? "capture" : "settings"; }

ConfigurationKind KindOfName(const std::string& path) {
    return TDFHandler().HasExtension(path.c_str(), "tdf") ? ConfigurationKind::Capture : ConfigurationKind::Settings;
}

void RequireCaptureName(const std::string& path) {
    if (KindOfName(path) != ConfigurationKind::Capture) {
        throw Failure(path, "hosts want the name of a capture to end in .tdf; name another file",
                      Failure::Kind::Request);
    }
}

namespace {

ConfigurationKind KindOf(const CaptureFile& file) {
    const std::string& path = file.Path();
    const bool isNamedCapture = KindOfName(path) == ConfigurationKind::Capture;
    if (file.HasIdentifier() && isNamedCapture) {
        return ConfigurationKind::Capture;
    }
    if (file.HasIdentifier()) {
        throw Failure(
            path,
            "this is a capture, but hosts want the name to end in .tdf; rename it, or make a link of such a name");
    }
    if (isNamedCapture) {
        throw Failure(path, fmt::format("this is no capture: it does not begin with \"{}\"; if it was one, try recover",
                                        kTDFIdentifier));
    }
    if (file.Size() > kMaxSettingsFileSize || file.Read(0, kLookedAt).find('\0') != std::string::npos) {
        throw Failure(path, "this is neither a capture nor settings text");
    }
    return ConfigurationKind::Settings;
}

}  // namespace

ConfigurationKind KindOf(const std::string& path) {
    return KindOf(CaptureFile(path, CaptureFile::Identifier::Optional));
}

Reading Read(const std::string& path) {
    CaptureFile file(path, CaptureFile::Identifier::Optional);
    if (KindOf(file) == ConfigurationKind::Capture) {
        return Read(Container(std::move(file)));
    }
    Reading reading;
    reading.path = path;
    Reader(reading).ReadSettings(file);
    Finish(reading);
    return reading;
}

Reading Read(const Container& capture) {
    Reading reading;
    reading.path = capture.Path();
    Reader(reading).ReadCapture(capture);
    Finish(reading);
    return reading;
}

namespace {

Reading CheckAs(const std::string& path, std::optional<ConfigurationKind> forced, ImageExaminer* examiner) {
    Reading reading;
    reading.path = path;
    const bool isNamedCapture = KindOfName(path) == ConfigurationKind::Capture;
    if (CaptureFile::IsEmpty(path)) {
        const bool isCapture = isNamedCapture || forced == ConfigurationKind::Capture;
        reading.findings.Add(Kind("F-EMPTY"), {}, "the file is empty",
                             isCapture ? "loading fails, and nothing is read"
                                       : "loading gives false, and the use cases that the reader has are gone");
        return reading;
    }
    CaptureFile file(path, CaptureFile::Identifier::Optional);
    const bool isCapture = file.HasIdentifier() || isNamedCapture;
    const auto kind = forced.value_or(isCapture ? ConfigurationKind::Capture : ConfigurationKind::Settings);
    if (kind == ConfigurationKind::Settings) {
        Reader(reading).ReadSettings(file);
    } else if (file.HasIdentifier()) {
        Reader(reading, examiner).ReadCapture(Container(std::move(file)));
    } else {
        reading.kind = kind;
        reading.findings.Add(Kind("F-NO-CAPTURE"), {}, "the file does not begin with \"TDF2\"",
                             "loading fails, and nothing is read");
    }
    Finish(reading);
    return reading;
}

}  // namespace

Reading CheckFile(const std::string& path, std::optional<ConfigurationKind> forced, ImageExaminer* examiner) {
    try {
        return CheckAs(path, forced, examiner);
    } catch (const Failure& failure) {
        Reading reading;
        reading.path = path;
        const bool isItself = failure.File() == path;
        reading.findings.Add(Kind("F-UNREADABLE"), {"", failure.Offset()}, isItself ? failure.Cause() : failure.what(),
                             "loading fails, and nothing is read");
        return reading;
    }
}

std::vector<std::string> Reading::Losses() const {
    std::vector<std::string> losses;
    for (const Finding& finding : findings.Sorted()) {
        if (IsLoss(*this, finding)) {
            losses.push_back(Sentence(finding));
        }
    }
    return losses;
}

std::vector<std::string> Reading::Doubts() const {
    std::vector<std::string> doubts;
    for (const Finding& finding : findings.Sorted()) {
        if (IsLoss(*this, finding) || (!isLoaded && finding.kind->severity == Severity::Error)) {
            doubts.push_back(Sentence(finding));
        }
    }
    return doubts;
}

std::vector<std::string> Reading::Sentences() const {
    std::vector<std::string> sentences = Doubts();
    for (std::string& sentence : sentences) {
        sentence.insert(0, Shown(path) + ": ");
    }
    return sentences;
}

std::vector<std::string> RowDoubts(const Container& capture) {
    Findings findings;
    ContainerCheck(capture, findings).Run();
    std::vector<std::string> doubts;
    for (const Finding& finding : findings.Sorted()) {
        const bool isBroken = finding.kind->severity == Severity::Error && finding.kind->next == &kRecover;
        if (isBroken || std::find(std::begin(kRowLimits), std::end(kRowLimits), finding.kind) != std::end(kRowLimits)) {
            doubts.push_back(Sentence(finding));
        }
    }
    return doubts;
}

std::vector<std::string> PayloadLosses(const Place& place, const std::string& payload) {
    Reading reading;
    reading.readSections = {place.offset.value_or(0)};
    if (place.section == kCommonSectionName) {
        ReadObjectFiles(payload, place, reading.findings);
    } else {
        PropertyFindings properties(TextKind::Section, place, reading.findings);
        ReadTextInto(payload, LineLimits{}, place, properties, reading);
    }
    return reading.Losses();
}

void Reading::RequireLoaded() const {
    if (!isLoaded) {
        throw Failure(path, fmt::format("{}", fmt::join(Doubts(), "; ")));
    }
}

void RequireWhole(const Reading& source, bool force) {
    const std::vector<std::string> losses = source.Losses();
    if (!losses.empty() && !force) {
        throw Failure(source.path, fmt::format("parts of the file are not read ({}); --force goes on without them",
                                               fmt::join(losses, "; ")));
    }
}

void Reading::RequireSettings() const {
    if (!hasSettings) {
        throw Failure(path, fmt::format("{}", fmt::join(Doubts(), "; ")));
    }
}

}  // namespace stmdcm
