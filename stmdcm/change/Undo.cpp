#include "stmdcm/change/Undo.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/RetiredSection.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// A section that came in force in the place of another of its name.
struct Step {
    const HistoryEntry* before;
    const HistoryEntry* after;

    std::uint32_t Number() const { return ChangeNumber(before->section.version); }
    bool IsUndo() const { return IsUndone(before->section.version); }
};

using Steps = std::vector<Step>;

/// The one to `entry`, or none.
Steps StepTo(const History& history, const HistoryEntry* entry) {
    const HistoryEntry* before = entry == nullptr ? nullptr : history.Before(*entry);
    return before == nullptr ? Steps{} : Steps{{before, entry}};
}

/// The steps to what is in force, DCM_COMMON first.
Steps StepsToNow(const History& history) {
    Steps steps = StepTo(history, history.Current(kCommonSectionName));
    for (const Step& step : StepTo(history, history.Current(kStmSectionName))) {
        steps.push_back(step);
    }
    return steps;
}

/// Whether `common` is of a change that was interrupted in front of its second section, and `stm` of the same command
/// again: what the first run left of that section stands directly behind.
bool IsContinued(const History& history, const Step& common, const Step& stm) {
    if (common.IsUndo() || stm.IsUndo() || common.after->number >= stm.after->number) {
        return false;
    }
    const HistoryEntry& left = history.At(common.after->number + 1);
    return left.section.offset == common.after->section.End() && left.section.use == SectionUse::Retired &&
           !left.IsEarlier() && left.name == std::string_view(stm.after->name) &&
           history.Payload(left) == history.Payload(*stm.after);
}

bool IsOneChange(const History& history, const Step& a, const Step& b) {
    if (a.after->name == std::string_view(b.after->name)) {
        return a.after == b.after;
    }
    const auto& [common, stm] = a.after->name == std::string_view(kCommonSectionName) ? std::tie(a, b) : std::tie(b, a);
    if (common.before->section.version != stm.before->section.version) {
        return IsContinued(history, common, stm);
    }
    // An older stmdcm gave no number; what it wrote as one touches.
    return common.Number() != 0 || common.after->section.End() == stm.after->section.offset;
}

/// Throws Failure for none.
Steps LastChange(const Container& capture, const History& history) {
    const HistoryEntry* newest = nullptr;
    for (const char* name : {kCommonSectionName, kStmSectionName}) {
        const HistoryEntry* current = history.Current(name);
        if (current != nullptr && (newest == nullptr || current->number > newest->number)) {
            newest = current;
        }
    }
    if (newest == nullptr) {
        throw Failure(capture.Path(), "there is no configuration in it");
    }
    const Steps last = StepTo(history, newest);
    if (last.empty()) {
        throw Failure(
            capture.Path(),
            fmt::format("the {} in force is the first that it has, so there is none to go back to", newest->name));
    }
    Steps steps = StepsToNow(history);
    std::erase_if(steps, [&](const Step& step) { return !IsOneChange(history, step, last.front()); });
    return steps;
}

/// The steps that are to be taken back, and how.
struct Plan {
    Steps steps;
    ChangeMark mark;
};

Plan PlanUndo(const History& history, const Steps& last) {
    if (!last.front().IsUndo()) {
        return {last, {0, true}};
    }
    Plan rest{{}, {last.front().Number(), true}};  // an undo that was interrupted in its last step
    for (const Step& undone : StepTo(history, last.front().before)) {
        rest.steps = StepsToNow(history);
        std::erase_if(rest.steps, [&](const Step& step) { return !IsOneChange(history, step, undone); });
    }
    return rest;
}

/// The change gets its own number back, so that it is one with what an interrupted undo left of it.
Plan PlanRedo(const History& history, const Steps& last) {
    const Steps earlier = StepTo(history, last.front().before);
    if (last.front().IsUndo()) {
        return {last, {earlier.empty() ? 0 : earlier.front().Number(), false}};
    }
    Plan rest{{}, {last.front().Number(), false}};  // of one that was interrupted in its last step
    for (const Step& undo : earlier) {
        if (undo.IsUndo() && history.Payload(*undo.before) == history.Payload(*last.front().after)) {
            rest.steps = StepsToNow(history);
            std::erase_if(rest.steps, [&](const Step& step) {
                return step.before->section.version != undo.before->section.version;
            });
        }
    }
    return rest;
}

}  // namespace

UndoResult UndoLastChange(const std::string& path, UndoDirection direction, ChangeMode mode) {
    CaptureEditor editor(path, mode);
    const History history(editor.Contents());
    const Steps last = LastChange(editor.Contents(), history);
    const Plan plan = direction == UndoDirection::Undo ? PlanUndo(history, last) : PlanRedo(history, last);
    UndoResult result;
    std::vector<NewSection> sections;
    for (const auto& [before, after] : plan.steps) {
        sections.push_back(history.Renewed(*before, result.doubts));
        result.restored.push_back(*before);
        for (Difference& change : history.Compare(*before).value_or(std::vector<Difference>())) {
            std::swap(change.left, change.right);
            result.changes.push_back(std::move(change));
        }
    }
    if (!sections.empty()) {
        result.isWritten = editor.Replace(sections, plan.mark);
    }
    return result;
}

}  // namespace stmdcm
