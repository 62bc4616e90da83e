#include <fmt/format.h>

#include "stmdcm/change/Assignment.h"
#include "stmdcm/reading/ObjectFileCheck.h"
#include "stmdcm/reading/Words.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/OtherPlugin.h"
#include "tool/many/ManyFiles.h"
#include "tool/output/InputFile.h"
#include "tool/reports/ShowReport.h"

namespace stmdcm {

namespace {

/// The configuration in a capture or a settings file.
class Show final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_files.DeclareFiles(app, "FILE", "Captures (.tdf) and settings files; - is standard input");
        auto* get = app.add_option("--get", m_wanted, "Show bare values, one line a file: of these properties alone")
                        ->type_name("PROPERTY")
                        ->delimiter(',')
                        ->allow_extra_args(false);
        app.add_flag("--properties", m_properties, "Show the properties")->excludes(get);
        app.add_flag("--changed", m_changedOnly, "Show the properties that are not at their default")->excludes(get);
        app.add_flag("--use-cases", m_usecases, "Show the use cases")->excludes(get);
        app.add_flag("--objects", m_objectFiles, "Show the object files and how they are on disk")->excludes(get);
        m_files.DeclareOptions(app);
        app.footer(
            "Shows everything unless parts are selected. Ends with status 3 when the file was read in part, or an "
            "object file can't be looked at; with status 1 when hosts can't load it. What can be read is shown all "
            "the same.\n\nThe values of --get stand in the order of the names, with a blank between them, as numbers "
            "that \"set\" takes: clocks in Hz, flags as 1 and 0. Of many files one of which nothing is known has an "
            "empty line, so lines and files stay in step.\n\nExample:\n"
            "  stmdcm show --changed --objects capture.tdf");
    }

    void Check() override { m_files.RequireAny("FILE"); }

    bool LoadsPlugin() const override { return true; }

    ExitStatus Run(const Context& context) override {
        for (const std::string& name : m_wanted) {
            RequireProperty(name);
        }
        if (!m_wanted.empty()) {
            m_files.SetTextOfUnknown("\n");
        }
        return m_files.Run(context,
                           [this, plugin = OtherPlugin()](const Context& own, const std::string& file) mutable {
                               return ShowOne(own, file, plugin);
                           });
    }

  private:
    FileResult ShowOne(const Context& context, const std::string& file, OtherPlugin& plugin) const {
        const Reading loaded = InputFile(file).Read();
        const std::vector<std::string> differences = plugin.Differences(context, loaded);
        const ShowReport report = ShowReport::Of(loaded, Asked(), m_wanted, context.isOneOfMany);
        context.Print(report);
        context.console.Diagnose(file, report.doubts);
        context.console.Diagnose(differences);
        return {StatusOf(loaded, report.doubts.empty() ? differences : report.doubts),
                {},
                loaded.isLoaded ? "" : fmt::format("{}: hosts can't load it", Shown(file))};
    }

    Selection Asked() const {
        if (!m_wanted.empty()) {
            return {true, false, false, false};
        }
        const bool isEverything = !m_properties && !m_changedOnly && !m_usecases && !m_objectFiles;
        return {isEverything || m_properties || m_changedOnly, isEverything || m_usecases,
                isEverything || m_objectFiles, m_changedOnly};
    }

    ManyFiles m_files{ManyFiles::Purpose::Read};
    std::vector<std::string> m_wanted;
    bool m_properties = false;
    bool m_usecases = false;
    bool m_objectFiles = false;
    bool m_changedOnly = false;
};

}  // namespace

std::unique_ptr<Command> MakeShow() { return std::make_unique<Show>(); }

}  // namespace stmdcm
