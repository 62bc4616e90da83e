#include <fmt/format.h>

#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/reading/Words.h"
#include "tool/cli/ProgramText.h"
#include "tool/commands/CommandTable.h"
#include "tool/many/ManyFiles.h"
#include "tool/output/HashProgress.h"
#include "tool/output/OutputFile.h"
#include "tool/report/CaptureDocument.h"
#include "tool/report/ReportPage.h"

namespace stmdcm {

namespace {

/// One page about captures, to be opened in a browser.
class Report final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_files.DeclareFiles(app, "FILE", "Captures (.tdf) and settings files");
        app.add_option("-o,--output", m_output, "The page; - is standard output")->type_name("OUT");
        app.add_flag("--force", m_force, kOverwriteOutput);
        m_files.DeclareOptions(app);
        app.footer(
            "The page shows what show, check, sections, history and objects tell of each file, with a picture of "
            "what lies where in it; of several a table stands in front. It is one file that loads nothing from "
            "anywhere, so it can be mailed. With --json the documents that the page has in it are printed instead, a "
            "line for each file (docs/report.md). A file that can't be read has its place on the page, and the "
            "status is 1 then; where that is so of all, there is no page.\n\nExample:\n"
            "  stmdcm report capture.tdf -o report.html\n"
            "  find run7 -name '*.tdf' | stmdcm report --files-from - -j 0 -o run7.html");
    }

    void Check() override { m_files.RequireAny("FILE"); }

    ExitStatus Run(const Context& context) override {
        if (context.options.json != m_output.empty()) {
            throw Failure(m_output.empty() ? "report needs -o OUT, or --json"
                                           : "with --json the documents go to standard output; leave -o out",
                          Failure::Kind::Request);
        }
        if (m_output.empty()) {
            return RunEach(context, nullptr);
        }
        return m_output == kStandardStream ? Print(context) : Write(context);
    }

  private:
    ExitStatus Print(const Context& context) const {
        ReportPage page([&](std::string_view text) { context.console.Print(text); });
        const ExitStatus status =
            RunEach(context, [&](const std::string& /*file*/, const FileOutcome& outcome) { Add(outcome, page); });
        page.End();
        return status;
    }

    ExitStatus Write(const Context& context) const {
        OutputFile output(m_output, m_force, m_files.Named());
        ReportPage page([&](std::string_view text) { output.Write(text); });
        bool isAnyRead = false;
        const ExitStatus status = RunEach(context, [&](const std::string& file, const FileOutcome& outcome) {
            output.RefuseInput(file);
            Add(outcome, page);
            isAnyRead = isAnyRead || outcome.result.failure.empty();
        });
        if (!isAnyRead) {
            throw Failure(m_output, "nothing could be read, so no page was written");
        }
        page.End();
        output.Commit();
        context.console.Print(fmt::format("{}: a page about {}, {}\n", Shown(m_output),
                                          Counted(page.Captures(), "file"), SizeInWords(page.Size())));
        context.console.Diagnose(m_output, output.NotKept());
        return std::max(status, StatusOf(output.NotKept()));
    }

    /// What is printed of a file is its document in a line, a failure's too, and behind that the text.
    ExitStatus RunEach(const Context& context, const ManyFiles::TakeOutcome& take) const {
        HashProgress progress;
        ImageFinder finder({}, {}, progress.Teller());
        if (m_files.IsForking()) {
            finder.Examiner().ShareAmongForked();
        }
        GlobalOptions options = context.options;
        options.json = true;
        const Context documents{options, context.console, context.command, context.ofFailure};
        const bool hasText = take != nullptr;
        return m_files.Run(
            documents,
            [&](const Context& own, const std::string& file) {
                const CaptureDocument document(file, finder);
                own.console.Print(hasText ? document.line + document.text : document.line);
                if (!document.whyNotOpened.empty()) {
                    own.console.Diagnose(document.whyNotOpened);
                }
                return FileResult{
                    document.whyNotOpened.empty() ? ExitStatus::Done : ExitStatus::Failed, {}, document.whyNotOpened};
            },
            take);
    }

    static void Add(const FileOutcome& outcome, ReportPage& page) {
        const std::string_view printed = outcome.told.out;
        const std::size_t end = printed.find('\n');
        const std::string_view text = printed.substr(std::min(end, printed.size() - 1) + 1);
        page.Add(printed.substr(0, end), text.empty() ? outcome.result.failure : text);
    }

    ManyFiles m_files{ManyFiles::Purpose::Read};
    std::string m_output;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeReport() { return std::make_unique<Report>(); }

}  // namespace stmdcm
