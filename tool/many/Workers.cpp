#include "tool/many/Workers.h"

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/capture/InterruptBlock.h"
#include "tool/output/InterruptGuard.h"
#include "tool/output/LateOutput.h"
#include "tool/output/StopRequest.h"

namespace stmdcm {

namespace {

bool IsMade(const StopRequest* stop) { return stop != nullptr && stop->IsMade(); }

/// What is on its way when half of a worker's names are left: so it never waits for more of them.
constexpr std::size_t kBatch = Workers::kMostWaiting / 2;

void ServeEach(Channel& channel, const FileWork& work, const Context& context, const StopRequest* stop,
               bool isCareful) {
    LateOutput results([&](std::string_view framed) {
        if (!channel.Send(framed)) {
            throw Failure("the results are not taken any more");
        }
    });
    std::size_t count = 0;
    while (const std::optional<std::string> file = channel.Receive()) {
        if (IsMade(stop)) {
            break;
        }
        const std::string result = Channel::Framed(WorkOn(*file, work, context).Encode());
        const bool isDue = isCareful || ++count % kBatch == 0 || !channel.HasMessage();
        results.Add(result, isDue ? LateOutput::When::Now : LateOutput::When::Soon);
    }
}

/// What the work keeps, such as a plug-in, goes before the process does.
[[noreturn]] void Serve(Channel& channel, FileWork work, const Context& context, const StopRequest* stop,
                        bool isCareful) {
    try {
        ServeEach(channel, work, context, stop, isCareful);
        work = nullptr;
    } catch (...) {
        ::_exit(static_cast<int>(ExitStatus::Failed));
    }
    ::_exit(static_cast<int>(ExitStatus::Done));
}

}  // namespace

Workers::Workers(std::size_t count, const FileWork& work, const Context& context, const StopRequest* stop,
                 std::string ofUnfinished, bool once)
    : m_work(work), m_context(context), m_stop(stop), m_ofUnfinished(std::move(ofUnfinished)), m_once(once) {
    while (m_workers.size() < count) {
        m_workers.push_back(Start(m_once));
    }
}

Workers::Worker Workers::Start(bool isCareful) {
    std::pair<Channel, Channel> ends = Channel::Pair();
    pid_t process = 0;
    {
        const InterruptBlock block;
        process = ::fork();
        if (process == 0) {
            InterruptGuard::ForgetAll();
            StopRequest::KeepToItself();
        }
    }
    if (process == -1) {
        const int error = errno;
        throw Failure(fmt::format("no further process can be started: {}", ZU_WEP::ErrnoText(error)));
    }
    if (process == 0) {
        m_workers.clear();
        ends.first.Close();  // or else nobody would see the end of it
        Serve(ends.second, m_work, m_context, m_stop, isCareful);
    }
    return {std::move(ends.first), process, isCareful};
}

Workers::~Workers() {
    for (Worker& worker : m_workers) {
        worker.channel.Close();
    }
    for (Worker& worker : m_workers) {
        Reap(worker);
    }
}

/// In words how it ended; empty: as it should.
std::string Workers::Reap(Worker& worker) {
    worker.channel.Close();
    int status = 0;
    const pid_t process = std::exchange(worker.process, -1);
    while (process != -1 && ::waitpid(process, &status, 0) == -1 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) {
        return fmt::format("signal {}", WTERMSIG(status));
    }
    return status == 0 ? "" : fmt::format("status {}", WEXITSTATUS(status));
}

/// False: `why` it can't be.
bool Workers::Restart(Worker& worker, std::string& why) try {
    Reap(worker);
    Worker other = Start(true);
    std::string names;
    for (const std::string& file : worker.files) {
        names += Channel::Framed(file);
    }
    other.channel.Send(names);
    other.files = std::move(worker.files);
    other.suspect = std::move(worker.suspect);
    worker = std::move(other);
    return true;
} catch (const Failure& failure) {
    why = failure.what();
    return false;
}

void Workers::Queue(std::size_t worker, const std::string& file) {
    m_workers[worker].files.push_back(file);
    m_workers[worker].queued += Channel::Framed(file);
    ++m_workers[worker].queuedCount;
}

void Workers::SendQueued() {
    for (Worker& worker : m_workers) {
        const std::size_t count = std::exchange(worker.queuedCount, 0);
        const std::string names = std::exchange(worker.queued, {});
        std::string why;
        if (!names.empty() && !worker.channel.Send(names) && count == worker.files.size()) {
            Restart(worker, why);  // it has ended with nothing to do
        }
    }
}

bool Workers::HasResult(std::size_t worker) const {
    const Channel& channel = m_workers[worker].channel;
    return channel.HasMessage() || channel.Descriptor() < 0;
}

std::optional<FileOutcome> Workers::Receive(std::size_t worker) {
    Worker& its = m_workers[worker];
    for (;;) {
        if (const std::optional<std::string> message = its.channel.Receive()) {
            its.files.pop_front();
            return FileOutcome::Decode(*message);
        }
        std::string why;
        const std::string how = Reap(its);
        const bool isGuilty = its.isCareful && (m_once || its.suspect == its.files.front());
        its.suspect = its.isCareful ? its.files.front() : "";
        if (!how.empty() && (isGuilty || IsMade(m_stop))) {
            FileOutcome outcome =
                Fail(its, fmt::format("the process that worked on it has ended too early ({}){}", how, m_ofUnfinished));
            if (!IsMade(m_stop)) {
                Restart(its, why);
            }
            return outcome;
        }
        if (IsMade(m_stop)) {
            its.files.pop_front();
            return std::nullopt;
        }
        if (!Restart(its, why)) {
            return Fail(its, why);
        }
    }
}

/// Of the first of its files.
FileOutcome Workers::Fail(Worker& worker, const std::string& why) {
    const std::string file = std::move(worker.files.front());
    worker.files.pop_front();
    return WorkOn(
        file, [&](const Context&, const std::string&) -> FileResult { throw Failure(file, why); }, m_context);
}

}  // namespace stmdcm
