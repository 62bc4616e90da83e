#include <cstdio>

#include "tool/cli/CommandLine.h"

int main(int argc, char** argv) try { return static_cast<int>(stmdcm::CommandLine().Run(argc, argv)); } catch (...) {
    std::fputs("stmdcm: out of memory, or the output can't be written\n", stderr);
    return static_cast<int>(stmdcm::ExitStatus::Failed);
}
