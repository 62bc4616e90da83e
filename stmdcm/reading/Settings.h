#pragma once

#include <string>
#include <string_view>

#include "trace/format/SettingsText.h"
#include "trace/usecase/UsecaseRecords.h"

namespace stmdcm {

/// The properties and use cases of a configuration, as a manager holds them: its settings text to and from memory. Not
/// copyable, since records are not.
struct Settings : Zu::Wep::Trace::UsecaseRecords {
    /// The properties that a device identification sets.
    void ReadDevice(std::string_view text, Zu::Wep::Trace::TextReporter* reporter = nullptr);
    /// What a settings text sets, property by property; the use cases are replaced. Gives what a host's load of a
    /// settings file gives. The text has the limits of a settings file or none.
    bool Read(std::string text, const Zu::Wep::Trace::LineLimits& limits = {});
    /// The two steps of that, for who wants to hear what is met.
    Zu::Wep::Trace::ApplyProperty Applier();
    using UsecaseRecords::Read;

    /// The text that a manager writes.
    std::string Text();

    Zu::Wep::Trace::StmProperties properties;
};

}  // namespace stmdcm
