#include "stmdcm/validate/Validation.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "stmdcm/plugin/Installation.h"
#include "stmdcm/plugin/LibraryPath.h"
#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Words.h"
#include "stmdcm/validate/Questions.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"
#include "tool/output/GuardedHome.h"
#include "tool/render/Table.h"

namespace stmdcm {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kLongestLimit = 3600;
constexpr std::uint64_t kMostAtOnce = 64;

struct VerdictLook {
    validate::Verdict verdict;
    Style style;
};

/// In the order in which they are counted.
constexpr VerdictLook kVerdicts[] = {
    {validate::Verdict::Pass, Style::Good},   {validate::Verdict::Warning, Style::Notable},
    {validate::Verdict::Skip, Style::Quiet},  {validate::Verdict::Fail, Style::Bad},
    {validate::Verdict::Crashed, Style::Bad}, {validate::Verdict::TimedOut, Style::Bad}};

Style StyleOf(validate::Verdict verdict) {
    return std::find_if(std::begin(kVerdicts), std::end(kVerdicts),
                        [&](const VerdictLook& look) { return look.verdict == verdict; })
        ->style;
}

/// One of the questions or groups; completion offers them all.
CLI::Validator QuestionName() {
    std::set<std::string> names;
    for (const validate::Question* question : validate::AllQuestions()) {
        names.insert(question->id);
        names.insert(validate::GroupOf(*question));
    }
    const auto check = [names](const std::string& name) {
        return names.contains(name) ? "" : fmt::format("\"{}\" is no question and no group; --list lists them", name);
    };
    return {check, OneOf({names.begin(), names.end()}).get_description()};
}

/// Tells the questions.
struct QuestionList {
    std::vector<const validate::Question*> questions;

    std::string Text(const Palette& palette) const {
        Table table;
        for (const validate::Question* question : questions) {
            table.AddRow({{question->id}, {question->asks}});
        }
        return table.Text(palette, 0);
    }

    Json Document() const {
        Json document = JsonRenderer::Document("validate");
        for (const validate::Question* question : questions) {
            document["questions"].push_back({{"id", question->id}, {"asks", question->asks}, {"rule", question->rule}});
        }
        return document;
    }
};

/// Tells what a library answered.
struct ValidationReport {
    std::string library;
    std::uint32_t seed;
    const std::vector<validate::Answered>& answered;

    std::ptrdiff_t Number(validate::Verdict verdict) const {
        return std::count_if(answered.begin(), answered.end(),
                             [&](const validate::Answered& each) { return each.answer.verdict == verdict; });
    }

    /// How many questions were skipped, by the reason.
    std::map<std::string, std::size_t> Skips() const {
        std::map<std::string, std::size_t> skips;
        for (const validate::Answered& each : answered) {
            if (each.answer.verdict == validate::Verdict::Skip) {
                ++skips[each.answer.came];
            }
        }
        return skips;
    }

    bool HasFailure() const {
        return std::any_of(answered.begin(), answered.end(),
                           [](const validate::Answered& each) { return each.answer.IsFailure(); });
    }

    std::string Text(const Palette& palette) const {
        std::string counts;
        for (const VerdictLook& look : kVerdicts) {
            if (const std::ptrdiff_t number = Number(look.verdict); number > 0) {
                counts +=
                    fmt::format("{}{} {}", counts.empty() ? "" : ", ", number, validate::VerdictName(look.verdict));
            }
        }
        std::string text = fmt::format("{}: {}; {}\n", palette.Paint(Style::Heading, Shown(library)),
                                       Counted(answered.size(), "question"), counts);
        for (const auto& [question, answer, took] : answered) {
            if (answer.verdict != validate::Verdict::Pass && answer.verdict != validate::Verdict::Skip) {
                text += fmt::format("  {} {}: {}\n      asked: {}\n      rule: {}\n",
                                    palette.Paint(StyleOf(answer.verdict), validate::VerdictName(answer.verdict)),
                                    question->id, Escaped(answer.Sentence()), question->asks, question->rule);
            }
        }
        for (const auto& [why, number] : Skips()) {
            text += fmt::format(
                "  {} {}: {}\n",
                palette.Paint(StyleOf(validate::Verdict::Skip), validate::VerdictName(validate::Verdict::Skip)),
                Counted(number, "question"), Escaped(why));
        }
        return text;
    }

