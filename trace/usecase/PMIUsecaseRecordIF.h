#pragma once

#include "trace/usecase/UsecaseInfoIFBase.h"
#include "trace/usecase/UsecaseRecordIFBase.h"

namespace Zu::Wep::Trace {

/// The PMI/CMI power-monitor use cases of a manager.
class PMIUsecaseRecordIF : public UsecaseRecordIFBase<UsecaseInfoIFBase> {};

}  // namespace Zu::Wep::Trace
