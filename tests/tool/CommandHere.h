#pragma once

#include <sys/mman.h>
#include <unistd.h>

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
        Stream out(STDOUT_FILENO);
        Stream error(STDERR_FILENO);
        const int status = static_cast<int>(CommandLine(kCommands).Run(static_cast<int>(argv.size()), argv.data()));
        std::fflush(stdout);
        return {status, out.Take(), error.Take()};
    }

  private:
    /// Sends a descriptor into memory for as long as it lives.
    class Stream {
      public:
        explicit Stream(int descriptor)
            : m_descriptor(descriptor), m_old(::dup(descriptor)), m_memory(::memfd_create("stream", MFD_CLOEXEC)) {
            std::fflush(stdout);
            ::dup2(m_memory, m_descriptor);
        }
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;
        ~Stream() {
            ::dup2(m_old, m_descriptor);
            ::close(m_old);
            ::close(m_memory);
        }

        std::string Take() const {
            std::string text(static_cast<std::size_t>(::lseek(m_memory, 0, SEEK_END)), '\0');
            text.resize(static_cast<std::size_t>(::pread(m_memory, text.data(), text.size(), 0)));
            return text;
        }

      private:
        int m_descriptor;
        int m_old;
        int m_memory;
    };
};

}  // namespace stmdcm
