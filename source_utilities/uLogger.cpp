#include "source_utilities/uLogger.h"

#include <dlfcn.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>

#include "source_utilities/WriteSignalBlock.h"
#include "source_utilities/uTime.h"

namespace ZU_WEP {

namespace {

/// Past which a write raises SIGXFSZ.
bool HasFileSizeLimit() {
    rlimit limit{};
    return ::getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}

constexpr std::uint32_t lineBufferSize = 4096;
constexpr char levelLetters[] = "MWFAE";

const char* StampFormat(uLogger::TIME_DATE when) {
    switch (when) {
        case uLogger::DATE_STAMP:
            return "%m/%d/%y | ";
        case uLogger::TIME_STAMP:
            return "%H:%M:%S:%s | ";
        case uLogger::DATE_TIME_STAMP:
            return "%m/%d/%y %H:%M:%S:%s | ";
        case uLogger::NO_STAMP:
            break;
    }
    return " ";
}

/// Writes the five level letters and a blank; returns how many characters that is.
std::size_t PutLevel(char* line, unsigned level) {
    std::size_t used = 0;
    for (; levelLetters[used] != '\0'; ++used) {
        const bool isSet = (level >> used & 1U) != 0;
        line[used] = isSet ? levelLetters[used] : ' ';
    }
    line[used++] = ' ';
    return used;
}

}  // namespace

uLogger::uLogger() : uLogger("QRX_log.txt") {}

uLogger::uLogger(const char* fileName, bool append)
    : m_fileName(fileName == nullptr ? "" : fileName),
      m_append(append),
      m_bufferSize(lineBufferSize),
      m_lineBuffer(std::make_unique<char[]>(lineBufferSize)) {}

uLogger::~uLogger() = default;

void uLogger::Log(unsigned level, TIME_DATE when, const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    LogList(level, when, format, args);
    va_end(args);
}

void uLogger::LogList(unsigned level, TIME_DATE when, const char* format, std::va_list args) {
    if (!m_outputEnabled || level == 0 || m_levelMask == 0) {
        return;
    }
    try {
        const uMutex::Guard guard(m_lock);
        std::size_t used = PutLevel(m_lineBuffer.get(), level);
        used = AppendStamp(used, when);
        used = AppendMessage(used, format, args);
        WriteLine(EndLine(used));
    } catch (const std::exception&) {  // A line that can't be written is lost; its caller goes on.
        return;
    }
}

void uLogger::Log(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    LogList(LogInformation, NO_STAMP, format, args);
    va_end(args);
}

void uLogger::LogTimeStamp() { Log(LogInformation, DATE_TIME_STAMP, "\n"); }

std::size_t uLogger::AppendStamp(std::size_t used, TIME_DATE when) {
    uTime::GetLocal();
    if (uTime::GetNumSnapshots() != m_stampSnapshot || when != m_stampKind) {
        char text[32] = "";
        uTime().FormatTime(text, sizeof text, StampFormat(when));
        m_stamp = text;
        m_stampKind = when;
        m_stampSnapshot = uTime::GetNumSnapshots();
    }
    return used + m_stamp.copy(m_lineBuffer.get() + used, m_stamp.size());
}

std::size_t uLogger::AppendMessage(std::size_t used, const char* format, std::va_list args) {
    if (format == nullptr) {
        return used;
    }
    char* rest = m_lineBuffer.get() + used;
    *rest = '\0';
    std::vsnprintf(rest, m_bufferSize - used - 1, format, args);  // Leaves room for the line feed.
    return used + std::strlen(rest);  // which counts no more than was written, as the result of the call may
}

std::size_t uLogger::EndLine(std::size_t used) {
    char* line = m_lineBuffer.get();
    const char last = line[used - 1];
    if (last == '\n' || last == '\r') {
        --used;
        const char before = last == '\n' ? '\r' : '\n';
        if (line[used - 1] == before) {
            --used;
        }
    }
    line[used++] = '\n';
    return used;
}

void uLogger::WriteLine(std::size_t size) {
    if (!m_fileOpen) {
        OpenFile();
    }
    const bool isEchoed = m_logToStdio;
    std::optional<WriteSignalBlock> block;
    if (isEchoed || !m_file.IsRegular() || HasFileSizeLimit()) {  // else no write raises a signal
        block.emplace();
    }
    m_file.WriteThrough(m_lineBuffer.get(), size);
    if (!isEchoed) {
        return;
    }
    std::fwrite(m_lineBuffer.get(), 1, size, stdout);
    std::fflush(stdout);
}

void uLogger::LogModuleInfo() {
    Dl_info module{};
    if (dladdr(reinterpret_cast<const void*>(&uLogger::LogModuleInfo), &module) == 0) {
        return;
    }
    const char* separator = std::strrchr(module.dli_fname, '/');
    const char* name = separator == nullptr ? "" : separator + 1;  // docs/log.md: no name without a "/"
    if (uLogger* logger = LoggerAbove(0)) {
        logger->Log("MODULE INFO - %s", name);
    }
}

bool uLogger::EnableOutput(bool enable) {
    const uMutex::Guard guard(m_lock);
    const bool before = m_outputEnabled;
    m_outputEnabled = enable;
    if (!enable) {
        CloseFile();
    }
    return before;
}

void uLogger::EnableLogToStdio(bool enable) { m_logToStdio = enable; }

void uLogger::EnableLogDbgOutWindow(bool enable) { m_logDbgOutWindow = enable; }

void uLogger::SetFileName(const char* name, bool append) {
    const uMutex::Guard guard(m_lock);
    const bool reopen = m_fileOpen;
    if (reopen) {
        CloseFile();
    }
    m_fileName = name == nullptr ? "" : name;
    m_append = append;
    if (reopen) {
        OpenFile();
    }
}

void uLogger::Clear() {
    const uMutex::Guard guard(m_lock);
    m_file.Erase();
    // A closed logger stays closed: a uFile whose closing failed says that it is open, but takes no lines.
    m_fileOpen = m_fileOpen && m_file.IsOpen();
}

void uLogger::Flush() {
    const uMutex::Guard guard(m_lock);
    m_file.Flush();
}

const char* uLogger::GetName() const { return m_named ? m_fileName.c_str() : ""; }

bool uLogger::OpenFile() {
    m_fileOpen = m_file.Open(m_fileName.c_str(), m_append ? "a+" : "w+");
    return m_fileOpen;
}

void uLogger::CloseFile() {
    m_file.Close();
    m_fileOpen = false;
}

}  // namespace ZU_WEP
