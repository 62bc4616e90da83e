#include "tool/check/FileCheck.h"

#include <fmt/format.h>
#include <strings.h>

#include <cstdint>
#include <filesystem>
#include <utility>

#include "tool/Failure.h"
#include "tool/capture/CaptureFile.h"
#include "tool/capture/Container.h"
#include "tool/check/ContainerCheck.h"
#include "tool/check/ObjectFileCheck.h"
#include "tool/check/SettingsCheck.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// The longest text or list that is looked at.
constexpr std::uint64_t kMaxText = 1 << 20;

constexpr std::string_view kExtension = ".tdf";

bool HasCaptureName(const std::string& path) {
    return path.size() >= kExtension.size() &&
           ::strcasecmp(path.c_str() + (path.size() - kExtension.size()), kExtension.data()) == 0;
}

/// Checks one file into its report.
class FileCheck {
  public:
    explicit FileCheck(FileReport& report) : m_report(report), m_findings(report.findings) {}

    void Run(std::optional<FileKind> forced) {
        std::error_code error;
        if (std::filesystem::is_regular_file(m_report.path, error) &&
            std::filesystem::file_size(m_report.path, error) == 0) {
            const bool isCapture = forced == FileKind::Capture || HasCaptureName(m_report.path);
            m_findings.Add(Kind("F-EMPTY"), {}, "the file is empty",
                           isCapture ? "loading fails, and nothing is read"
                                     : "loading gives false, and the use cases that the reader has are gone");
            return;
        }
        const CaptureFile file(m_report.path, CaptureFile::Identifier::Optional);
        const bool isCapture = file.HasIdentifier() || HasCaptureName(m_report.path);
        m_report.kind = forced.value_or(isCapture ? FileKind::Capture : FileKind::Settings);
        if (m_report.kind == FileKind::Settings) {
            CheckSettings(file);
        } else if (file.HasIdentifier()) {
            CheckCapture();
        } else {
            m_findings.Add(Kind("F-NO-CAPTURE"), {}, "the file does not begin with \"TDF2\"",
                           "loading fails, and nothing is read");
        }
    }

  private:
    void CheckSettings(const CaptureFile& file) {
        if (!IsLookedAt({}, file.Size())) {
            return;
        }
        const std::string text = file.Read(0, file.Size());
        SettingsModel model;
        SettingsCheck(SettingsKind::File, {}, m_findings, model).Run(text);
        m_report.loads = model.clean;
        m_report.properties = model.properties;
        m_report.usecases = CheckBlocks(model.blocks, {}, m_findings);
    }

    void CheckCapture() {
        const Container container(m_report.path);
        ContainerCheck sections(container, m_findings);
        sections.Run();
        const bool hasName = HasCaptureName(m_report.path);
        if (!hasName) {
            m_findings.Add(Kind("F-EXTENSION"), {}, "the name does not end in \".tdf\"",
                           "loading fails, and nothing is read");
        }
        const Section* const common = sections.Found(Wanted::Common);
        const Section* const device = sections.Found(Wanted::DeviceId);
        const Section* const stm = sections.Found(Wanted::Stm);
        CheckCommon(container, common);
        m_report.loads = hasName && common != nullptr && HasText(device);
        CheckTexts(container, device, stm);
        m_report.loads = m_report.loads && HasText(stm);
    }

    void CheckCommon(const Container& container, const Section* section) {
        const Place place = PlaceOf(Wanted::Common, section);
        if (const auto payload = Payload(container, section, place)) {
            m_report.objectFiles = CheckObjectFiles(*payload, place, m_findings);
        }
    }

    /// DEVID first: STMDECODERINFO sets properties again.
    void CheckTexts(const Container& container, const Section* device, const Section* stm) {
        SettingsModel deviceModel;
        const Place devicePlace = PlaceOf(Wanted::DeviceId, device);
        const auto deviceText = Payload(container, device, devicePlace);
        if (deviceText) {
            SettingsCheck(SettingsKind::DeviceId, devicePlace, m_findings, deviceModel).Run(*deviceText);
        }
        SettingsModel model;
        model.properties = deviceModel.properties;
        UsecaseModels usecases;
        const Place place = PlaceOf(Wanted::Stm, stm);
        const auto text = Payload(container, stm, place);
        if (text) {
            SettingsCheck(SettingsKind::Section, place, m_findings, model).Run(*text);
            TellOverridden(deviceModel, model, devicePlace);
            usecases = CheckBlocks(model.blocks, place, m_findings);
        }
        if (m_report.loads) {
            m_report.properties = model.properties;
            m_report.usecases = std::move(usecases);
        }
    }

    void TellOverridden(const SettingsModel& device, const SettingsModel& stm, const Place& place) {
        for (std::size_t i = 0; i < kStmProperties.size(); ++i) {
            const std::int32_t before = NumberOf(device.properties, kStmProperties[i]);
            const std::int32_t after = NumberOf(stm.properties, kStmProperties[i]);
            if (device.setOnLine[i] != 0 && stm.setOnLine[i] != 0 && before != after) {
                m_findings.Add(Kind("D-OVERRIDDEN"), place.AtLine(device.setOnLine[i]),
                               fmt::format("{} is {} here and {} in {}", kStmProperties[i].name, before, after,
                                           NameOf(Wanted::Stm)),
                               fmt::format("reads as {}", after));
            }
        }
    }

    static bool HasText(const Section* section) { return section != nullptr && !section->IsEmpty(); }

    static const char* NameOf(Wanted wanted) { return kWantedSections[static_cast<std::size_t>(wanted)].name; }

    static Place PlaceOf(Wanted wanted, const Section* section) {
        return {NameOf(wanted), section != nullptr ? std::optional(section->offset) : std::nullopt};
    }

    /// As much of the payload as a reader gets; nothing when there is none, it is empty or too long.
    std::optional<std::string> Payload(const Container& container, const Section* section, const Place& place) {
        if (!HasText(section) || !IsLookedAt(place, container.HeldPayload(*section))) {
            return std::nullopt;
        }
        return container.ReadPayload(*section, 0, kMaxText);
    }

    bool IsLookedAt(const Place& place, std::uint64_t size) {
        if (size <= kMaxText) {
            return true;
        }
        m_findings.Add(Kind("F-TOO-LARGE"), place, fmt::format("{} bytes are no text of this kind", size),
                       "a reader reads it all; it was not looked at");
        return false;
    }

    FileReport& m_report;
    Findings& m_findings;
};

}  // namespace

FileReport CheckFile(const std::string& path, std::optional<FileKind> forced) {
    FileReport report;
    report.path = path;
    try {
        FileCheck(report).Run(forced);
    } catch (const Failure& failure) {
        std::string sentence = failure.what();
        if (sentence.starts_with(path + ": ")) {
            sentence.erase(0, path.size() + 2);
        }
        report.findings.Add(Kind("F-UNREADABLE"), {}, std::move(sentence), "loading fails, and nothing is read");
    }
    return report;
}

}  // namespace stmdcm
