#include "tool/commands/RecoverReport.h"

#include <fmt/format.h>

#include "tool/output/Progress.h"
#include "tool/render/JsonRenderer.h"

namespace stmdcm {

namespace {

std::string Place(const Remark& remark) {
    return remark.length == 0 ? "" : fmt::format("{}..{}: ", remark.offset, remark.offset + remark.length);
}

std::string RemarkText(const Remark& remark, const Palette& palette) {
    const bool isLoss = remark.kind == RemarkKind::Dropped || remark.kind == RemarkKind::CutShort;
    return fmt::format("  {}{}{}\n", Place(remark), remark.section.empty() ? "" : remark.section + ": ",
                       palette.Paint(isLoss ? Style::Bad : Style::Notable, remark.sentence));
}

}  // namespace

std::string RecoverReport::Text(const Palette& palette) const {
    const bool isGood = m_plan.IsGood();
    std::string text = fmt::format("{} -> {} ({})\n  {} whole sections, {} repaired, {} dropped\n", m_file, m_output,
                                   SizeInWords(m_plan.ResultSize()), m_plan.wholeCount, m_plan.repaired.size(),
                                   SizeInWords(m_plan.droppedBytes));
    for (const Remark& remark : m_plan.remarks.Listed()) {
        text += RemarkText(remark, palette);
    }
    if (const std::size_t more = m_plan.remarks.Count() - m_plan.remarks.Listed().size(); more > 0) {
        text += fmt::format("  and {} more\n", more);
    }
    return text + (isGood ? palette.Paint(Style::Good, "GOOD") + ": every section is whole, and the plug-in loads it\n"
                          : palette.Paint(Style::Bad, "DOUBTFUL") + ": look at the list above before you use it\n");
}

std::string RecoverReport::Json() const {
    const auto number = [](std::uint64_t value) { return fmt::format("{}", value); };
    JsonRenderer::Json document = JsonRenderer::Document("recover");
    document["file"] = m_file;
    document["output"] = m_output;
    document["output_size"] = number(m_plan.ResultSize());
    document["good"] = m_plan.IsGood();
    document["whole_sections"] = number(m_plan.wholeCount);
    document["repaired_sections"] = number(m_plan.repaired.size());
    document["dropped_bytes"] = number(m_plan.droppedBytes);
    document["remark_count"] = number(m_plan.remarks.Count());
    document["remarks"] = JsonRenderer::Json::array();
    for (const Remark& remark : m_plan.remarks.Listed()) {
        document["remarks"].push_back(
            {{"kind", RemarkId(remark.kind)},
             {"offset", number(remark.offset)},
             {"length", number(remark.length)},
             {"section", remark.section.empty() ? JsonRenderer::Json() : JsonRenderer::Json(remark.section)},
             {"message", remark.sentence}});
    }
    return JsonRenderer::Text(document);
}

}  // namespace stmdcm
