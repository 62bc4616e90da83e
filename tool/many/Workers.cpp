#include "tool/many/Workers.h"

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "source_utilities/ErrnoText.h"
#include "tool/output/InterruptGuard.h"

namespace stmdcm {

namespace {

/// What the work keeps, such as a plug-in, goes before the process does.
[[noreturn]] void Serve(Channel& channel, FileWork work, const Context& context) {
    try {
        while (const std::optional<std::string> file = channel.Receive()) {
            if (!channel.Send(WorkOn(*file, work, context).Encode())) {
                break;
            }
        }
        work = nullptr;
    } catch (...) {
        ::_exit(static_cast<int>(ExitStatus::Failed));
    }
    ::_exit(static_cast<int>(ExitStatus::Done));
}

}  // namespace

Workers::Workers(std::size_t count, const FileWork& work, const Context& context) {
    while (m_channels.size() < count) {
        Start(work, context);
    }
}

void Workers::Start(const FileWork& work, const Context& context) {
    std::pair<Channel, Channel> ends = Channel::Pair();
    const pid_t process = ::fork();
    if (process == -1) {
        const int error = errno;
        throw Failure(fmt::format("no further process can be started: {}", ZU_WEP::ErrnoText(error)));
    }
    if (process == 0) {
        InterruptGuard::ForgetAll();
        m_channels.clear();
        ends.first.Close();  // or else nobody would see the end of it
        Serve(ends.second, work, context);
    }
    m_channels.push_back(std::move(ends.first));
    m_processes.push_back(process);
}

Workers::~Workers() {
    m_channels.clear();
    for (const pid_t process : m_processes) {
        while (::waitpid(process, nullptr, 0) == -1 && errno == EINTR) {
        }
    }
}

FileOutcome Workers::Receive(std::size_t worker, const std::string& file) {
    const std::optional<std::string> message = m_channels[worker].Receive();
    if (!message) {
        throw Failure(file, "the process that worked on it, or on one before it, has ended too early");
    }
    return FileOutcome::Decode(*message);
}

}  // namespace stmdcm
