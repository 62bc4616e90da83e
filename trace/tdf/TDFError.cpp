#include "trace/tdf/TDFError.h"

#include "host/vorn/vornError.h"

namespace Zu::Wep::Trace::TDFError {

void Throw(const std::string& text) { throw Vorn::vornError(text, Vorn::vornErrorIF::Severity_Error); }

}  // namespace Zu::Wep::Trace::TDFError
