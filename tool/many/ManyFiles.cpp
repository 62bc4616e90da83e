#include "tool/many/ManyFiles.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <optional>

#include "stmdcm/reading/Findings.h"
#include "tool/cli/ValueCheck.h"
#include "tool/many/FileNames.h"
#include "tool/many/Summary.h"
#include "tool/many/Workers.h"
#include "tool/output/InterruptGuard.h"
#include "tool/output/LateOutput.h"
#include "tool/output/Progress.h"
#include "tool/output/StopRequest.h"

namespace stmdcm {

namespace {

constexpr long kMostJobs = 256;
constexpr char kOldOrNew[] = " is as it was or as it is to be";

}  // namespace

/// One run over many files: takes what became of each, in their order.
class ManyFiles::Round {
  public:
    Round(const Context& context, const TakeOutcome& take, Purpose purpose, const StopRequest* stop,
          std::optional<std::uint64_t> total, bool isProgressAskedFor)
        : m_context(context),
          m_take(take),
          m_purpose(purpose),
          m_stop(stop),
          m_total(total),
          m_progress(context.command, total, isProgressAskedFor, Progress::Unit::Files) {
        m_guard.SetLastWords({"\nstmdcm: interrupted; ", &m_out.HandedOn(), WordsBehindNumber(" done") + "\n"});
    }

    const Context& Asked() const { return m_context; }
    const StopRequest* Stop() const { return m_stop; }
    bool IsToStop() const { return m_stop != nullptr && m_stop->IsMade(); }

    void Take(const std::string& file, const FileOutcome& outcome) {
        if (!outcome.told.error.empty() || (m_isOutTerminal && !outcome.told.out.empty())) {
            m_progress.Clear();
        }
        if (m_take) {
            m_take(file, outcome);
        }
        // What was changed is told before anything can happen, and a terminal shows things in their order.
        const bool isDue = m_purpose == Purpose::Change || m_isOutTerminal || m_take || !outcome.told.error.empty();
        m_out.Add(m_take ? "" : outcome.told.out, isDue ? LateOutput::When::Now : LateOutput::When::Soon);
        Console::ToStandardError(outcome.told.error);
        m_summary.Add(outcome.result);
        m_progress.Update(m_summary.Files());
    }

    ExitStatus End(const std::optional<Failure>& whyListIsUnread) {
        m_progress.Clear();
        m_out.Flush();
        if (whyListIsUnread) {
            m_summary.AddRest("the list of files could not be read to its end", m_context.Tell(*whyListIsUnread));
        } else if (m_summary.Files() == 0) {
            m_summary.AddRest(m_purpose == Purpose::Change ? "no capture was named" : "no file was named",
                              ExitStatus::Done);
        }
        if (m_summary.IsNews()) {
            m_context.console.Diagnose(m_summary.Failures());
            m_context.console.Diagnose(m_summary.Sentence());
        }
        return m_summary.Status();
    }

    /// Before what keeps it from its end is told.
    void TellHowFar() {
        m_progress.Clear();
        if (m_purpose == Purpose::Change) {
            m_context.console.Diagnose(fmt::format("ended; {}{}", m_out.HandedOn().load(), WordsBehindNumber(" told")));
        }
    }

    /// Ends the program, with the last words.
    void Obey() {
        m_progress.Clear();
        m_out.Flush();
        m_stop->Obey();
    }

  private:
    std::string WordsBehindNumber(const char* done) const {
        return fmt::format(" of {}{}{}", m_total ? Counted(*m_total, "file") : "the files", done,
                           m_purpose == Purpose::Change
                               ? fmt::format("; each of the others{}, and the same command does the rest", kOldOrNew)
                               : "");
    }

