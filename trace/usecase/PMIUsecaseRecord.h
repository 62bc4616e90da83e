#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <array>
#include <string_view>

#include "trace/usecase/PMIUsecaseInfo.h"
#include "trace/usecase/PMIUsecaseRecordIF.h"
#include "trace/usecase/UsecaseRecordBase.h"

namespace Zu::Wep::Trace {

/// The sources that a host can ask for, by index.
inline constexpr std::array<std::string_view, 3> kSourceNames = {"PMI", "CMI0", "CMI1"};

extern template class UsecaseRecordBase<PMIUsecaseRecordIF, PMIUsecaseInfo>;

/// Selects by source index rather than by position or job: 0 is "PMI", 1 is "CMI0", 2 is "CMI1".
class PMIUsecaseRecord : public UsecaseRecordBase<PMIUsecaseRecordIF, PMIUsecaseInfo> {
  public:
    /// Removes all use cases of the source; any index but 0, 1 and 2 empties the record (docs/host-guide.md).
    void RemoveUsecase(int source) override;
    UsecaseInfoIFBase* GetUsecase(unsigned int source) override;
};

}  // namespace Zu::Wep::Trace
