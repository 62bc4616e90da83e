#pragma once

#include <memory>
#include <span>

#include "tool/cli/Command.h"

namespace stmdcm {

struct CommandEntry {
    const char* name;
    const char* description;
    std::unique_ptr<Command> (*make)();
    bool isHidden = false;  ///< for programs: in no help
};

/// Every command, in the order in which the help shows them.
std::span<const CommandEntry> CommandTable();

}  // namespace stmdcm
