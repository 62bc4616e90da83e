#include "tool/output/StandardOutput.h"

#include <unistd.h>

#include "stmdcm/Failure.h"
#include "tool/output/Console.h"

namespace stmdcm {

StandardOutput::StandardOutput() {
    if (::isatty(STDOUT_FILENO) == 1) {
        throw Failure("binary data does not go to a terminal; use -o FILE, or a pipe", Failure::Kind::Request);
    }
}

void StandardOutput::Write(std::string_view bytes) { Console::Print(bytes); }

}  // namespace stmdcm
