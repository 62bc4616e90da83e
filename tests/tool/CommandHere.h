#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "tests/tool/ToolRun.h"
#include "tool/cli/CommandLine.h"
#include "tool/commands/CommandTable.h"

namespace stmdcm {

/// Runs commands of the tool in this process, where there are too many for a process each.
class CommandHere {
  public:
    ToolRun::Result Run(const std::vector<std::string>& arguments) {
        std::vector<const char*> argv = {"stmdcm"};
        for (const std::string& argument : arguments) {
            argv.push_back(argument.c_str());
        }
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = static_cast<int>(CommandLine(kCommands).Run(static_cast<int>(argv.size()), argv.data()));
        return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
    }
};

}  // namespace stmdcm
