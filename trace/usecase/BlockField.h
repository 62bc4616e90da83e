#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "trace/usecase/BlockReader.h"
#include "trace/usecase/BlockWriter.h"

namespace Zu::Wep::Trace {

/// One field of a block: its key and where `Owner` keeps it. A table of these, in the order of the lines, is all that
/// reading and writing know about a kind's fields.
template <class Owner>
struct BlockField {
    std::string_view key;
    std::variant<std::uint32_t Owner::*, std::int32_t Owner::*, std::string Owner::*, bool Owner::*> member;
};

/// The number at the start of the text, 0 without one.
inline long WholeNumber(const char* text) { return std::strtol(text, nullptr, 10); }

/// The same; what does not fit 32 bits is truncated.
inline std::int32_t BlockNumber(const char* text) { return static_cast<std::int32_t>(WholeNumber(text)); }

inline void StoreValue(std::string& target, const char* value) { target = value; }
inline void StoreValue(bool& target, const char* value) { target = WholeNumber(value) != 0; }
inline void StoreValue(std::int32_t& target, const char* value) { target = BlockNumber(value); }
inline void StoreValue(std::uint32_t& target, const char* value) {
    target = static_cast<std::uint32_t>(BlockNumber(value));
}

inline const std::string& WrittenValue(const std::string& value) { return value; }
inline std::int32_t WrittenValue(bool value) { return value ? 1 : 0; }
inline std::int32_t WrittenValue(std::int32_t value) { return value; }
/// Written signed: the bits read back the same.
inline std::int32_t WrittenValue(std::uint32_t value) { return static_cast<std::int32_t>(value); }

/// Stores the value of a key that the table holds; any other key is ignored.
template <class Owner>
void StoreField(Owner& owner, std::span<const BlockField<Owner>> fields, const KeyLine& keyLine) {
    const auto field = std::find_if(fields.begin(), fields.end(),
                                    [&](const BlockField<Owner>& each) { return each.key == keyLine.key; });
    if (field != fields.end()) {
        std::visit([&](auto member) { StoreValue(owner.*member, keyLine.value); }, field->member);
    }
}

template <class Owner>
void WriteFields(std::string& out, const Owner& owner, std::span<const BlockField<Owner>> fields) {
    for (const BlockField<Owner>& field : fields) {
        std::visit([&](auto member) { AppendKeyLine(out, field.key, WrittenValue(owner.*member)); }, field.member);
    }
}

/// A key line of a block that holds nothing but fields. Returns 0 handled or ignored, 1 no "=", -1 too long.
template <class Owner>
int StoreLine(Owner& owner, std::span<const BlockField<Owner>> fields, const char* line) {
    KeyLine keyLine;
    const int result = SplitKeyLine(line, keyLine);
    if (result == 0) {
        StoreField(owner, fields, keyLine);
    }
    return result;
}

/// The block of a kind that holds nothing but fields and must name its type in the first line.
template <class Owner>
void WriteTypedBlock(std::string& out, std::string_view type, const Owner& owner,
                     std::span<const BlockField<Owner>> fields) {
    AppendBlockLine(out, BlockOpen);
    AppendKeyLine(out, "type", type);
    WriteFields(out, owner, fields);
    AppendBlockLine(out, BlockClose);
}

template <class Owner>
int ReadTypedBlock(const char* line, std::istringstream& in, std::string_view typeLine, Owner& owner) {
    return ReadBlock(
        line, in, [typeLine](std::string_view first) { return first == typeLine; },
        [&](const std::string& current) {
            return owner.ProccessLine(current.c_str(), in) == 0 ? LineResult::Next : LineResult::Bad;
        });
}

}  // namespace Zu::Wep::Trace
