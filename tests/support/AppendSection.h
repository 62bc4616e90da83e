#pragma once

#include <string>
#include <string_view>

#include "trace/tdf/CaptureSave.h"

namespace stmdcm_test {

/// A save of one section. Gives what the file is to it; throws as it does.
inline Zu::Wep::Trace::SaveTarget AppendSection(const std::string& path, std::string_view name, unsigned version,
                                                std::string payload) {
    Zu::Wep::Trace::CaptureSave save(path);
    const auto target = save.Open();
    if (target == Zu::Wep::Trace::SaveTarget::Capture) {
        save.Append({{name, version, std::move(payload)}});
    }
    return target;
}

}  // namespace stmdcm_test
