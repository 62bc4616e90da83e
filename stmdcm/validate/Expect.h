#pragma once

// What a question says: each of these throws the Answer, which ends the question, unless it holds.

#include <concepts>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "stmdcm/validate/Question.h"

namespace stmdcm::validate {

// Values as a sentence shows them.
std::string InWords(bool value);
std::string InWords(long long value);
std::string InWords(std::string_view value);
inline std::string InWords(const char* value) { return value == nullptr ? "null" : InWords(std::string_view(value)); }
inline std::string InWords(const std::string& value) { return InWords(std::string_view(value)); }
std::string InWords(const std::vector<std::string>& values);
template <std::integral Number>
std::string InWords(Number value) {
    return InWords(static_cast<long long>(value));
}

[[noreturn]] void Fail(const std::string& asked, const std::string& expected, const std::string& came,
                       Verdict verdict = Verdict::Fail);

/// The question can't be asked here.
[[noreturn]] void Skip(const std::string& why);

/// `asked` is what `came` is: "the ATB id of a fresh manager".
template <class Came, class Expected>
void Expect(const std::string& asked, const Came& came, const Expected& expected) {
    if (!(came == expected)) {
        Fail(asked, InWords(expected), InWords(came));
    }
}
/// Texts, of which the part around their first difference is told.
void Expect(const std::string& asked, const std::string& came, const std::string& expected);
inline void Expect(const std::string& asked, const std::string& came, const char* expected) {
    Expect(asked, came, std::string(expected));
}

/// `what` is a part of `text`.
void ExpectPart(const std::string& asked, const std::string& text, const std::string& what);

/// It may come to this, but no host relies on more: a warning.
void ExpectAtMost(const std::string& asked, long long came, long long most);

/// `call()` throws a Thrown; `expected` names that.
template <class Thrown, class Call>
void ExpectThrow(const std::string& asked, Call call, const std::string& expected) {
    std::string came = "no exception";
    try {
        call();
    } catch (const Thrown&) {
        return;
    } catch (const std::exception& error) {
        came = std::string("another exception: ") + error.what();
    } catch (...) {
        came = "another exception";
    }
    Fail(asked, expected, came);
}

}  // namespace stmdcm::validate
