#pragma once

namespace ZU_WEP {

class uLogger;

/// The level bits of a line, as callers use them (docs/log.md).
enum : unsigned { LogInformation = 1, LogUnexpected = 2, LogTrace = 4, LogError = 16 };

/// The current logger when the logging level is above `loggingLevel`, else null. Sets up the log system if need be.
/// Never throws.
uLogger* LoggerAbove(int loggingLevel);

/// Writes one line with the time of day, if logging is on. Never throws and never reports a failure.
void Log(unsigned level, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// The same, when the logging level is above `loggingLevel`.
void LogAbove(int loggingLevel, unsigned level, const char* format, ...) __attribute__((format(printf, 3, 4)));

}  // namespace ZU_WEP
