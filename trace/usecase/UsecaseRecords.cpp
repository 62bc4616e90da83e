#include "trace/usecase/UsecaseRecords.h"

#include "trace/usecase/UsecaseRecordBody.h"

namespace Zu::Wep::Trace {

template class UsecaseRecordBase<UsecaseRecordIF, UsecaseInfo>;
template class UsecaseRecordBase<CTUsecaseRecordIF, CTUsecaseInfo>;
template class UsecaseRecordBase<PMIUsecaseRecordIF, PMIUsecaseInfo>;

void UsecaseRecords::CopyFrom(const UsecaseRecords& others) {
    sc.CopyFrom(others.sc);
    cpt.CopyFrom(others.cpt);
    pmi.CopyFrom(others.pmi);
}

void UsecaseRecords::Read(const BlockText& blocks, TextReporter* reporter) {
    ForEach([&](auto& record) { record.Read(blocks, reporter); });
}

}  // namespace Zu::Wep::Trace
