#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "trace/format/BlockReader.h"
#include "trace/format/BlockWriter.h"

namespace Zu::Wep::Trace {

/// One field of a block: its key and where `Owner` keeps it. A table of these, in the order of the lines, is all that
/// reading and writing know about a kind's fields.
template <class Owner>
struct BlockField {
    std::string_view key;
    std::variant<std::uint32_t Owner::*, std::int32_t Owner::*, std::string Owner::*, bool Owner::*> member;
};

/// The number at the start of the text, 0 without one, as std::strtol reads it in base 10.
long WholeNumber(std::string_view text);

/// The same; what does not fit 32 bits is truncated.
inline std::int32_t BlockNumber(std::string_view text) { return static_cast<std::int32_t>(WholeNumber(text)); }

constexpr ValueShape ShapeOf(const std::string*) { return ValueShape::Text; }
constexpr ValueShape ShapeOf(const bool*) { return ValueShape::LongFlag; }
constexpr ValueShape ShapeOf(const std::int32_t*) { return ValueShape::Signed; }
constexpr ValueShape ShapeOf(const std::uint32_t*) { return ValueShape::Unsigned; }

inline void StoreValue(std::string& target, std::string_view value) { target = value; }
inline void StoreValue(bool& target, std::string_view value) { target = WholeNumber(value) != 0; }
inline void StoreValue(std::int32_t& target, std::string_view value) { target = BlockNumber(value); }
inline void StoreValue(std::uint32_t& target, std::string_view value) {
    target = static_cast<std::uint32_t>(BlockNumber(value));
}

inline const std::string& WrittenValue(const std::string& value) { return value; }
inline std::int32_t WrittenValue(bool value) { return value ? 1 : 0; }
inline std::int32_t WrittenValue(std::int32_t value) { return value; }
/// Written signed: the bits read back the same.
inline std::int32_t WrittenValue(std::uint32_t value) { return static_cast<std::int32_t>(value); }

/// Stores the value of a key that the table holds; any other key is ignored.
template <class Owner>
void StoreField(Owner& owner, std::span<const BlockField<Owner>> fields, const KeyLine& keyLine, const BlockLines& in,
                bool isInFormula = false) {
    BlockKey told{keyLine.key, keyLine.value, KeyUse::Unknown, {}, isInFormula};
    const auto field = std::find_if(fields.begin(), fields.end(),
                                    [&](const BlockField<Owner>& each) { return each.key == keyLine.key; });
    if (field != fields.end()) {
        told.use = KeyUse::Field;
        std::visit(
            [&](auto member) {
                StoreValue(owner.*member, keyLine.value);
                told.shape = ShapeOf(&(owner.*member));
            },
            field->member);
    } else if (keyLine.key == "type") {
        told.use = KeyUse::Type;
    }
    in.Tell(&TextReporter::OnKey, told);
}

template <class Owner>
std::vector<std::string_view> KeysOf(std::span<const BlockField<Owner>> fields) {
    std::vector<std::string_view> keys;
    std::transform(fields.begin(), fields.end(), std::back_inserter(keys), [](const auto& field) { return field.key; });
    return keys;
}

template <class Owner>
void WriteFields(std::string& out, const Owner& owner, std::span<const BlockField<Owner>> fields,
                 BlockWriteReporter& reporter) {
    for (const BlockField<Owner>& field : fields) {
        std::visit([&](auto member) { AppendKeyLine(out, field.key, WrittenValue(owner.*member), reporter); },
                   field.member);
    }
}

/// A key line of a block that holds nothing but fields. Returns 0 handled or ignored, 1 no "=", -1 too long.
template <class Owner>
int StoreLine(Owner& owner, std::span<const BlockField<Owner>> fields, std::string_view line, const BlockLines& in,
              bool isInFormula = false) {
    KeyLine keyLine;
    const int result = SplitKeyLine(line, keyLine);
    if (result == 0) {
        StoreField(owner, fields, keyLine, in, isInFormula);
    }
    return result;
}

}  // namespace Zu::Wep::Trace
