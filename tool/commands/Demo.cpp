#include <fmt/format.h>

#include "stmdcm/plugin/Installation.h"
#include "stmdcm/plugin/LibraryPath.h"
#include "stmdcm/reading/Words.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/DemoRun.h"
#include "tool/output/GuardedHome.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

namespace {

const char* Reason(const ObjectFileQuestion& question) { return question.changed ? "changed" : "missing"; }

std::string QuestionsText(const std::vector<ObjectFileQuestion>& questions, const Palette& palette) {
    std::string text;
    for (const ObjectFileQuestion& question : questions) {
        text += fmt::format("  manager: {} is {}; which file is it?\n  host:    {}\n", Shown(question.file),
                            palette.Paint(Style::Notable, Reason(question)),
                            question.answer.empty() ? "there is none" : Shown(question.answer));
    }
    return text.empty() ? "  no question: every file is as it was recorded\n" : text;
}

Json ToJson(const std::vector<ObjectFileQuestion>& questions) {
    Json array = Json::array();
    for (const ObjectFileQuestion& question : questions) {
        array.push_back({{"file", question.file}, {"reason", Reason(question)}, {"answer", question.answer}});
    }
    return array;
}

std::string ChangesText(const std::vector<Difference>& changes) {
    std::string text;
    for (const Difference& change : changes) {
        text += change.left ? fmt::format("  {}: {} -> {}\n", Shown(change.item), Shown(*change.left),
                                          Shown(change.right.value_or("gone")))
                            : fmt::format("  new {}: {}\n", change.kind, Shown(change.item));
    }
    return text;
}

std::string VerdictText(const DemoOutcome& outcome, const Palette& palette) {
    const Configuration& reloaded = outcome.reloaded;
    if (outcome.Passed()) {
        return palette.Paint(Style::Good, "EQUAL") +
               fmt::format(": {} properties, {} use cases and {} object files, field by field\n",
                           reloaded.properties.size(), reloaded.UsecaseCount(), reloaded.objectFiles.size());
    }
    std::string text = palette.Paint(Style::Bad, "DIFFERENT") +
                       fmt::format(": {} differences (saved / reloaded)\n", outcome.differences.size()) +
                       TextRenderer(palette).Differences(outcome.differences);
    for (const std::string& problem : outcome.problems) {
        text += fmt::format("  {}\n", Escaped(problem));
    }
    return text;
}

void WriteMembers(JsonWriter& out, const DemoOutcome& outcome) {
    out.Member("saved_capture", outcome.savedCapture).Key("reloaded");
    JsonRenderer::Write(out, outcome.reloaded);
    out.Member("differences", JsonRenderer::Differences(outcome.differences)).Member("problems", outcome.problems);
    out.Member("equal", outcome.Passed());
}

/// Tells both halves.
struct DemoReport {
    const DemoResult& demo;
    const LiveDemoResult& live;

    std::string Text(const Palette& palette) const {
        const TextRenderer renderer(palette);
        std::string text = renderer.Heading("1. Load a capture");
        text += fmt::format("  plug-in  {}\n  CPU      {}\n  capture  {}\n\n", Shown(demo.plugin), Shown(demo.cpu),
                            Shown(demo.capture));
        text += renderer.ObjectFiles(demo.recorded) + "\n";
        text += renderer.Heading("2. Answer the manager's questions");
        text += QuestionsText(demo.questions, palette) + "\n";
        text += renderer.Heading("3. What the manager holds") + "\n" + renderer.Render(demo.loaded) + "\n";
        text += renderer.Heading("4. Change it");
        text += ChangesText(demo.changes) + "\n";
        text += renderer.Heading("5. Save into the host's own capture, load that into a second manager, compare");
        text += fmt::format("  capture  {}\n", Shown(demo.savedCapture));
        return text + "  " + VerdictText(demo, palette) + "\n" + LiveText(palette);
    }

    std::string LiveText(const Palette& palette) const {
        const TextRenderer renderer(palette);
        std::string text = renderer.Heading("6. Load from a live target, which is simulated");
        text += fmt::format("  scenario {}\n  CPU      {}\n\n", Shown(live.scenario), Shown(live.live.cpu));
        text += renderer.Properties(live.live.configuration.properties, true) + "\n";
        text += renderer.ObjectFiles(live.live.configuration.objectFiles) + "\n";
        text += renderer.Heading("7. Save into a capture, lose the target, load the capture without it, compare");
        text += fmt::format("  capture  {}\n", Shown(live.savedCapture));
        return text + "  " + VerdictText(live, palette);
    }

    JsonLine Document() const {
        JsonWriter out = JsonRenderer::Begin("demo");
        out.Member("plugin", demo.plugin).Member("cpu", demo.cpu).Member("capture", demo.capture);
        out.Key("recorded_object_files");
        JsonRenderer::Write(out, demo.recorded);
        out.Member("questions", ToJson(demo.questions)).Key("loaded");
        JsonRenderer::Write(out, demo.loaded);
        out.Member("changes", JsonRenderer::Differences(demo.changes));
        WriteMembers(out, demo);
        out.Key("live").BeginObject().Member("scenario", live.scenario).Member("cpu", live.live.cpu);
        out.Member("doubts", live.live.doubts).Key("loaded");
        JsonRenderer::Write(out, live.live.configuration);
        WriteMembers(out, live);
        return out.EndObject().EndObject().Take();
    }
};

/// The main job on a capture that is shipped with the program, and the same from a live target, a simulated one.
class Demo final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("--keep", m_keep, "Work in this new directory and leave the captures there")->type_name("DIR");
        app.footer(
            "Works in a private directory that is removed at the end, and touches nothing else. The live target is a "
            "simulated one. Ends with status 1 when a reloaded configuration differs.\n\nExample:\n"
            "  stmdcm demo --keep /tmp/demo");
    }

    bool LoadsPlugin() const override { return true; }

    ExitStatus Run(const Context& context) override {
        SearchLibrariesFirstIn(SimulatorDirectory(), kFactoryFile);
        return InGuardedHome(m_keep, [&](const GuardedHome& home) {
            PluginSession session(home, context.options.plugin);
            const DemoResult demo = RunDemo(session);
            const LiveDemoResult live = RunLiveDemo(session);
            context.Print(DemoReport{demo, live});
            return demo.Passed() && live.Passed() ? ExitStatus::Done : ExitStatus::Failed;
        });
    }

  private:
    std::string m_keep;
};

}  // namespace

std::unique_ptr<Command> MakeDemo() { return std::make_unique<Demo>(); }

}  // namespace stmdcm
