#include "host/vorn/vornError.h"

namespace Zu::Wep::Vorn {

vornErrorIF::~vornErrorIF() = default;

vornError::vornError(const std::string& message, Severity_Type severity) : m_message(message), m_severity(severity) {}

vornError::vornError(const vornError& other) = default;

vornError::~vornError() = default;

const char* vornError::what() const noexcept { return m_message.c_str(); }

vornError::Severity_Type vornError::GetSeverity() const noexcept { return m_severity; }

}  // namespace Zu::Wep::Vorn
