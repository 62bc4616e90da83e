#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "tool/cli/CommandLine.h"
#include "tool/commands/CommandTable.h"

namespace {

/// Opens those that are closed, or else a file that the program opens would get what goes to them. Results don't go to
/// nowhere, and don't come from there: a standard output that was closed can't be written, a standard input not read.
void OpenStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) == -1) {
            ::open("/dev/null",  // takes the lowest number that is free
                   descriptor == STDOUT_FILENO ? O_RDONLY : O_WRONLY);
        }
    }
}

}  // namespace

int main(int argc, char** argv) try {
    OpenStandardDescriptors();
    std::signal(SIGXFSZ, SIG_IGN);  // a write past the limit fails instead (EFBIG), and what is temporary is removed
    return static_cast<int>(stmdcm::CommandLine(stmdcm::kCommands).Run(argc, argv));
} catch (...) {
    std::fputs("stmdcm: out of memory, or the output can't be written\n", stderr);
    return static_cast<int>(stmdcm::ExitStatus::Failed);
}
