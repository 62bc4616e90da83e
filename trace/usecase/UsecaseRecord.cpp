#include "trace/usecase/UsecaseRecord.h"

namespace Zu::Wep::Trace {
namespace {

UsecaseInfo sharedUsecase;

}  // namespace

UsecaseRecord::~UsecaseRecord() = default;

UsecaseInfoIF* UsecaseRecord::GetAUsecaseInfo() {
    sharedUsecase.CleanUp();
    return &sharedUsecase;
}

}  // namespace Zu::Wep::Trace
