#pragma once

#include "trace/format/BlockWriter.h"

namespace Zu::Wep::Trace {

/// Tells the log what does not read back as it was (docs/log.md).
class UsecaseLog final : public BlockWriteReporter {
  public:
    void OnValueCut(std::string_view key, std::size_t length) override;
    void OnLineFeed(std::string_view key) override;
};

}  // namespace Zu::Wep::Trace
