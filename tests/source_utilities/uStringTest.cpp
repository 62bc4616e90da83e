#include "source_utilities/uString.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <locale>

namespace ZU_WEP {
namespace {

TEST(uString, ReadsNumbers) {
    const std::pair<const char*, long> integers[] = {
        {"0x1F", 31}, {"0X", 0},    {"0xG", 0}, {"0x10", 16},  {"017", 15},    {"08", 0},    {"0", 0},
        {" 0x10", 0}, {"-0x10", 0}, {"abc", 0}, {"12abc", 12}, {" ", 0},       {"0b101", 0}, {"  42", 42},
        {"1e3", 1},   {"-5", -5},   {"+7", 7},  {"0 7", 7},    {"0xfFz", 255}, {"5k", 5},    {"1,5", 1}};
    for (const auto& [text, value] : integers) {
        EXPECT_EQ(uString::ToLong(text), value) << text;
        EXPECT_EQ(uString::ToNumeric<unsigned long>(text), static_cast<unsigned long>(value)) << text;
    }
    EXPECT_EQ(uString::ToInt64("99999999999999999999"), std::numeric_limits<long>::max());
    EXPECT_EQ(uString::ToInt64("-99999999999999999999"), std::numeric_limits<long>::min());
    EXPECT_EQ(uString::ToDouble("0.5"), 0.5);
    EXPECT_EQ(uString::ToDouble("0x10"), 10);
}

TEST(uString, ReadsBooleansAndNumbersTheSameInAnyLocale) {
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
    EXPECT_EQ(uString::ToDouble("1.25"), 1.25);
    std::locale::global(before);
    for (const char* text : {"true", "TRUE", "True"}) EXPECT_TRUE(uString::ToBool(text));
    for (const char* text : {"false", "FALSE", "False"}) EXPECT_FALSE(uString::ToBool(text));
}

TEST(uString, SaysWhatItRefuses) {
    std::string s;
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"unable to convert null string to numeric", [] { uString::ToLong(nullptr); }},
        {"unable to convert empty string to numeric", [] { uString::ToDouble(""); }},
        {"unable to convert null string to boolean", [] { uString::ToBool(nullptr); }},
        {"unable to convert empty string to boolean", [] { uString::ToBool(""); }},
        {"unable to convert \"1\" to boolean", [] { uString::ToBool("1"); }},
        {"unable to convert \"tRUE\" to boolean", [] { uString::ToBool("tRUE"); }},
        {"unable to split null string", [&] { uString::Split(nullptr, s, s, ","); }},
        {"unable to split with null delimeter", [&] { uString::Split("a", s, s, nullptr); }},
        {"unable to perform string replacement from null original text", [&] { uString::Replace(s, nullptr, ""); }},
        {"unable to perform string replacement with null replacement text", [&] { uString::Replace(s, "", nullptr); }}};
    for (const auto& [message, call] : cases) EXPECT_THAT(call, testing::ThrowsMessage<uString::error>(message));
}

TEST(uString, WritesNumbers) {
    std::string out = "n=";
    EXPECT_STREQ(uString::FromLong(out, 4294967296, nullptr), "n=0");
    EXPECT_STREQ(uString::FromLong(4294967296, out, false, "%ld"), "4294967296");
    EXPECT_STREQ(uString::FromBool(out, true), "4294967296true");
    EXPECT_EQ(uString::FromLong(7, out, false, "%2000ld"), std::string(1023, ' '));
    const std::tuple<double, const char*, bool, const char*> units[] = {
        {1500, "%g", true, "1.5k"},
        {0.002, nullptr, false, "2.000000milli"},
        {999.9, nullptr, false, "999.900000"},
        {0.0, nullptr, true, "0.000000y"},
        {1e24, "%.1f", true, "1.0Y"},
        {1.0, "%.1f", true, "1.0"},
        {1e-21, "%g", false, "1zepto"},
        {-2, nullptr, false, "-2000000000000000234881024.000000yocto"}};
    for (const auto& [value, format, abbreviated, text] : units) {
        EXPECT_STREQ(uString::FromDoubleInEngrUnits(value, out, false, format, abbreviated), text);
        EXPECT_EQ(uString::FromDoubleInEngrUnits(out, value, format, abbreviated), std::string(text) + text);
    }
}

TEST(uString, Splits) {
    using Pieces = std::vector<std::string>;
    const std::tuple<const char*, const char*, int, const char*, const char*, Pieces> cases[] = {
        {"key=value", "=", 2, "key", "value", {"key", "value"}},
        {"key", "=", 1, "key", "", {"key"}},
        {"", "=", 0, "", "", {}},
        {"a==b==", "==", 2, "a", "b==", {"a", "b"}},
        {",a,,b", ",", 2, "", "a,,b", {"", "a", "", "b"}},
        {"a b  c ", " ", 2, "a", "b  c ", {"a", "b", "", "c"}},
        {"ab", "", 2, "", "ab", {"ab"}}};
    for (const auto& [text, delimiter, count, first, rest, list] : cases) {
        std::string left;
        std::string right = text;
        EXPECT_EQ(uString::Split(right.c_str(), left, right, delimiter), count) << text;
        EXPECT_EQ(left + "|" + right, std::string(first) + "|" + rest);
        Pieces pieces;
        EXPECT_EQ(uString::Split(pieces, text, delimiter), list.size()) << text;
        EXPECT_EQ(pieces, list) << text;
        EXPECT_EQ(uString::Split(pieces, "more", ","), list.size() + 1);
    }
}

TEST(uString, ReplacesAndStrips) {
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"aXbX", "X", "YY", "aYYbYY"}, {"aaa", "aa", "b", "ba"}, {"abc", "", "x", "abc"}, {"aa", "a", "", "a"}};
    for (const auto& [text, from, to, result] : cases) {
        std::string s = text;
        EXPECT_STREQ(uString::Replace(s, from, to), result) << text;
    }
    std::string s = " \tabc \r\n";
    EXPECT_EQ(uString::StripTrailing(s, " \r\n"), " \tabc");
    EXPECT_EQ(uString::StripLeading(s, " \t"), "abc");
    EXPECT_EQ(uString::StripLeading(s, "cba"), "");
    EXPECT_EQ(uString::StripTrailing(s = "\r\n", "\n\r"), "");
}

}  // namespace
}  // namespace ZU_WEP
