#include <fmt/format.h>

#include <algorithm>

#include "stmdcm/reading/Reading.h"
#include "stmdcm/reading/Words.h"
#include "tool/commands/CommandTable.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

namespace {

Json ToJson(const Reading& side) {
    return {{"file", side.path}, {"kind", KindName(*side.kind)}, {"doubts", side.Doubts()}};
}

/// Compares two configurations, as far as both kinds of file can hold the same, and tells the result.
struct DiffReport {
    const Reading& left;
    const Reading& right;
    bool comparesObjectFiles = left.hasObjectFiles && right.hasObjectFiles;
    std::vector<Difference> differences = comparesObjectFiles ? Compare(left.configuration, right.configuration)
                                                              : Compare(left.configuration.WithoutObjectFiles(),
                                                                        right.configuration.WithoutObjectFiles());

    bool IsEqual() const { return differences.empty(); }

    std::string Text(const Palette& palette) const {
        std::string text = TextRenderer(palette).Differences(differences);
        text += IsEqual() ? palette.Paint(Style::Good, "no difference")
                          : palette.Paint(Style::Notable, fmt::format("{} different ({} / {})", differences.size(),
                                                                      Shown(left.path), Shown(right.path)));
        return text + (comparesObjectFiles ? "\n" : "; object files are not compared: settings files have none\n");
    }

    Json Document() const {
        return JsonRenderer::Document("diff", {{"left", ToJson(left)},
                                               {"right", ToJson(right)},
                                               {"object_files_compared", comparesObjectFiles},
                                               {"differences", JsonRenderer::Differences(differences)},
                                               {"equal", IsEqual()}});
    }
};

/// What is different in the configurations of two files.
class Diff final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("LEFT", m_left, "A capture (.tdf) or a settings file")->required();
        app.add_option("RIGHT", m_right, "Another one")->required();
        app.footer(
            "Use cases are matched by job and module, object files by name. Settings files have no object files: with "
            "one of them these are not compared. Ends with status 0 when nothing differs, 1 when something does, 3 "
            "when nothing differs in what could be read, 4 when a file can't be loaded.\n\nExample:\n"
            "  stmdcm diff before.tdf after.tdf");
    }

    ExitStatus Run(const Context& context) override {
        const Reading left = Read(m_left);
        left.RequireLoaded();
        const Reading right = Read(m_right);
        right.RequireLoaded();
        const DiffReport report{left, right};
        context.Print(report);
        context.console.Diagnose(left.Sentences());
        context.console.Diagnose(right.Sentences());
        if (!report.IsEqual()) {
            return ExitStatus::Failed;
        }
        return std::max(StatusOf(left.Doubts()), StatusOf(right.Doubts()));
    }

    ExitStatus FailureStatus() const override { return ExitStatus::Unread; }

  private:
    std::string m_left;
    std::string m_right;
};

}  // namespace

std::unique_ptr<Command> MakeDiff() { return std::make_unique<Diff>(); }

}  // namespace stmdcm
