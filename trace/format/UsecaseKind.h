#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace Zu::Wep::Trace {

/// The kinds of use cases, in the order in which their records read a text.
enum class UsecaseKind : std::size_t { Sc, Cpt, Pmi };

/// How a kind is called, and the line by which its blocks tell it (docs/use-case-blocks.md).
struct UsecaseKindNames {
    const char* name;
    std::string_view typeLine;

    constexpr std::string_view Type() const { return typeLine.substr(std::string_view("type=").size()); }
};

/// By kind. SC blocks may leave their type line out.
inline constexpr std::array<UsecaseKindNames, 3> kUsecaseKinds = {{
    {"SC", "type=SC"},
    {"CPT", "type=CPT"},
    {"PMI/CMI", "type=PMI_CMI"},
}};

constexpr const UsecaseKindNames& NamesOf(UsecaseKind kind) { return kUsecaseKinds[static_cast<std::size_t>(kind)]; }

}  // namespace Zu::Wep::Trace
