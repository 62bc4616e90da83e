#include "source_utilities/uString.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <locale>
#include <sstream>
#include <string_view>
#include <type_traits>

#include "source_utilities/uEngineeringUnits.h"

namespace ZU_WEP {

namespace {

void RequireText(const char* text, const char* target) {
    if (text == nullptr) {
        throw uString::error(std::string("unable to convert null string to ") + target);
    }
    if (*text == '\0') {
        throw uString::error(std::string("unable to convert empty string to ") + target);
    }
}

/// Takes the radix prefix off `text` and sets the stream's base by it.
std::string_view TakeRadix(std::string_view text, std::ios_base& stream) {
    if (text.size() < 2 || text.front() != '0') {
        return text;
    }
    if (text[1] != 'x' && text[1] != 'X') {
        stream.setf(std::ios_base::oct, std::ios_base::basefield);
        return text.substr(1);
    }
    if (text.size() == 2) {
        return "0";
    }
    stream.setf(std::ios_base::hex, std::ios_base::basefield);
    return text.substr(2);
}

void Put(std::string& out, bool append, const char* text) {
    if (!append) {
        out.clear();
    }
    out += text;
}

template <typename Value>
const char* Format(std::string& out, bool append, const char* format, Value value) {
    std::array<char, 1024> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, value);
    Put(out, append, buffer.data());
    return out.c_str();
}

struct Prefix {
    double factor;
    const char* word;
    const char* symbol;
};

constexpr Prefix prefixes[] = {
    {uEngineeringUnits::yotta, "yotta", "Y"},
    {uEngineeringUnits::zetta, "zetta", "Z"},
    {uEngineeringUnits::exa, "exa", "E"},
    {uEngineeringUnits::peta, "peta", "P"},
    {uEngineeringUnits::tera, "tera", "T"},
    {uEngineeringUnits::giga, "giga", "G"},
    {uEngineeringUnits::mega, "mega", "M"},
    {uEngineeringUnits::kilo, "kilo", "k"},
    {1.0, "", ""},
    {uEngineeringUnits::milli, "milli", "m"},
    {uEngineeringUnits::micro, "micro", "u"},
    {uEngineeringUnits::nano, "nano", "n"},
    {uEngineeringUnits::pico, "pico", "p"},
    {uEngineeringUnits::femto, "femto", "f"},
    {uEngineeringUnits::atto, "atto", "a"},
    {uEngineeringUnits::zepto, "zepto", "z"},
    {uEngineeringUnits::yocto, "yocto", "y"},
};

/// The last row catches all the rest: zero, negative values and NaN too.
const Prefix& PrefixOf(double value) {
    return *std::find_if(std::begin(prefixes), std::prev(std::end(prefixes)),
                         [value](const Prefix& prefix) { return value >= prefix.factor; });
}

}  // namespace

template <typename T>
T uString::ToNumeric(const char* text) {
    RequireText(text, "numeric");
    std::stringstream stream;
    stream.imbue(std::locale::classic());
    stream << TakeRadix(text, stream);
    // An 8-bit type would be read as one character instead of as digits.
    std::conditional_t<sizeof(T) == 1, int, T> value = 0;
    stream >> value;  // The state is left unexamined: readers of settings take 0 for text that is no number.
    return static_cast<T>(value);
}

template unsigned long uString::ToNumeric<unsigned long>(const char*);
template long uString::ToNumeric<long>(const char*);
template double uString::ToNumeric<double>(const char*);

long uString::ToLong(const char* text) { return ToNumeric<long>(text); }

std::int64_t uString::ToInt64(const char* text) { return ToLong(text); }

double uString::ToDouble(const char* text) { return ToNumeric<double>(text); }

bool uString::ToBool(const char* text) {
    RequireText(text, "boolean");
    const auto isOneOf = [text](auto... words) { return (... || (std::strcmp(text, words) == 0)); };
    if (isOneOf("true", "TRUE", "True")) {
        return true;
    }
    if (isOneOf("false", "FALSE", "False")) {
        return false;
    }
    throw error("unable to convert \"" + std::string(text) + "\" to boolean");
}

const char* uString::FromBool(bool value, std::string& out, bool append) {
    Put(out, append, value ? "true" : "false");
    return out.c_str();
}

const char* uString::FromBool(std::string& out, bool value) { return FromBool(value, out, true); }

const char* uString::FromLong(long value, std::string& out, bool append, const char* format) {
    // Without a format the low 32 bits alone are printed (uString.h).
    if (format == nullptr) {
        return Format(out, append, "%d", static_cast<int>(value));
    }
    return Format(out, append, format, value);
}

const char* uString::FromLong(std::string& out, long value, const char* format) {
    return FromLong(value, out, true, format);
}

const char* uString::FromDouble(double value, std::string& out, bool append, const char* format) {
    return Format(out, append, format == nullptr ? "%f" : format, value);
}

const char* uString::FromDouble(std::string& out, double value, const char* format) {
    return FromDouble(value, out, true, format);
}

const char* uString::FromDoubleInEngrUnits(double value, std::string& out, bool append, const char* format,
                                           bool abbreviated) {
    const Prefix& prefix = PrefixOf(value);
    FromDouble(value / prefix.factor, out, append, format);
    out += abbreviated ? prefix.symbol : prefix.word;
    return out.c_str();
}

const char* uString::FromDoubleInEngrUnits(std::string& out, double value, const char* format, bool abbreviated) {
    return FromDoubleInEngrUnits(value, out, true, format, abbreviated);
}

int uString::Split(const char* text, std::string& left, std::string& right, const char* delimiter) {
    if (text == nullptr) {
        throw error("unable to split null string");
    }
    if (delimiter == nullptr) {
        throw error("unable to split with null delimeter");  // Hosts know the text with this spelling.
    }
    const std::string whole = text;
    const std::size_t length = std::strlen(delimiter);
    const std::size_t at = whole.find(delimiter);
    left = whole.substr(0, at);
    right = at == std::string::npos ? std::string() : whole.substr(at + length);
    if (at != std::string::npos) {
        return 2;
    }
    return whole.empty() ? 0 : 1;
}

unsigned uString::Split(std::vector<std::string>& pieces, const char* text, const char* delimiter) {
    std::string rest(text);
    std::string piece;
    if (delimiter != nullptr && *delimiter == '\0') {
        if (!rest.empty()) {
            pieces.push_back(rest);
        }
        return static_cast<unsigned>(pieces.size());
    }
    while (Split(rest.c_str(), piece, rest, delimiter) != 0) {
        pieces.push_back(piece);
    }
    return static_cast<unsigned>(pieces.size());
}

const char* uString::Replace(std::string& s, const char* from, const char* to) {
    if (from == nullptr) {
        throw error("unable to perform string replacement from null original text");
    }
    if (to == nullptr) {
        throw error("unable to perform string replacement with null replacement text");
    }
    const std::string searched = from;
    const std::string replacement = to;
    if (searched.empty()) {
        return s.c_str();
    }
    std::size_t at = s.find(searched);
    while (at != std::string::npos) {
        s.replace(at, searched.size(), replacement);
        // By the length of the searched text, so a replacement is searched again (uString.h).
        at = s.find(searched, at + searched.size());
    }
    return s.c_str();
}

std::string& uString::StripLeading(std::string& s, const char* chars) {
    const std::size_t first = s.find_first_not_of(chars);
    return s.erase(0, first);
}

std::string& uString::StripTrailing(std::string& s, const char* chars) {
    const std::size_t last = s.find_last_not_of(chars);
    s.resize(last == std::string::npos ? 0 : last + 1);
    return s;
}

}  // namespace ZU_WEP
