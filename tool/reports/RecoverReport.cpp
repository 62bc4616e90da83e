#include "tool/reports/RecoverReport.h"

#include <fmt/format.h>
#include <algorithm>

#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Words.h"

namespace stmdcm {

std::string RecoverReport::RemarkText(const Remark& remark, const Palette& palette) {
    const bool isLoss = remark.kind == RemarkKind::Dropped || remark.kind == RemarkKind::CutShort;
    return fmt::format("  {}{}{}\n",
                       remark.length == 0 ? "" : fmt::format("{}..{}: ", remark.offset, remark.offset + remark.length),
                       remark.section.empty() ? "" : Shown(remark.section) + ": ",
                       palette.Paint(isLoss ? Style::Bad : Style::Notable, remark.sentence));
}

std::string RecoverReport::Text(const Palette& palette) const {
    std::string text = fmt::format("{} -> {} ({}{})\n  {} whole sections, {} repaired, {} dropped\n", Shown(file),
                                   output.empty() ? "a new capture" : Shown(output), SizeInWords(plan.ResultSize()),
                                   isWritten ? "" : ", not written", plan.wholeCount, plan.repaired.size(),
                                   SizeInWords(plan.droppedBytes));
    const auto& listed = plan.remarks.Listed();
    const std::size_t shown = std::min(listed.size(), kMaxShown);
    for (std::size_t i = 0; i < shown; ++i) {
        text += RemarkText(listed[i], palette);
    }
    if (const std::size_t more = plan.remarks.Count() - shown; more > 0) {
        text += fmt::format("  and {} more, see --json\n", more);
    }
    return text + (plan.IsGood()
                       ? palette.Paint(Style::Good, "GOOD") +
                             ": every section is whole, check finds no error, and the plug-in loads it\n"
                       : palette.Paint(Style::Bad, "DOUBTFUL") + ": look at the list above before you use it\n");
}

Json RecoverReport::Document() const {
    Json remarks = Json::array();
    for (const Remark& remark : plan.remarks.Listed()) {
        remarks.push_back({{"kind", RemarkId(remark.kind)},
                           {"offset", std::to_string(remark.offset)},
                           {"length", std::to_string(remark.length)},
                           {"section", JsonRenderer::OrNull(remark.section)},
                           {"finding", JsonRenderer::OrNull(remark.finding)},
                           {"message", remark.sentence}});
    }
    return JsonRenderer::Document("recover", {{"file", file},
                                              {"output", JsonRenderer::OrNull(output)},
                                              {"written", isWritten},
                                              {"output_size", std::to_string(plan.ResultSize())},
                                              {"good", plan.IsGood()},
                                              {"whole_sections", std::to_string(plan.wholeCount)},
                                              {"repaired_sections", std::to_string(plan.repaired.size())},
                                              {"dropped_bytes", std::to_string(plan.droppedBytes)},
                                              {"remark_count", std::to_string(plan.remarks.Count())},
                                              {"remarks", remarks}});
}

std::vector<std::string> RecoverReport::Doubts() const {
    std::vector<std::string> sentences;
    const std::string name = Shown(output.empty() ? file : output);
    for (const Remark& remark : plan.remarks.Listed()) {
        if (!remark.finding.empty()) {
            sentences.push_back(fmt::format("{}: {}{}{}", name, Shown(remark.section),
                                            remark.section.empty() ? "" : ": ", remark.sentence));
        }
    }
    if (const std::size_t others = plan.remarks.DoubtCount() - sentences.size(); others > 0) {
        sentences.push_back(fmt::format("{}: {} about what was recovered", name, Counted(others, "doubt")));
    }
    return sentences;
}

}  // namespace stmdcm
