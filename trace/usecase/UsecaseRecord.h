#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include "trace/usecase/UsecaseInfo.h"
#include "trace/usecase/UsecaseRecordBase.h"
#include "trace/usecase/UsecaseRecordIF.h"

namespace Zu::Wep::Trace {

extern template class UsecaseRecordBase<UsecaseRecordIF, UsecaseInfo>;

class UsecaseRecord : public UsecaseRecordBase<UsecaseRecordIF, UsecaseInfo> {};

}  // namespace Zu::Wep::Trace
