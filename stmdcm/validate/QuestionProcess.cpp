#include "stmdcm/validate/QuestionProcess.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/InterruptBlock.h"
#include "stmdcm/capture/RemoveTree.h"
#include "stmdcm/reading/Escaped.h"

namespace stmdcm::validate {

namespace fs = std::filesystem;
using ZU_WEP::PosixFile;

namespace {

constexpr std::size_t kMostOfAnAnswer = 64 * 1024;
constexpr std::size_t kMostOfAText = 1000;
/// Questions make files of 128 MiB; a library that writes without an end is not to fill the user's disk.
constexpr rlim_t kLargestFile = rlim_t{256} << 20;

/// The verdict, and the texts with a zero byte behind each.
std::string Encode(const Answer& answer) {
    std::string bytes(1, static_cast<char>(answer.verdict));
    for (const std::string* text : {&answer.asked, &answer.expected, &answer.came}) {
        std::string part = text->substr(0, kMostOfAText);
        std::replace(part.begin(), part.end(), '\0', ' ');
        bytes += part + '\0';
    }
    return bytes;
}

bool Decode(std::string_view bytes, Answer& answer) {
    if (std::count(bytes.begin(), bytes.end(), '\0') < 3) {
        return false;
    }
    answer.verdict = static_cast<Verdict>(bytes.front());
    bytes.remove_prefix(1);
    for (std::string* text : {&answer.asked, &answer.expected, &answer.came}) {
        const std::size_t end = bytes.find('\0');
        *text = bytes.substr(0, end);
        bytes.remove_prefix(end + 1);
    }
    return true;
}

void Become(int descriptor, const char* path, int flags) {
    const int file = ::open(path, flags | O_CLOEXEC, 0600);
    ::dup2(file, descriptor);
    ::close(file);
}

/// What a host has when it begins, and nothing that its user could miss.
void BecomeHost(const Surroundings& surroundings, pid_t parent) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(1);
    }
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) {
        std::signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    const rlimit noDump{0, 0};
    ::setrlimit(RLIMIT_CORE, &noDump);
    rlimit file{};
    ::getrlimit(RLIMIT_FSIZE, &file);
    file.rlim_max = std::min(file.rlim_max, kLargestFile);
    file.rlim_cur = std::min(file.rlim_cur, kLargestFile);
    ::setrlimit(RLIMIT_FSIZE, &file);
    PosixFile::Open("/proc/self/oom_score_adj", O_WRONLY).Write("1000");  // the first to go where memory runs out
    Become(STDIN_FILENO, "/dev/null", O_RDONLY);
    const std::string printed = surroundings.folder + "/printed";
    Become(STDOUT_FILENO, printed.c_str(), O_WRONLY | O_CREAT | O_APPEND);
    Become(STDERR_FILENO, printed.c_str(), O_WRONLY | O_APPEND);
    ::setenv("HOME", (surroundings.folder + "/home").c_str(), 1);
    ::setenv("TMPDIR", (surroundings.folder + "/tmp").c_str(), 1);
    for (const char* name : {"STMDCM_SCENARIO", "STMDCM_SCENARIO_LOG"}) {
        ::unsetenv(name);
    }
    if (::chdir(surroundings.folder.c_str()) != 0) {
        ::_exit(1);
    }
}

Answer Ask(const Question& question, const Surroundings& surroundings) {
    const auto failed = [&](const std::string& came) {
        return Answer{Verdict::Fail, question.asks, "no exception", came};
    };
    try {
        Host host(surroundings);
        question.ask(host);
        return {};
    } catch (const Answer& answer) {
        return answer;
    } catch (const std::exception& error) {
        return failed(fmt::format("one that says \"{}\"", error.what()));
    } catch (...) {
        return failed("one of an unknown type");
    }
}

/// The last line that a process has printed, behind a colon.
std::string LastWords(const std::string& folder) {
    std::string printed = Host::Read(folder + "/printed");
    printed.erase(printed.find_last_not_of(" \n") + 1);
    const std::string line = printed.substr(printed.rfind('\n') + 1).substr(0, kMostOfAText);
    return line.empty() ? "" : "; it printed last: " + Escaped(line);
}

}  // namespace

QuestionProcess::QuestionProcess(const Question& question, Surroundings surroundings)
    : m_question(question), m_surroundings(std::move(surroundings)), m_answer(PosixFile::InMemory("answer")) {
    for (const char* name : {"home", "tmp"}) {
        fs::create_directories(fs::path(m_surroundings.folder) / name);
    }
    const pid_t parent = ::getpid();
    const InterruptBlock block;
    m_process = ::fork();
    if (m_process == 0) {
        BecomeHost(m_surroundings, parent);
        m_answer.WriteAt(0, {Encode(Ask(question, m_surroundings))});
        ::_exit(0);
    }
    m_ended = m_process == -1 ? -1 : static_cast<int>(::syscall(SYS_pidfd_open, m_process, 0U));
    if (m_ended == -1) {
        const int error = errno;
        Kill();
        RemoveTree(m_surroundings.folder);
        throw Failure(fmt::format("no process can be started for a question: {}", ZU_WEP::ErrnoText(error)));
    }
}

QuestionProcess::~QuestionProcess() {
    Kill();
    ::close(m_ended);
    RemoveTree(m_surroundings.folder);
}

/// With all that it has started itself.
void QuestionProcess::Kill() {
    const pid_t process = std::exchange(m_process, -1);
    if (process > 0) {
        ::kill(-process, SIGKILL);
        ::kill(process, SIGKILL);
        ::waitpid(process, nullptr, 0);
    }
}

bool QuestionProcess::Take(Answer& answer) const {
    std::string bytes(kMostOfAnAnswer, '\0');
    const std::optional<std::size_t> size = m_answer.ReadAt(0, bytes.data(), bytes.size());
    return Decode(std::string_view(bytes).substr(0, size.value_or(0)), answer);
}

Answer QuestionProcess::Result() {
    siginfo_t info{};
    const bool hasEnded =
        ::waitid(P_PID, static_cast<id_t>(m_process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0;
    Kill();
    Answer answer;
    if (!hasEnded) {
        return {Verdict::TimedOut, m_question.asks, "an answer", "none in time" + LastWords(m_surroundings.folder)};
    }
    if (info.si_code != CLD_EXITED) {
        const std::string how = fmt::format("signal {} ({})", info.si_status, ::strsignal(info.si_status));
        return {Verdict::Crashed, m_question.asks, "an answer", how + LastWords(m_surroundings.folder)};
    }
    if (!Take(answer)) {
        const std::string how = fmt::format("the end of the process, with status {}", info.si_status);
        return {Verdict::Crashed, m_question.asks, "an answer", how + LastWords(m_surroundings.folder)};
    }
    return answer;
}

}  // namespace stmdcm::validate
