#include "host/check/Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <set>
#include <string_view>

#include "host/check/Kept.h"
#include "source_utilities/PosixFile.h"
#include "stmdcm/reading/Escaped.h"

namespace stmdcm_check {

namespace {

struct KeepErrno {
    KeepErrno() = default;
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;
    ~KeepErrno() { errno = number; }
    int number = errno;
};

void WriteOnStandardError(const std::string& line) {
    for (std::size_t done = 0; done < line.size();) {
        const ssize_t count = ::write(STDERR_FILENO, line.data() + done, line.size() - done);
        if (count < 0 && errno != EINTR) {
            return;  // there is nobody left to tell
        }
        done += static_cast<std::size_t>(count > 0 ? count : 0);
    }
}

/// A file that a variable names. What can't be written there is told on standard error, the first time.
class NamedFile {
  public:
    explicit NamedFile(const char* variable) {
        const char* name = std::getenv(variable);
        m_name = name != nullptr ? name : "";
        if (IsNamed()) {
            m_file = ZU_WEP::PosixFile::OpenAtOnce(m_name.c_str(), O_WRONLY | O_CREAT | O_APPEND);
            TellUnless(m_file.IsOpen());
            m_isWithinLine = EndsWithinLine();
        }
    }

    bool IsNamed() const { return !m_name.empty(); }
    bool Write(const std::string& line) {
        const bool isWritten = m_file.IsOpen() && m_file.Write(m_isWithinLine ? "\n" + line : line);
        m_isWithinLine = !isWritten;
        TellUnless(isWritten);
        return isWritten;
    }

  private:
    /// Whether a disk that was full has cut its last line.
    bool EndsWithinLine() const {
        const auto file = ZU_WEP::PosixFile::OpenAtOnce(m_name.c_str(), O_RDONLY);
        const std::uint64_t size = file.IsOpen() ? file.Size().value_or(0) : 0;
        char last = '\n';
        return size > 0 && file.ReadAt(size - 1, &last, 1) && last != '\n';
    }

    void TellUnless(bool isDone) {
        if (!isDone && !m_isTold) {
            m_isTold = true;
            WriteOnStandardError("stmdcm-check: " + stmdcm::Escaped(m_name) +
                                 " can't be written: " + ZU_WEP::ErrnoText(errno) + "\n");
        }
    }

    std::string m_name;
    ZU_WEP::PosixFile m_file;
    bool m_isWithinLine = false;
    bool m_isTold = false;
};

struct Outputs {
    std::mutex lock;
    NamedFile log{"STMDCM_CHECK_LOG"};
    NamedFile trace{"STMDCM_CHECK_TRACE"};
    bool isLast = std::getenv("STMDCM_CHECK_ABORT") != nullptr;
    std::set<std::string> told;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

/// Not destroyed with the process: hosts call until its very end.
Outputs& AllOutputs() {
    static auto* const outputs = MakeKept<Outputs>();
    return *outputs;
}

std::string Seconds(std::chrono::steady_clock::duration time) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6f", std::chrono::duration<double>(time).count());
    return text;
}

/// Without the numbers of calls, which differ each time.
std::string WithoutNumbers(const std::string& sentence) {
    constexpr std::string_view kNumber = "(call ";
    std::string key = sentence;
    for (std::size_t at = key.find(kNumber); at != std::string::npos; at = key.find(kNumber, at)) {
        key.erase(at, key.find(')', at) - at);
    }
    return key;
}

}  // namespace

void Tell(const std::string& sentence) {
    const KeepErrno kept;
    Trace("finding", JsonObject().Add("sentence", sentence));
    Outputs& all = AllOutputs();
    const std::lock_guard lock(all.lock);
    if (!all.told.insert(WithoutNumbers(sentence)).second) {
        return;
    }
    const std::string line = "stmdcm-check: " + stmdcm::Escaped(sentence) + "\n";
    if (!all.log.IsNamed() || !all.log.Write(line)) {
        WriteOnStandardError(line);
    }
    if (all.isLast) {
        std::abort();
    }
}

void Trace(const char* event, const JsonObject& members) {
    const KeepErrno kept;
    Outputs& all = AllOutputs();
    const std::lock_guard lock(all.lock);
    if (!all.trace.IsNamed()) {
        return;
    }
    JsonObject line;
    line.Add("event", event);
    line.AddJson("seconds", Seconds(std::chrono::steady_clock::now() - all.start));
    line.Add("thread", ::gettid());
    const std::string head = line.Text();
    const std::string tail = members.Text();
    all.trace.Write(head.substr(0, head.size() - 1) + (members.IsEmpty() ? "" : ",") + tail.substr(1) + "\n");
}

}  // namespace stmdcm_check
