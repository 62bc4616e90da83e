#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "source_utilities/source_utilities_error.h"

namespace ZU_WEP {

/// Text conversions. Stateless: any thread may call any of them.
///
/// Where `out` and `append` are given, the text replaces `out`, or is added to it when `append` is true; the forms
/// that take `out` first always append. The results point at the data of `out` (or `s`) and last until it changes.
/// Null and empty text throws `uString::error`; text that is no number does not.
class uString {
  public:
    class error : public source_utilities_error {
      public:
        using source_utilities_error::source_utilities_error;
    };

    /// Reads the number `text` begins with, for `unsigned long`, `long` and `double`. "0x" at the very start means
    /// hexadecimal, any other "0" there octal (neither means a thing to `double`). What follows the number is ignored,
    /// no number at all is 0, a number out of range is the nearest one in it. The program's locale has no influence.
    template <typename T>
    static T ToNumeric(const char* text);
    static long ToLong(const char* text);
    static std::int64_t ToInt64(const char* text);
    static double ToDouble(const char* text);

    /// Knows "true", "TRUE", "True" and the same three of "false"; throws for anything else.
    static bool ToBool(const char* text);

    static const char* FromBool(bool value, std::string& out, bool append);
    static const char* FromBool(std::string& out, bool value);

    /// `format` is one printf conversion of a `long`, cut to 1023 characters. Null prints the low 32 bits alone, as a
    /// signed number: pass "%ld" for the full range.
    static const char* FromLong(long value, std::string& out, bool append = false, const char* format = nullptr);
    static const char* FromLong(std::string& out, long value, const char* format = nullptr);

    /// `format` is one printf conversion of a `double`, cut to 1023 characters; null is "%f".
    static const char* FromDouble(double value, std::string& out, bool append = false, const char* format = nullptr);
    static const char* FromDouble(std::string& out, double value, const char* format = nullptr);

    /// Scales `value` to the largest SI prefix not above it and writes that prefix behind the number: its symbol when
    /// `abbreviated`, else its word. Whatever is below zepto, zero and negative values included, is given in yocto.
    static const char* FromDoubleInEngrUnits(double value, std::string& out, bool append, const char* format,
                                             bool abbreviated);
    static const char* FromDoubleInEngrUnits(std::string& out, double value, const char* format, bool abbreviated);

    /// Splits at the first occurrence of the whole `delimiter`: 2 when it is there, else 1 with all of `text` in
    /// `left`, or 0 for an empty `text`. `left` or `right` may be the string that `text` belongs to.
    static int Split(const char* text, std::string& left, std::string& right, const char* delimiter);

    /// Adds the pieces between the delimiters behind what `pieces` holds and returns how many it holds then. An empty
    /// last piece is dropped. An empty `delimiter` splits nothing. A null `text` throws `std::logic_error`.
    static unsigned Split(std::vector<std::string>& pieces, const char* text, const char* delimiter);

    /// Replaces `from` by `to` throughout `s`. The search goes on where `from` ended, counted by the length of `from`:
    /// a longer `to` that contains `from` further on is found again without end. An empty `from` changes nothing.
    static const char* Replace(std::string& s, const char* from, const char* to);

    /// Drop the characters at one end of `s` that are in the set `chars`.
    static std::string& StripLeading(std::string& s, const char* chars);
    static std::string& StripTrailing(std::string& s, const char* chars);
};

extern template unsigned long uString::ToNumeric<unsigned long>(const char*);
extern template long uString::ToNumeric<long>(const char*);
extern template double uString::ToNumeric<double>(const char*);

}  // namespace ZU_WEP
