#pragma once

#include <cstdint>
#include <string>

#include "trace/format/StmProperties.h"

namespace Zu::Wep::Trace {
struct StmProperty;
}

namespace stmdcm {

/// One "NAME=VALUE" of the command line.
struct Assignment {
    std::string name;
    std::int32_t value = 0;  ///< flags are 0 or 1

    /// Whether the text is more likely one of these than a file's name: a property's name, or a word with "=" behind
    /// it.
    static bool LooksLikeOne(const std::string& text);

    void ApplyTo(Zu::Wep::Trace::StmProperties& properties) const;

    /// Strict, where the formats are lenient: an unknown name, and a value that is none of the property's kind or out
    /// of its range, are a Failure with the status Usage. Takes clocks as "200M" or "1.25 GHz", flags as yes, no, true,
    /// false, 1, 0, and numbers also in hexadecimal ("0x80000000").
    static Assignment Parse(const std::string& text);
};

/// The property of that name. Throws Failure, of kind Request, where there is none.
const Zu::Wep::Trace::StmProperty& RequireProperty(const std::string& name);

}  // namespace stmdcm
