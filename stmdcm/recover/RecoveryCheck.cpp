#include "stmdcm/recover/RecoveryCheck.h"

#include <fmt/format.h>

#include <set>
#include <string>

#include "stmdcm/recover/HeaderRules.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/SectionScanner.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

void CheckRecovery(SectionSource& result, std::uint64_t size, RecoveryPlan& plan) {
    SectionScanner scanner(result);
    SectionInfo info;
    std::uint64_t count = 0;
    std::set<std::string> wanted = {kCommonSectionName, kDeviceSectionName, kStmSectionName};
    for (; scanner.Next(info); ++count) {
        if (info.version == kWantedVersion && wanted.erase(info.name) > 0 && info.payloadLength == 0 &&
            IsTextSection(info.name)) {
            plan.remarks.Add(
                {RemarkKind::Empty, 0, 0, info.name, "the section is empty, so hosts can't load a configuration"});
        }
    }
    const bool isAtEnd = scanner.Stop() == ScanStop::EndOfFile && scanner.StopOffset() == size;
    if (size != plan.ResultSize() || count > plan.SectionCount() || (isAtEnd && count < plan.SectionCount())) {
        plan.remarks.Add({RemarkKind::Mismatch,
                          0,
                          0,
                          {},
                          "the result does not hold the sections that were written; has the file been changed "
                          "meanwhile? Try again"});
    } else if (!isAtEnd) {
        plan.remarks.Add({RemarkKind::Unreachable,
                          0,
                          0,
                          {},
                          fmt::format("{} sections of the result are behind the limits of a search, so no reader "
                                      "finds them: {}",
                                      plan.SectionCount() - count, ScanStopText(scanner.Stop()))});
    }
    for (const std::string& name : wanted) {
        plan.remarks.Add({RemarkKind::Missing, 0, 0, name,
                          "there is no such section, version 1, so hosts can't load a configuration"});
    }
}

}  // namespace stmdcm
