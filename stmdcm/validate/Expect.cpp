#include "stmdcm/validate/Expect.h"

#include <fmt/format.h>

#include <algorithm>

#include "stmdcm/reading/Escaped.h"

namespace stmdcm::validate {

namespace {

/// So much of a text is shown, and so much of it in front of the first difference.
constexpr std::size_t kMostShown = 60;
constexpr std::size_t kShownInFront = 20;

std::string Excerpt(std::string_view text, std::size_t begin) {
    const std::string_view part = text.substr(std::min(begin, text.size()), kMostShown);
    return fmt::format("\"{}{}{}\"", begin > 0 ? "..." : "", Escaped(part),
                       begin + part.size() < text.size() ? "..." : "");
}

}  // namespace

std::string InWords(bool value) { return value ? "true" : "false"; }

std::string InWords(long long value) { return std::to_string(value); }

std::string InWords(std::string_view value) { return Excerpt(value, 0); }

std::string InWords(const std::vector<std::string>& values) {
    std::string words;
    for (const std::string& value : values) {
        words += (words.empty() ? "" : ", ") + InWords(value);
    }
    return values.empty() ? "nothing" : words;
}

void Fail(const std::string& asked, const std::string& expected, const std::string& came, Verdict verdict) {
    throw Answer{verdict, asked, expected, came};
}

void Skip(const std::string& why) { throw Answer{Verdict::Skip, "", "", why}; }

void Expect(const std::string& asked, const std::string& came, const std::string& expected) {
    if (came == expected) {
        return;
    }
    const auto differ = std::mismatch(came.begin(), came.end(), expected.begin(), expected.end()).first;
    const auto place = static_cast<std::size_t>(differ - came.begin());
    const std::size_t begin =
        std::max(came.size(), expected.size()) <= kMostShown || place < kShownInFront ? 0 : place - kShownInFront;
    Fail(asked, Excerpt(expected, begin), Excerpt(came, begin));
}

void ExpectPart(const std::string& asked, const std::string& text, const std::string& what) {
    if (text.find(what) == std::string::npos) {
        Fail(asked, InWords(what) + " in it", InWords(text));
    }
}

void ExpectAtMost(const std::string& asked, long long came, long long most) {
    if (came > most) {
        Fail(asked, fmt::format("at most {}", most), std::to_string(came), Verdict::Warning);
    }
}

}  // namespace stmdcm::validate
