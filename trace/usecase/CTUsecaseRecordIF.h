#pragma once

#include "trace/usecase/CTUsecaseInfoIF.h"
#include "trace/usecase/UsecaseRecordIFBase.h"

namespace Zu::Wep::Trace {

/// The CP-tracer (CPT) use cases of a manager.
class CTUsecaseRecordIF : public UsecaseRecordIFBase<CTUsecaseInfoIF> {};

}  // namespace Zu::Wep::Trace
