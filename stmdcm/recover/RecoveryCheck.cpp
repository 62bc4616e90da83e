#include "stmdcm/recover/RecoveryCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureFile.h"
#include "stmdcm/reading/Reading.h"
#include "trace/format/SectionScanner.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// The errors with a remark of their own kind.
constexpr struct {
    const FindingKind* finding;
    RemarkKind remark;
} kRemarkRows[] = {
    {&Kind("C-NO-COMMON"), RemarkKind::Missing},       {&Kind("C-NO-DEVID"), RemarkKind::Missing},
    {&Kind("C-NO-STM"), RemarkKind::Missing},          {&Kind("C-EMPTY-DEVID"), RemarkKind::Empty},
    {&Kind("C-EMPTY-STM"), RemarkKind::Empty},         {&Kind("C-LENGTH-LIMIT"), RemarkKind::Unreachable},
    {&Kind("C-UNREACHABLE"), RemarkKind::Unreachable}, {&Kind("C-PAST-4GIB"), RemarkKind::Unreachable},
    {&Kind("C-OVER-4GIB"), RemarkKind::Unreachable},
};

RemarkKind RemarkOf(const FindingKind& kind) {
    const auto* found = std::find_if(std::begin(kRemarkRows), std::end(kRemarkRows),
                                     [&](const auto& row) { return row.finding == &kind; });
    return found == std::end(kRemarkRows) ? RemarkKind::Finding : found->remark;
}

/// A file that somebody changes while it is recovered can lead to anything.
void TellMismatch(const CaptureFile& result, RecoveryPlan& plan) {
    CaptureSource source(result);
    SectionScanner scanner(source);
    SectionInfo info;
    std::uint64_t count = 0;
    while (scanner.Next(info)) {
        ++count;
    }
    const bool isAtEnd = scanner.Stop() == ScanStop::EndOfFile && scanner.StopOffset() == result.Size();
    if (result.Size() != plan.ResultSize() || count > plan.SectionCount() || (isAtEnd && count < plan.SectionCount())) {
        plan.remarks.Add(RemarkKind::Mismatch,
                         "the result does not hold the sections that were written; has the file been changed "
                         "meanwhile? Try again");
    }
}

/// The finding's place is one of the result, which the remark's offset can't express.
void TellError(const Finding& finding, RecoveryPlan& plan) {
    const std::string place = InWords(Place{{}, finding.place.offset, finding.place.line});
    plan.remarks.Add({RemarkOf(*finding.kind), 0, 0, finding.place.section,
                      fmt::format("check finds in the result {}{}{}: {}; {}", finding.kind->id,
                                  place.empty() ? "" : " ", place, finding.what, finding.effect),
                      finding.kind->id});
}

void RequireRead(const Reading& result) {
    for (const Finding& finding : result.findings.Sorted()) {
        if (finding.kind == &Kind("F-UNREADABLE")) {
            throw Failure(result.path, finding.what).At(finding.place.offset);
        }
    }
}

void TellErrors(const Findings& findings, RecoveryPlan& plan) {
    const auto isTold = [](const FindingKind& kind) {
        return kind.severity == Severity::Error && &kind != &Kind("F-EXTENSION");
    };
    for (const Finding& finding : findings.Sorted()) {
        if (isTold(*finding.kind)) {
            TellError(finding, plan);
        }
    }
    for (const FindingKind& kind : kFindingKinds) {
        const std::size_t count = findings.Count(kind);
        if (isTold(kind) && count > Findings::kMaxOfKind) {
            const std::size_t more = count - Findings::kMaxOfKind;
            plan.remarks.Add({.kind = RemarkOf(kind),
                              .section = {},
                              .sentence = fmt::format("check finds in the result {} more of {}", more, kind.id),
                              .finding = kind.id});
        }
    }
}

}  // namespace

void CheckRecovery(const std::string& result, RecoveryPlan& plan) {
    TellMismatch(CaptureFile(result), plan);
    const Reading reading = CheckFile(result, ConfigurationKind::Capture);
    RequireRead(reading);
    TellErrors(reading.findings, plan);
}

}  // namespace stmdcm
