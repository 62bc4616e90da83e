#pragma once

#include "trace/usecase/UsecaseInfoIF.h"
#include "trace/usecase/UsecaseRecordIFBase.h"

namespace Zu::Wep::Trace {

/// The statistics-counter (SC) use cases of a manager.
class UsecaseRecordIF : public UsecaseRecordIFBase<UsecaseInfoIF> {};

}  // namespace Zu::Wep::Trace
