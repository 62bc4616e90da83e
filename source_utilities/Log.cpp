#include "source_utilities/Log.h"

#include <cstdarg>
#include <exception>

#include "source_utilities/uLogSystem.h"

namespace ZU_WEP {

namespace {

__attribute__((format(printf, 3, 0))) void Write(int loggingLevel, unsigned level, const char* format,
                                                 std::va_list args) {
    if (uLogger* logger = LoggerAbove(loggingLevel)) {
        logger->Log(level, uLogger::TIME_STAMP, format, args);
    }
}

}  // namespace

uLogger* LoggerAbove(int loggingLevel) {
    try {
        const uLogSystem* system = uLogSystem::GetLogSystem();
        return system->GetLoggingLevel() > loggingLevel ? system->GetLogger() : nullptr;
    } catch (const std::exception&) {
        return nullptr;
    }
}

void Log(unsigned level, const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    Write(0, level, format, args);
    va_end(args);
}

void LogAbove(int loggingLevel, unsigned level, const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    Write(loggingLevel, level, format, args);
    va_end(args);
}

}  // namespace ZU_WEP
