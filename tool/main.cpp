#include <cstdio>

#include "tool/cli/CommandLine.h"
#include "tool/commands/CommandTable.h"

int main(int argc, char** argv) try {
    return static_cast<int>(stmdcm::CommandLine(stmdcm::kCommands).Run(argc, argv));
} catch (...) {
    std::fputs("stmdcm: out of memory, or the output can't be written\n", stderr);
    return static_cast<int>(stmdcm::ExitStatus::Failed);
}
