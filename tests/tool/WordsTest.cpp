#include "stmdcm/reading/Words.h"

#include <gtest/gtest.h>

#include <limits>

#include "tool/render/Table.h"

namespace stmdcm {

TEST(WordsTest, FrequenciesAreExact) {
    const std::pair<std::int64_t, const char*> cases[] = {
        {0, "0 Hz"},
        {1, "1 Hz"},
        {999, "999 Hz"},
        {1000, "1 kHz"},
        {200000000, "200 MHz"},
        {32768, "32.768 kHz"},
        {1000000001, "1.000000001 GHz"},
        {-1500, "-1.5 kHz"},
        {std::numeric_limits<std::int32_t>::min(), "-2.147483648 GHz"}};
    for (const auto& [hertz, words] : cases) {
        EXPECT_EQ(Frequency(hertz), words);
    }
}

TEST(WordsTest, TimesOutsideAnyCalendarStayNumbers) {
    EXPECT_EQ(UtcTime(1700000000), "2023-11-14T22:13:20Z");
    EXPECT_EQ(UtcTime(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
}

TEST(WordsTest, NamesCantCommandTheTerminal) {
    EXPECT_EQ(InWords(Unit::None, std::string("a\x1b[2J\nb")), "a\\x1b[2J\\x0ab");
}

TEST(TableTest, ColumnsLineUpWhateverTheStyle) {
    Table table;
    table.AddRow({{"naïve", Style::Good}, {"1"}, {""}});
    table.AddLine({"a line of its own that is longer than any cell"});
    table.AddRow({{"x"}, {"22"}, {"end"}});
    const std::string line = "a line of its own that is longer than any cell\n";
    EXPECT_EQ(table.Text(Palette(false), 1), " naïve  1\n " + line + " x      22  end\n");
    EXPECT_EQ(table.Text(Palette(true), 0), "\x1b[32mnaïve\x1b[0m  1\n" + line + "x      22  end\n");
}

}  // namespace stmdcm
