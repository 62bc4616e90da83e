#include "tool/cli/ExitStatus.h"

#include "stmdcm/Failure.h"
#include "stmdcm/change/ConfigurationChange.h"
#include "stmdcm/images/ImageUpdate.h"
#include "stmdcm/reading/Reading.h"

namespace stmdcm {

ExitStatus StatusOf(const Failure& failure, ExitStatus ofWork) {
    if (failure.Reason() == Failure::Kind::Request) {
        return ExitStatus::Usage;
    }
    return failure.Reason() == Failure::Kind::Output ? ExitStatus::Failed : ofWork;
}

ExitStatus StatusOf(const std::vector<std::string>& doubts) {
    return doubts.empty() ? ExitStatus::Done : ExitStatus::Doubtful;
}

ExitStatus StatusOf(const Reading& reading, const std::vector<std::string>& doubts) {
    return reading.isLoaded ? StatusOf(doubts) : ExitStatus::Failed;
}

ExitStatus StatusOf(const ChangeResult& result) {
    const bool isDoubtful = !result.doubts.empty() || !result.warnings.empty();
    return result.HasChanges() && isDoubtful ? ExitStatus::Doubtful : ExitStatus::Done;
}

ExitStatus StatusOf(const ImageList& list) {
    if (list.unresolved == 0 && list.doubts.empty()) {
        return ExitStatus::Done;
    }
    return list.hasChanges || list.unresolved == 0 ? ExitStatus::Doubtful : ExitStatus::Failed;
}

}  // namespace stmdcm
