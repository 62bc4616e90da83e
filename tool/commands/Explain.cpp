#include <fmt/format.h>

#include <algorithm>

#include "stmdcm/explain/Explanation.h"
#include "stmdcm/reading/Words.h"
#include "tool/commands/CommandTable.h"
#include "tool/render/Table.h"

namespace stmdcm {

namespace {

Style StyleOf(Standing standing) {
    if (standing == Standing::InForce) {
        return Style::Good;
    }
    return standing == Standing::NotRead ? Style::Bad : Style::Quiet;
}

/// Tells each place that states something.
struct ExplainReport {
    const std::string& file;
    const std::string& name;
    const Explained& explained;
    const std::vector<std::string>& doubts;

    static std::string PlaceOf(const Statement& statement) {
        const std::string place = InWords(statement.place);
        return place.empty() ? statement.source : place;
    }

    static std::string Said(const Statement& statement) {
        const std::string text = statement.text.empty() ? "" : fmt::format("{}", Quoted(statement.text));
        return statement.value.empty() || text.empty() ? statement.value + text
                                                       : fmt::format("{} ({})", statement.value, text);
    }

    std::string Text(const Palette& palette) const {
        std::string text;
        for (const Explanation& each : explained.items) {
            const std::string title = fmt::format("{}: {} {}", Shown(file), each.kind, Shown(each.item));
            text += palette.Paint(Style::Heading, title) +
                    (each.value.empty() ? ": nothing in force\n" : fmt::format(": {}\n", each.value));
            for (const Statement& statement : each.statements) {
                text += fmt::format("  {} {}{}\n      {}\n",
                                    palette.Paint(StyleOf(statement.standing), StandingName(statement.standing)),
                                    PlaceOf(statement), Said(statement).empty() ? "" : ": " + Said(statement),
                                    statement.why);
            }
        }
        return text;
    }

    Json Document() const {
        Json items = Json::array();
        for (const Explanation& each : explained.items) {
            Json statements = Json::array();
            for (const Statement& statement : each.statements) {
                const Place& place = statement.place;
                statements.push_back({{"standing", StandingName(statement.standing)},
                                      {"source", statement.source},
                                      {"offset", place.offset ? Json(std::to_string(*place.offset)) : nullptr},
                                      {"line", place.line != 0 ? Json(place.line) : nullptr},
                                      {"value", JsonRenderer::OrNull(statement.value)},
                                      {"text", JsonRenderer::OrNull(statement.text)},
                                      {"why", statement.why}});
            }
            items.push_back({{"kind", each.kind},
                             {"item", each.item},
                             {"value", JsonRenderer::OrNull(each.value)},
                             {"statements", statements}});
        }
        return JsonRenderer::Document("explain", {{"file", file},
                                                  {"name", name},
                                                  {"loaded", explained.reading.isLoaded},
                                                  {"doubts", doubts},
                                                  {"items", items}});
    }
};

/// Why something of a configuration is what it is.
class ExplainItem final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("FILE", m_file, "A capture (.tdf) or a settings file")->required();
        app.add_option("NAME", m_name,
                       "A property, a use case (its module's name, source or \"job N, module N\"), or a "
                       "program image (its name or path)")
            ->required()
            ->type_name("ITEM");
        app.footer(
            "Tells each place that states it, in the order in which a load reads them, and then those that are not in "
            "force: earlier configurations, and sections and lines that no reader gets to. What of the file is not "
            "read is "
            "told first, as by show, and the status is that of show: 3 when the file was read in part, 1 when hosts "
            "can't load it. Ends with status 1, too, where no place states anything of that name.\n\nExample:\n"
            "  stmdcm explain capture.tdf STM_DTC_target_clock_hz");
    }

    ExitStatus Run(const Context& context) override {
        const Explained explained = Explain(m_file, m_name);
        const std::vector<std::string> doubts = explained.reading.Doubts();
        context.console.Diagnose(m_file, doubts);
        explained.RequireAny(m_name);
        context.Print(ExplainReport{m_file, m_name, explained, doubts});
        return StatusOf(explained.reading, doubts);
    }

  private:
    std::string m_file;
    std::string m_name;
};

}  // namespace

std::unique_ptr<Command> MakeExplain() { return std::make_unique<ExplainItem>(); }

}  // namespace stmdcm
