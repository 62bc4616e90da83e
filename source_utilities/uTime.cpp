#include "source_utilities/uTime.h"

#include <sys/time.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

namespace ZU_WEP {

int uTime::m_year = 0;
int uTime::m_month = 0;
int uTime::m_day = 0;
int uTime::m_hour = 0;
int uTime::m_minute = 0;
int uTime::m_second = 0;
int uTime::m_wday = 0;
int uTime::m_yday = 0;
int uTime::m_milli = 0;
int uTime::m_status = 0;
std::time_t uTime::m_taken = -1;
unsigned long uTime::m_snapshots = 0;

namespace {

constexpr int statusInvalid = 1;
constexpr int statusUnusable = 2;

void CopyCut(char* buffer, int size, const char* text) {
    std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text);
}

}  // namespace

uTime::~uTime() = default;

void uTime::GetLocal() {
    timeval now{};
    gettimeofday(&now, nullptr);
    m_milli = static_cast<int>(now.tv_sec % 10000000 / 10000);  // Of the seconds: docs/log.md, "A line".
    m_status = 0;
    if (now.tv_sec == m_taken) {
        return;  // to ask for the time zone is to look at its file, which costs as much as a log line
    }
    std::tm local{};
    tzset();
    if (localtime_r(&now.tv_sec, &local) != nullptr) {
        m_year = local.tm_year + 1900;
        m_month = local.tm_mon;
        m_day = local.tm_mday;
        m_hour = local.tm_hour;
        m_minute = local.tm_min;
        m_second = local.tm_sec;
        m_wday = local.tm_wday;
        m_yday = local.tm_yday;
    }
    m_taken = now.tv_sec;  // not before, or another thread would take the old fields for those of this second
    ++m_snapshots;
}

void uTime::ConvertTime(std::tm& out) {
    out = {};
    out.tm_year = m_year - 1900;
    out.tm_mon =
        m_month - 1;  // Although it counts from 0 already: readers of logs know "%m" as one less (docs/log.md).
    out.tm_mday = m_day;
    out.tm_hour = m_hour;
    out.tm_min = m_minute;
    out.tm_sec = m_second;
    out.tm_wday = m_wday;
    out.tm_yday = m_yday;
    out.tm_isdst = 0;
}

char* uTime::FormatTime(char* buffer, int size, const char* format) const {
    if (buffer == nullptr || size <= 0 || format == nullptr || m_status == statusUnusable) {
        return nullptr;
    }
    if (m_status == statusInvalid) {
        CopyCut(buffer, size, "Invalid time");
        return buffer;
    }
    CopyCut(buffer, size, format);
    std::array<char, 16> milli{};
    std::snprintf(milli.data(), milli.size(), "%03d", m_milli);
    ReplaceString(buffer, size, "%s", milli.data());
    std::snprintf(milli.data(), milli.size(), "%d", m_milli);
    ReplaceString(buffer, size, "%#s", milli.data());

    const std::string tokens = buffer;
    std::tm fields{};
    ConvertTime(fields);
    if (std::strftime(buffer, static_cast<std::size_t>(size), tokens.c_str(), &fields) == 0) {
        *buffer = '\0';
    }
    return buffer;
}

int uTime::ReplaceString(char* text, int size, const char* from, const char* to) {
    if (*from == '\0') {
        return 0;
    }
    const int fromLength = static_cast<int>(std::strlen(from));
    std::string replaced;
    int count = 0;
    int done = 0;
    for (int at = 0; (at = FindSubString(text, from, done)) >= 0; done = at + fromLength) {
        replaced.append(text + done, text + at).append(to);
        ++count;
    }
    if (count == 0) {
        return 0;
    }
    replaced += text + done;
    if (replaced.size() > std::strlen(text) && replaced.size() >= static_cast<std::size_t>(size)) {
        return 0;
    }
    std::memcpy(text, replaced.c_str(), replaced.size() + 1);
    return count;
}

int uTime::FindSubString(const char* text, const char* sub, int start) {
    if (start < 0 || static_cast<std::size_t>(start) > std::strlen(text)) {
        return -1;
    }
    const char* found = std::strstr(text + start, sub);
    return found == nullptr ? -1 : static_cast<int>(found - text);
}

}  // namespace ZU_WEP
