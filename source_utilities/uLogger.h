#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <memory>
#include <string>

#include "source_utilities/Log.h"
#include "source_utilities/uFile.h"
#include "source_utilities/uMutex.h"

namespace ZU_WEP {

/// A `va_list` as a parameter has it, and nothing that only converts to one, as a literal 0 does where it is a pointer.
template <typename Args>
concept VaList = requires(Args* given, std::va_list list) {
    given == &list;
};

/// One log file, written line by line and flushed after each; the line format is described in docs/log.md.
/// Threads may share a logger: lines stay whole. The file is opened by the first line. A file that can't be opened
/// costs its lines and nothing else; no line reports a failure to write, throws, or raises a signal.
class uLogger {
  public:
    /// The time stamp of a line.
    enum TIME_DATE : int { NO_STAMP = 0, DATE_STAMP = 1, TIME_STAMP = 2, DATE_TIME_STAMP = 3 };

    /// Writes to "QRX_log.txt" in the working directory, replacing it.
    uLogger();
    explicit uLogger(const char* fileName, bool append = false);
    virtual ~uLogger();
    uLogger(const uLogger&) = delete;
    uLogger& operator=(const uLogger&) = delete;

    /// Writes one line. `level` is a set of the five level bits; 0 writes nothing. A message that does not fit the
    /// line buffer of 4096 bytes is cut. The forms without `level` and `when` use level 1 and no time stamp.
    void Log(unsigned level, TIME_DATE when, const char* format, ...) __attribute__((format(printf, 4, 5)));
    template <VaList Args>
    __attribute__((format(printf, 4, 0))) void Log(unsigned level, TIME_DATE when, const char* format, Args args) {
        LogList(level, when, format, args);
    }
    void Log(const char* format, ...) __attribute__((format(printf, 2, 3)));
    template <VaList Args>
    __attribute__((format(printf, 2, 0))) void Log(const char* format, Args args) {
        LogList(LogInformation, NO_STAMP, format, args);
    }
    void LogTimeStamp();

    /// Writes the file name of the shared object that holds this code, through the current logger.
    static void LogModuleInfo();

    /// Returns what was in force before. Output that is switched off also closes the file.
    bool EnableOutput(bool enable);
    void EnableLogToStdio(bool enable);
    /// Has no effect on this platform.
    void EnableLogDbgOutWindow(bool enable);

    /// Goes on in another file, opened at once when one is open.
    void SetFileName(const char* name, bool append);
    void Clear();
    void Flush();
    const char* GetName() const;

    bool OpenFile();
    void CloseFile();

  private:
    void LogList(unsigned level, TIME_DATE when, const char* format, std::va_list args)
        __attribute__((format(printf, 4, 0)));
    std::size_t AppendStamp(std::size_t used, TIME_DATE when);
    std::size_t AppendMessage(std::size_t used, const char* format, std::va_list args);
    std::size_t EndLine(std::size_t used);
    void WriteLine(std::size_t size);

    uFile m_file;
    std::string m_fileName;
    std::atomic<bool> m_outputEnabled = true;
    std::atomic<bool> m_logToStdio = false;
    bool m_logDbgOutWindow = false;
    bool m_append;
    bool m_named = true;
    bool m_fileOpen = false;
    uMutex m_lock;
    std::uint32_t m_bufferSize;
    std::unique_ptr<char[]> m_lineBuffer;
    std::uint32_t m_levelMask = 31;
    std::string m_stamp;  ///< of the last line, and what it was made of
    TIME_DATE m_stampKind = NO_STAMP;
    unsigned long m_stampSnapshot = 0;
};

}  // namespace ZU_WEP
