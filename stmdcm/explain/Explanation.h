#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// What becomes of what a place says.
enum class Standing : std::uint8_t {
    InForce,
    Overridden,  ///< it is read, and another place counts
    NotInForce,  ///< its section is not the one that is read, or no host gets what is read of it
    NotRead,     ///< no reader gets to its section, or to this line of it
    Beside       ///< it is no place of the configuration, but says something about it
};

/// "in force", "overridden", "not in force", "not read", "beside".
const char* StandingName(Standing standing);

/// One place that states a property, a use case or an image.
struct Statement {
    std::string source;  ///< "default", "settings text", or the name of a section
    Place place;         ///< without an offset and a line for a default
    std::string value;   ///< what a reader makes of it, in words
    std::string text;    ///< as it stands there; empty where it is no text
    Standing standing = Standing::InForce;
    std::string why;  ///< a clause: who reads it when, and why it counts or does not
};

/// How one thing of a configuration comes to be what it is.
struct Explanation {
    std::string kind;                   ///< "property", "SC use case" and so on, "object file"
    std::string item;                   ///< which of them
    std::string value;                  ///< in force, in words; empty: there is none
    std::vector<Statement> statements;  ///< in the order of reading, then those that are not in force
};

/// What a file says about a name.
struct Explained {
    Reading reading;  ///< of the whole file: whether a host loads it, and what of it is not read
    std::vector<Explanation> items;

    /// Throws Failure where nothing goes by the name.
    void RequireAny(const std::string& name) const;
};

/// Explains every property, use case and image that goes by that name in a capture or a settings file: a property by
/// its name; a use case by "job N, module N", its module's name or its source; an image by its name or its path. In
/// force is what a host gets: of a capture that no host loads that is the images alone. Throws Failure where the file
/// can't be read.
Explained Explain(const std::string& path, const std::string& name);

}  // namespace stmdcm
