#include "tool/commands/CommandTable.h"

#include "tool/commands/Demo.h"

namespace stmdcm {

namespace {

template <class T>
std::unique_ptr<Command> Make() {
    return std::make_unique<T>();
}

// A new command is one line here.
constexpr CommandEntry kCommands[] = {
    {"demo", "Load, change, save and reload a capture's configuration, and compare", Make<Demo>},
};

}  // namespace

std::span<const CommandEntry> CommandTable() { return kCommands; }

}  // namespace stmdcm
