#include "tool/commands/DemoReport.h"

#include <fmt/format.h>

#include "stmdcm/reading/Words.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

namespace {

const char* Reason(const ObjectFileQuestion& question) { return question.changed ? "changed" : "missing"; }

std::string QuestionsText(const std::vector<ObjectFileQuestion>& questions, const Palette& palette) {
    std::string text;
    for (const ObjectFileQuestion& question : questions) {
        text += fmt::format("  manager: {} is {}; which file is it?\n  host:    {}\n", question.file,
                            palette.Paint(Style::Notable, Reason(question)),
                            question.answer.empty() ? "there is none" : question.answer);
    }
    return text.empty() ? "  no question: every file is as it was recorded\n" : text;
}

std::string ChangesText(const std::vector<Difference>& changes) {
    std::string text;
    for (const Difference& change : changes) {
        text += change.left ? fmt::format("  {}: {} -> {}\n", change.item, *change.left, change.right.value_or("gone"))
                            : fmt::format("  new {}: {}\n", change.kind, change.item);
    }
    return text;
}

/// Of either half.
template <class Result>
std::string VerdictText(const Result& result, const Palette& palette) {
    const auto usecases = result.reloaded.sc.size() + result.reloaded.cpt.size() + result.reloaded.pmi.size();
    if (result.Passed()) {
        return palette.Paint(Style::Good, "EQUAL") +
               fmt::format(": {} properties, {} use cases and {} object files, field by field\n",
                           result.reloaded.properties.size(), usecases, result.reloaded.objectFiles.size());
    }
    std::string text = palette.Paint(Style::Bad, "DIFFERENT") +
                       fmt::format(": {} differences (saved / reloaded)\n", result.differences.size()) +
                       TextRenderer(palette).Differences(result.differences);
    for (const std::string& problem : result.problems) {
        text += fmt::format("  {}\n", problem);
    }
    return text;
}

/// What came back of either half.
template <class Result>
void AddOutcome(const Result& result, JsonRenderer::Json& document) {
    document["saved_capture"] = result.savedCapture;
    document["reloaded"] = JsonRenderer::Render(result.reloaded);
    document["differences"] = JsonRenderer::Differences(result.differences);
    document["problems"] = result.problems;
    document["equal"] = result.Passed();
}

JsonRenderer::Json LiveToJson(const LiveDemoResult& result) {
    JsonRenderer::Json json;
    json["scenario"] = result.scenario;
    json["cpu"] = result.live.cpu;
    json["doubts"] = result.live.doubts;
    json["loaded"] = JsonRenderer::Render(result.live.configuration);
    AddOutcome(result, json);
    return json;
}

}  // namespace

std::string DemoReport::Text(const Palette& palette) const {
    const TextRenderer renderer(palette);
    std::string text = renderer.Heading("1. Load a capture");
    text +=
        fmt::format("  plug-in  {}\n  CPU      {}\n  capture  {}\n\n", m_result.plugin, m_result.cpu, m_result.capture);
    text += renderer.ObjectFiles(m_result.recorded) + "\n";
    text += renderer.Heading("2. Answer the manager's questions");
    text += QuestionsText(m_result.questions, palette) + "\n";
    text += renderer.Heading("3. What the manager holds") + "\n" + renderer.Render(m_result.loaded) + "\n";
    text += renderer.Heading("4. Change it");
    text += ChangesText(m_result.changes) + "\n";
    text += renderer.Heading("5. Save into the host's own capture, load that into a second manager, compare");
    text += fmt::format("  capture  {}\n", m_result.savedCapture);
    return text + "  " + VerdictText(m_result, palette) + "\n" + LiveText(palette);
}

std::string DemoReport::LiveText(const Palette& palette) const {
    const TextRenderer renderer(palette);
    std::string text = renderer.Heading("6. Load from a live target, which is simulated");
    text += fmt::format("  scenario {}\n  CPU      {}\n\n", m_live.scenario, m_live.live.cpu);
    text += renderer.Properties(m_live.live.configuration.properties, true) + "\n";
    text += renderer.ObjectFiles(m_live.live.configuration.objectFiles) + "\n";
    text += renderer.Heading("7. Save into a capture, lose the target, load the capture without it, compare");
    text += fmt::format("  capture  {}\n", m_live.savedCapture);
    return text + "  " + VerdictText(m_live, palette);
}

std::string DemoReport::Json() const {
    JsonRenderer::Json document = JsonRenderer::Document("demo");
    document["plugin"] = m_result.plugin;
    document["cpu"] = m_result.cpu;
    document["capture"] = m_result.capture;
    document["recorded_object_files"] = JsonRenderer::ObjectFiles(m_result.recorded);
    document["questions"] = JsonRenderer::Json::array();
    for (const ObjectFileQuestion& question : m_result.questions) {
        document["questions"].push_back(
            {{"file", question.file}, {"reason", Reason(question)}, {"answer", question.answer}});
    }
    document["loaded"] = JsonRenderer::Render(m_result.loaded);
    document["changes"] = JsonRenderer::Differences(m_result.changes);
    AddOutcome(m_result, document);
    document["live"] = LiveToJson(m_live);
    return JsonRenderer::Text(document);
}

}  // namespace stmdcm
