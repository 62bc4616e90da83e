#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "tool/cli/CommandLine.h"
#include "tool/commands/CommandTable.h"

namespace {

/// Opens those that are closed, or else a file that the program opens would get what goes to them.
void OpenStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) == -1) {
            ::open("/dev/null", O_RDWR);  // takes the lowest number that is free
        }
    }
}

}  // namespace

int main(int argc, char** argv) try {
    OpenStandardDescriptors();
    return static_cast<int>(stmdcm::CommandLine(stmdcm::kCommands).Run(argc, argv));
} catch (...) {
    std::fputs("stmdcm: out of memory, or the output can't be written\n", stderr);
    return static_cast<int>(stmdcm::ExitStatus::Failed);
}