    Json Document() const {
        Json document = JsonRenderer::Document(
            "validate", {{"library", library}, {"seed", seed}, {"questions", Json::array()}, {"counts", {}}});
        for (const auto& [question, answer, took] : answered) {
            document["questions"].push_back({{"id", question->id},
                                             {"verdict", validate::VerdictName(answer.verdict)},
                                             {"asks", question->asks},
                                             {"rule", question->rule},
                                             {"asked", JsonRenderer::OrNull(answer.asked)},
                                             {"expected", JsonRenderer::OrNull(answer.expected)},
                                             {"came", JsonRenderer::OrNull(answer.came)},
                                             {"milliseconds", took.count()}});
        }
        for (const VerdictLook& look : kVerdicts) {
            document["counts"][validate::VerdictName(look.verdict)] = Number(look.verdict);
        }
        document["failed"] = HasFailure();
        return document;
    }
};

/// Asks a library whether it is what hosts load (docs/validate.md).
class Validate final : public Command {
  public:
    void Declare(CLI::App& app) override {
        auto* list = app.add_flag("--list", m_list, "List the questions instead, with what each asks");
        app.add_option("LIBRARY", m_library, "The library to ask, such as libStmDCM.so")
            ->type_name("FILE.so")
            ->excludes(list);
        app.add_option("--only", m_only, "Ask these alone: questions, which --list lists, or groups such as life")
            ->check(QuestionName())
            ->type_name("ID")
            ->delimiter(',')
            ->allow_extra_args(false);
        app.add_option("--timeout", m_timeLimit, "So many seconds for each question; 10 without it")
            ->check(WholeNumber(kLongestLimit, 1))
            ->type_name("SECONDS")
            ->excludes(list);
        app.add_option("--seed", m_seed, "Where chance begins, in questions that use it; 1 without it")
            ->check(WholeNumber(UINT32_MAX))
            ->type_name("N")
            ->excludes(list);
        app.add_option("-j,--jobs", m_jobs, "Ask so many questions at a time; 4 without it")
            ->check(WholeNumber(kMostAtOnce, 1))
            ->type_name("N")
            ->excludes(list);
        app.footer(
            "Each question is asked in a process of its own, with a home and a directory for temporary files of its "
            "own, so a crash or a hang is the answer to one question. Ends with status 1 when one fails, crashes or "
            "runs out of time; warnings and skips are no failure. docs/validate.md says more.\n\nExample:\n"
            "  stmdcm validate build/release/lib/libStmDCM.so");
    }

    ExitStatus Run(const Context& context) override {
        const std::vector<const validate::Question*> questions = Chosen();
        if (m_list) {
            context.Print(QuestionList{questions});
            return ExitStatus::Done;
        }
        if (m_library.empty()) {
            throw Failure("validate needs a FILE.so, or --list", Failure::Kind::Request);
        }
        if (!fs::is_regular_file(m_library)) {
            throw Failure(m_library, fs::exists(m_library) ? "this is not a regular file; name a library"
                                                           : "there is no such file; check the path");
        }
        const bool hasTarget = FindTarget();
        return InGuardedHome({}, [&](const GuardedHome& home) {
            validate::ValidationOptions options{fs::absolute(m_library).lexically_normal().string(),
                                                home.Path().string(),
                                                m_seed,
                                                std::chrono::seconds(m_timeLimit),
                                                std::max<std::size_t>(m_jobs, 1),
                                                hasTarget};
            const std::vector<validate::Answered> answered = validate::Validate(questions, options);
            const ValidationReport report{m_library, m_seed, answered};
            context.Print(report);
            return report.HasFailure() ? ExitStatus::Failed : ExitStatus::Done;
        });
    }

  private:
    std::vector<const validate::Question*> Chosen() const {
        std::vector<const validate::Question*> questions = validate::AllQuestions();
        const auto isNamed = [this](const std::string& name) {
            return std::find(m_only.begin(), m_only.end(), name) != m_only.end();
        };
        std::erase_if(questions, [&](const validate::Question* question) {
            return !m_only.empty() && !isNamed(question->id) && !isNamed(validate::GroupOf(*question));
        });
        return questions;
    }

    /// Whether the simulated target is there. The program may begin anew here, see LibraryPath.h.
    static bool FindTarget() {
        fs::path directory;
        try {
            directory = SimulatorDirectory();
        } catch (const Failure&) {  // the questions that need it are skipped
            return false;
        }
        SearchLibrariesFirstIn(directory, kFactoryFile);
        return true;
    }

    std::string m_library;
    std::vector<std::string> m_only;
    std::uint32_t m_timeLimit = 10;
    std::uint32_t m_seed = 1;
    std::size_t m_jobs = 4;
    bool m_list = false;
};

}  // namespace

std::unique_ptr<Command> MakeValidate() { return std::make_unique<Validate>(); }

}  // namespace stmdcm
