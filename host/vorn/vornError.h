#pragma once

// The host's error type. Hosts bring their own libvorn.so; the one built here stands in where there is none.

#include <exception>
#include <string>

#include "trace/Interface.h"

#define VORN_API __attribute__((visibility("default")))

namespace Zu::Wep::Vorn {

class VORN_API vornErrorIF : public std::exception {
  public:
    /// How grave an error is; the configuration manager raises `Severity_Error` alone.
    enum Severity_Type : int { Severity_Information = 0, Severity_Warning = 1, Severity_Error = 2, Severity_Fatal = 3 };

    ~vornErrorIF() override;
};

class VORN_API vornError : public vornErrorIF {
  public:
    vornError(const std::string& message, Severity_Type severity);
    vornError(const vornError& other);
    vornError& operator=(const vornError& other) = delete;
    ~vornError() override;

    /// The message; valid as long as this object.
    const char* what() const noexcept override;
    Severity_Type GetSeverity() const noexcept;

  private:
    std::string m_message;
    Severity_Type m_severity;
};

}  // namespace Zu::Wep::Vorn
