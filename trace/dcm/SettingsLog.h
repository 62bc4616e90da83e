#pragma once

#include <string>

#include "trace/format/TextReporter.h"

namespace Zu::Wep::Trace {

/// Tells the log what of a settings text is not read (docs/log.md).
class SettingsLog final : public TextReporter {
  public:
    /// Borrows the name of the text.
    explicit SettingsLog(const std::string& source) : m_source(source) {}

    void OnLineCut(std::size_t line, std::size_t length, std::size_t limit) override;

  private:
    const std::string& m_source;
};

}  // namespace Zu::Wep::Trace
