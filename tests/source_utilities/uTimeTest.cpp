#include "source_utilities/uTime.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace ZU_WEP {
namespace {

struct Clock : uTime {
    static void Set(int month, int milli, int status) {
        std::tie(m_year, m_day, m_hour, m_minute, m_second) = std::make_tuple(2026, 15, 12, 0, 5);
        std::tie(m_month, m_milli, m_status) = std::tie(month, milli, status);
    }
};

TEST(uTime, FormatsWithItsOwnTokensInTheRoomThereIs) {
    const std::tuple<int, int, int, const char*, const char*> cases[] = {
        {2, 0, 0, "%H:%M:%S:%s", "12:00:05:000"}, {2, 45, 0, "%s %#s %s", "045 45 045"}, {2, 0, 0, "%m", "02"},
        {0, 0, 0, "%m/%d/%y | ", "00/15/26 | "},  {2, 0, 1, "%H", "Invalid time"},       {2, 0, 0, "", ""}};
    for (const auto& [month, milli, status, format, text] : cases) {
        Clock::Set(month, milli, status);
        char buffer[32];
        EXPECT_STREQ(uTime().FormatTime(buffer, sizeof buffer, format), text);
        for (int size = 1; size < 32; ++size) {
            std::string small(static_cast<std::size_t>(size) + 1, '#');
            ASSERT_NE(uTime().FormatTime(small.data(), size, format), nullptr);
            EXPECT_EQ(small.back(), '#') << size << format;
        }
    }
    Clock::Set(2, 0, 2);
    char buffer[8];
    EXPECT_EQ(uTime().FormatTime(buffer, sizeof buffer, "%H"), nullptr);
}

TEST(uTime, TakesMillisecondsFromTheSeconds) {
    const std::time_t before = std::time(nullptr);
    uTime::GetLocal();
    const std::time_t after = std::time(nullptr);
    EXPECT_TRUE(uTime::GetMilliSecond() == before / 10000 % 1000 || uTime::GetMilliSecond() == after / 10000 % 1000);
    EXPECT_TRUE(uTime::GetMonth() == std::localtime(&before)->tm_mon ||
                uTime::GetMonth() == std::localtime(&after)->tm_mon);
}

TEST(uTime, ReplacesOnlyWhatFits) {
    const std::tuple<const char*, const char*, int, int, const char*> cases[] = {
        {"ab", "x", 8, 2, "x-x-a"}, {"ab", "xyz", 10, 2, "xyz-xyz-a"}, {"ab", "xyz", 9, 0, "ab-ab-a"},
        {"-", "", 8, 2, "ababa"},   {"a", "aa", 11, 3, "aab-aab-aa"},  {"", "y", 9, 0, "ab-ab-a"}};
    for (const auto& [from, to, size, count, result] : cases) {
        char text[12] = "ab-ab-a";
        EXPECT_EQ(uTime::ReplaceString(text, size, from, to), count);
        EXPECT_STREQ(text, result);
    }
}

}  // namespace
}  // namespace ZU_WEP
