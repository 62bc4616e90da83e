#include <fmt/format.h>

#include <filesystem>

#include "stmdcm/Failure.h"
#include "stmdcm/change/NewCapture.h"
#include "stmdcm/reading/Reading.h"
#include "stmdcm/reading/Words.h"
#include "tool/cli/ProgramText.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"
#include "tool/output/ConfigurationFile.h"
#include "tool/output/InputFile.h"
#include "tool/output/StandardOutput.h"
#include "trace/format/ObjectFileSection.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// Tells what a conversion did.
struct ConvertReport {
    const std::string& from;
    const std::string& to;
    ConfigurationKind fromKind;
    ConfigurationKind toKind;
    std::vector<std::string> lost;  ///< sentences

    std::string Text(const Palette& /*palette*/) const {
        return fmt::format("{} ({}) -> {} ({}), {}\n", Shown(from), KindName(fromKind), Shown(to), KindName(toKind),
                           lost.empty() ? "loads as the same configuration" : "with losses");
    }

    Json Document() const {
        const auto side = [](const std::string& file, ConfigurationKind kind) {
            return Json{{"file", file}, {"kind", KindName(kind)}};
        };
        return JsonRenderer::Document("convert",
                                      {{"from", side(from, fromKind)}, {"to", side(to, toKind)}, {"lost", lost}});
    }
};

/// A configuration out of one kind of file into a new one of another kind.
class Convert final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("FROM", m_from, "A capture (.tdf) or a settings file; - is standard input")->required();
        CLI::Option* to = app.add_option("TO", m_to, "A new settings file, or with the extension .tdf a new capture");
        app.add_option("-o,--output", m_to, "The same; - is standard output")->type_name("OUT")->excludes(to);
        app.add_option("--as", m_as, "What standard output is to be; else what FROM is not")
            ->check(OneOf({"capture", "settings"}))
            ->type_name("KIND");
        app.add_flag(
            "--force", m_force,
            std::string(kOverwriteSettings) + "; and convert what can be read of a source that is not read whole");
        app.footer(
            "Capture and settings file become each other; settings become settings as the plug-in writes them. The "
            "result is loaded and compared before it takes its place. A new capture holds the configuration and a "
            "DEVID of one line. Ends with status 3 when something was lost, such as the object files, for which "
            "settings have no place.\n\nExample:\n"
            "  stmdcm convert capture.tdf settings.txt\n"
            "  zcat run7.tdf.gz | stmdcm convert - -o - | grep clock");
    }

    void Check() override {
        if (m_to.empty()) {
            throw CLI::RequiredError("TO");
        }
        if (!m_as.empty() && m_to != kStandardStream) {
            throw CLI::RequiresError("--as", "-o -: what a file is to be, its name says");
        }
    }

    ExitStatus Run(const Context& context) override {
        const bool isStream = m_to == kStandardStream;
        if (isStream && context.options.json) {
            throw Failure("the result goes to standard output; leave --json out", Failure::Kind::Request);
        }
        const Reading source = InputFile(m_from).Read();
        const ConfigurationKind kind = KindFor(*source.kind);
        CheckKinds(*source.kind, kind);
        source.RequireSettings();
        RequireWhole(source, m_force);
        const Configuration expected = source.configuration.WithoutObjectFiles();
        const std::string text = source.settings->Text();
        const std::string bytes = kind == ConfigurationKind::Capture ? CaptureOf(text) : text;
        if (isStream && kind == ConfigurationKind::Capture) {
            RefuseTerminal();
        }
        const std::vector<std::string> lost = isStream ? LossesOf(m_to, kind, bytes, expected)
                                                       : WriteConfiguration(m_to, bytes, expected, m_force, {m_from});

        ConvertReport report{m_from, m_to, *source.kind, kind, source.Sentences()};
        AddLosses(source, report.lost);
        report.lost.insert(report.lost.end(), lost.begin(), lost.end());
        if (isStream) {
            context.console.Print(bytes);
        } else {
            context.Print(report);
        }
        context.console.Diagnose(report.lost);
        return StatusOf(report.lost);
    }

  private:
    static std::string CaptureOf(const std::string& text) {
        return NewCapture({DeviceSection(),
                           {kCommonSectionName, kCommonSectionVersion, ""},
                           {kStmSectionName, kStmSectionVersion, text}});
    }

    ConfigurationKind KindFor(ConfigurationKind from) const {
        if (m_to != kStandardStream) {
            return KindOfName(m_to);
        }
        const bool isSettings = m_as.empty() ? from == ConfigurationKind::Capture : m_as == "settings";
        return isSettings ? ConfigurationKind::Settings : ConfigurationKind::Capture;
    }

    void CheckKinds(ConfigurationKind from, ConfigurationKind to) const {
        if (to != ConfigurationKind::Capture) {
            return;
        }
        if (from == ConfigurationKind::Capture) {
            throw Failure(
                fmt::format("{} and {} are both captures; use apply to bring a configuration into another capture",
                            Shown(m_from), Shown(m_to)));
        }
        if (m_to != kStandardStream && std::filesystem::exists(m_to)) {
            throw Failure(m_to, "the capture is there already; use apply to bring the configuration into it");
        }
    }

    /// What the other kind of file has no place for.
    void AddLosses(const Reading& source, std::vector<std::string>& lost) const {
        if (!source.configuration.objectFiles.empty()) {
            lost.push_back(fmt::format("{}: settings have no object files: the {} of {} are lost", Shown(m_to),
                                       source.configuration.objectFiles.size(), Shown(m_from)));
        }
        if (source.pins > 0) {
            lost.push_back(fmt::format("{}: settings have no pins: those of {} in {} are lost", Shown(m_to),
                                       Counted(source.pins, "program image"), Shown(m_from)));
        }
        if (source.hasDeviceText) {
            lost.push_back(
                fmt::format("{}: settings have no device identification: the section DEVID of {} is lost, "
                            "except for properties in it",
                            Shown(m_to), Shown(m_from)));
        }
    }

    std::string m_from;
    std::string m_to;
    std::string m_as;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeConvert() { return std::make_unique<Convert>(); }

}  // namespace stmdcm