    const Context& m_context;
    const TakeOutcome& m_take;  ///< empty: standard output
    Purpose m_purpose;
    const StopRequest* m_stop;
    std::optional<std::uint64_t> m_total;
    LateOutput m_out{Console::ToStandardOutput};
    bool m_isOutTerminal = ::isatty(STDOUT_FILENO) == 1;
    Progress m_progress;
    Summary m_summary;
    InterruptGuard m_guard;
};

CLI::Option* ManyFiles::DeclareFiles(CLI::App& app, const char* name, const char* description) {
    return app.add_option(name, m_named, description)->type_name(name);
}

void ManyFiles::DeclareOptions(CLI::App& app) {
    CLI::Option* list = app.add_option("--files-from", m_list,
                                       "Work also on the files that LIST names, one a line; - is standard input")
                            ->type_name("LIST");
    app.add_flag("-0", m_isZeroEnded, "In LIST a zero byte ends each name")->needs(list);
    app.add_option("-j,--jobs", m_jobs, "Work on so many files at once; 0: on as many as there are processors")
        ->type_name("N")
        ->check(WholeNumber(kMostJobs));
    app.add_flag("--progress", m_progress, "Tell the progress also where standard error is no terminal");
}

std::vector<std::string> ManyFiles::TakeOthers(
    const std::function<bool(const std::string& word, std::size_t index)>& isOther) {
    std::vector<std::string> files;
    std::vector<std::string> others;
    for (std::size_t i = 0; i < m_named.size(); ++i) {
        (isOther(m_named[i], i) ? others : files).push_back(m_named[i]);
    }
    m_named = std::move(files);
    return others;
}

void ManyFiles::RequireAny(const std::string& name) const {
    if (!IsAny()) {
        throw CLI::RequiredError(name);
    }
}

std::size_t ManyFiles::Jobs() const {
    return m_jobs > 0 ? m_jobs : static_cast<std::size_t>(std::clamp(::sysconf(_SC_NPROCESSORS_ONLN), 1L, kMostJobs));
}

ExitStatus ManyFiles::Run(const Context& context, const FileWork& work, const TakeOutcome& take) const {
    if (!IsSeveral() && !take) {
        return work(context, m_named.front()).status;
    }
    const Context lines{context.options, context.console, context.command, context.ofFailure, true, m_ofUnknown};
    try {
        return RunEach(lines, work, take);
    } catch (const Failure& failure) {
        if (take) {
            throw;
        }
        return lines.Tell(failure);
    }
}

ExitStatus ManyFiles::RunEach(const Context& context, const FileWork& work, const TakeOutcome& take) const {
    std::optional<StopRequest> stop;
    if (m_purpose == Purpose::Change) {
        stop.emplace();  // nothing that was changed stays untold
    }
    FileNames names(m_named, m_list, m_isZeroEnded, stop ? stop->Descriptor() : -1);
    Round round(context, take, m_purpose, stop ? &*stop : nullptr,
                Progress::IsShown(m_progress) || !HasList() ? names.Total() : std::nullopt, m_progress);
    try {
        Jobs() == 1 ? RunHere(names, round, work) : RunInWorkers(names, round, work);
    } catch (const Failure&) {
        round.TellHowFar();
        throw;
    }
    if (round.IsToStop()) {
        round.Obey();
    }
    return round.End(names.WhyUnread());
}

void ManyFiles::RunHere(FileNames& names, Round& round, const FileWork& work) const {
    while (!round.IsToStop()) {
        const std::optional<std::string> file = names.Next();
        if (!file) {
            break;
        }
        round.Take(*file, WorkOn(*file, work, round.Asked()));
    }
}

/// In turn, so that the next result in the order of the files is always that of the next worker.
void ManyFiles::RunInWorkers(FileNames& names, Round& round, const FileWork& work) const {
    const bool once = m_purpose == Purpose::Change;
    Workers workers(Jobs(), work, round.Asked(), round.Stop(), once ? fmt::format("; it{}", kOldOrNew) : "", once);
    std::size_t sent = 0;
    std::size_t received = 0;
    const auto next = [&] { return received % workers.Count(); };
    const auto isFull = [&] { return sent - received == workers.Count() * Workers::kMostWaiting; };
    for (bool isEnd = false; !isEnd || sent > received;) {
        while (!(isEnd = isEnd || round.IsToStop()) && !isFull() && (sent == received || names.IsReady())) {
            const std::optional<std::string> name = names.Next();
            isEnd = !name;
            if (name) {
                workers.Queue(sent++ % workers.Count(), *name);
            }
        }
        workers.SendQueued();
        const bool isForResults = isEnd || isFull() || workers.HasResult(next());
        if (sent > received && (isForResults || !names.WaitFor(workers.Descriptor(next())))) {
            do {
                const std::string file = workers.FirstOf(next());
                if (const std::optional<FileOutcome> outcome = workers.Receive(next())) {
                    round.Take(file, *outcome);
                }
                ++received;
            } while (sent > received && workers.HasResult(next()));
        }
    }
}

}  // namespace stmdcm
