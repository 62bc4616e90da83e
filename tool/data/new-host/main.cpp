// A host of libStmDCM.so. README.md says how to build it, and where to go on.

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "CaptureJob.h"
#include "LiveJob.h"
#include "Log.h"

namespace {

constexpr char kUsage[] =
    "Usage: my_host PLUGIN change CAPTURE NEW-CAPTURE\n"
    "       my_host PLUGIN live CPU";

void Run(const std::vector<std::string>& arguments) {
    const std::string job = arguments.size() > 1 ? arguments[1] : "";
    if (job == "change" && arguments.size() == 4) {
        ChangeCapture(Plugin(arguments[0]), arguments[2], arguments[3]);
    } else if (job == "live" && arguments.size() == 3) {
        ShowLive(Plugin(arguments[0]), arguments[2]);
    } else {
        throw std::runtime_error(kUsage);
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        SwitchLogOn();
        Run({argv + 1, argv + argc});
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "my_host: " << error.what() << '\n';
        return 1;
    }
}
