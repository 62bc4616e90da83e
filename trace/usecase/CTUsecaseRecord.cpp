#include "trace/usecase/CTUsecaseRecord.h"

namespace Zu::Wep::Trace {
namespace {

CTUsecaseInfo sharedCTUsecase;

}  // namespace

CTUsecaseRecord::~CTUsecaseRecord() = default;

CTUsecaseInfoIF* CTUsecaseRecord::GetAUsecaseInfo() {
    sharedCTUsecase.CleanUp();
    return &sharedCTUsecase;
}

}  // namespace Zu::Wep::Trace
