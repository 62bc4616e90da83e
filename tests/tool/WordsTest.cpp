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

TEST(WordsTest, TextFromOutsideCantCommandTheTerminal) {
    const std::pair<std::string, std::string> cases[] = {
        {"a\x1b[2J\nb\x7f", R"(a\x1b[2J\x0ab\x7f)"},
        {"na\u00efve \u20ac \U0001F600", "na\u00efve \u20ac \U0001F600"},
        {"\x9b"
         "2J",
         R"(\x9b2J)"},                                         // a C1 byte
        {"\u0080\u009b\u00a0", "\\xc2\\x80\\xc2\\x9b\u00a0"},  // the same in UTF-8
        {"\xc0\xaf", R"(\xc0\xaf)"},                           // longer than it has to be
        {"\xed\xa0\x80", R"(\xed\xa0\x80)"},                   // half a surrogate pair
        {"\xf4\x90\x80\x80", R"(\xf4\x90\x80\x80)"},           // beyond the last character
        {"x\xe2\x82", R"(x\xe2\x82)"},                         // cut off
        {std::string(1, '\0'), R"(\x00)"},
    };
    for (const auto& [text, words] : cases) {
        EXPECT_EQ(Escaped(text), words);
        EXPECT_EQ(Escaped(words), words);
        EXPECT_TRUE(IsUtf8(Escaped(text)));
        EXPECT_EQ(IsUtf8(text), text[0] == 'n' || text[0] == 'a' || text[0] == '\0' || text.starts_with("\u0080"))
            << words;
    }
    const std::string name(kMaxColumns, 'x');
    EXPECT_EQ(Shown(name), name);
    EXPECT_EQ(Shown("a" + name + "\u20ac"), "a" + std::string(37, 'x') + "..." + std::string(38, 'x') + "\u20ac");
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
