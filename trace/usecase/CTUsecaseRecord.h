#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include "trace/usecase/CTUsecaseInfo.h"
#include "trace/usecase/CTUsecaseRecordIF.h"
#include "trace/usecase/UsecaseRecordBase.h"

namespace Zu::Wep::Trace {

extern template class UsecaseRecordBase<CTUsecaseRecordIF, CTUsecaseInfo>;

class CTUsecaseRecord : public UsecaseRecordBase<CTUsecaseRecordIF, CTUsecaseInfo> {};

}  // namespace Zu::Wep::Trace
