#include "stmdcm/validate/Validation.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <sstream>
#include <string_view>

#include "stmdcm/validate/Host.h"
#include "stmdcm/validate/QuestionProcess.h"
#include "stmdcm/validate/Questions.h"

namespace stmdcm::validate {

namespace {

using Clock = QuestionProcess::Clock;

/// The same for a question whatever others are asked.
std::uint32_t SeedOf(const Question& question, std::uint32_t seed) {
    for (const char letter : std::string_view(question.id)) {
        seed = seed * 31 + static_cast<unsigned char>(letter);
    }
    return seed;
}

/// Questions that are being asked.
class Asking {
  public:
    Asking(const ValidationOptions& options, std::vector<Answered>& answered)
        : m_options(options), m_answered(answered) {}

    std::size_t Count() const { return m_running.size(); }

    void Begin(std::size_t index) {
        const Question& question = *m_answered[index].question;
        m_running.push_back(
            {index, std::make_unique<QuestionProcess>(
                        question, Surroundings{m_options.library, fmt::format("{}/{}", m_options.folder, question.id),
                                               SeedOf(question, m_options.seed), m_options.hasTarget})});
    }

    /// Waits for the end of one of them at least, or of its time.
    void Wait() {
        std::vector<pollfd> ends;
        ends.reserve(m_running.size());
        Clock::time_point next = Clock::time_point::max();
        for (const Running& running : m_running) {
            ends.push_back({running.process->Descriptor(), POLLIN, 0});
            next = std::min(next, running.process->Begun() + m_options.timeLimit);
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
        ::poll(ends.data(), ends.size(), static_cast<int>(std::max(left.count(), std::int64_t{0})));
        for (std::size_t i = ends.size(); i-- > 0;) {
            if (ends[i].revents != 0 || Clock::now() >= m_running[i].process->Begun() + m_options.timeLimit) {
                End(i);
            }
        }
    }

  private:
    struct Running {
        std::size_t index;
        std::unique_ptr<QuestionProcess> process;
    };

    void End(std::size_t place) {
        Running& running = m_running[place];
        Answered& answered = m_answered[running.index];
        answered.took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - running.process->Begun());
        answered.answer = running.process->Result();
        m_running.erase(m_running.begin() + static_cast<std::ptrdiff_t>(place));
    }

    const ValidationOptions& m_options;
    std::vector<Answered>& m_answered;
    std::vector<Running> m_running;
};

/// The answers stand where the questions do.
std::vector<Answered> NotAsked(const std::vector<const Question*>& questions) {
    std::vector<Answered> answered;
    answered.reserve(questions.size());
    for (const Question* question : questions) {
        answered.push_back({question, {Verdict::Skip, "", "", "the library can't be loaded"}, {}});
    }
    return answered;
}

void Ask(std::vector<Answered>& answered, const ValidationOptions& options) {
    Asking asking(options, answered);
    for (std::size_t next = 0; next < answered.size() || asking.Count() > 0;) {
        if (next < answered.size() && asking.Count() < options.jobs) {
            asking.Begin(next++);
        } else {
            asking.Wait();
        }
    }
}

/// While it lives, what a library's processes leave behind becomes a child of this process; it ends with this.
class Strays {
  public:
    Strays() { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }
    ~Strays() {
        const std::string list = fmt::format("/proc/self/task/{}/children", ::gettid());
        pid_t child = 0;
        while (std::istringstream(Host::Read(list)) >> child) {  // its own children come behind it
            ::kill(child, SIGKILL);
            ::waitpid(child, nullptr, 0);
        }
        ::prctl(PR_SET_CHILD_SUBREAPER, 0);
    }
    Strays(const Strays&) = delete;
    Strays& operator=(const Strays&) = delete;
};

}  // namespace

std::vector<Answered> Validate(const std::vector<const Question*>& questions, const ValidationOptions& options) {
    const Strays strays;
    std::vector<const Question*> others = questions;
    others.erase(std::remove(others.begin(), others.end(), &LoadsQuestion()), others.end());
    std::vector<Answered> loads = NotAsked({&LoadsQuestion()});
    Ask(loads, options);
    const bool isLoaded = loads.front().answer.verdict == Verdict::Pass;
    std::vector<Answered> answered = NotAsked(others);
    if (isLoaded) {
        Ask(answered, options);
    }
    if (!isLoaded || others.size() < questions.size()) {
        answered.insert(answered.begin(), loads.front());
    }
    return answered;
}

}  // namespace stmdcm::validate
