#include "trace/usecase/UsecaseRecords.h"

#include "trace/usecase/UsecaseRecordBody.h"

namespace Zu::Wep::Trace {

template class UsecaseRecordBase<UsecaseRecordIF, UsecaseInfo>;
template class UsecaseRecordBase<CTUsecaseRecordIF, CTUsecaseInfo>;
template class UsecaseRecordBase<PMIUsecaseRecordIF, PMIUsecaseInfo>;

}  // namespace Zu::Wep::Trace
