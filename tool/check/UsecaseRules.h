#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "tool/check/ValueCheck.h"

namespace stmdcm {

// The keys and rules of the three kinds of use case (docs/use-case-blocks.md).

enum class UsecaseKind : std::size_t { Sc, Cpt, Pmi };

/// What a field means to the check.
enum class FieldRole { Other, Name, Module, Job, Formula };

struct FieldRule {
    std::string_view key;
    ValueRule rule = ValueRule::Text;
    FieldRole role = FieldRole::Other;
};

struct KindRules {
    UsecaseKind kind;
    const char* name;
    std::string_view typeLine;
    bool mayOmitType;
    bool hasCountersAndFormulas;
    std::span<const FieldRule> fields;
};

inline constexpr FieldRule kScFields[] = {
    {"id", ValueRule::Unsigned, FieldRole::Module},
    {"name", ValueRule::Text, FieldRole::Name},
    {"jobid", ValueRule::Signed, FieldRole::Job},
    {"probe"},
    {"sw", ValueRule::Unsigned},
    {"suppress", ValueRule::LongFlag},
};
inline constexpr FieldRule kCptFields[] = {
    {"sid", ValueRule::Unsigned, FieldRole::Module},
    {"name", ValueRule::Text, FieldRole::Name},
    {"jobid", ValueRule::Signed, FieldRole::Job},
    {"probe"},
    {"sw", ValueRule::Unsigned},
    {"cr", ValueRule::Unsigned},
    {"df", ValueRule::Unsigned},
    {"mode", ValueRule::Unsigned},
    {"do", ValueRule::Unsigned},
};
inline constexpr FieldRule kPmiFields[] = {
    {"name", ValueRule::Text, FieldRole::Name},
    {"sw", ValueRule::Unsigned},
};
inline constexpr FieldRule kFormulaFields[] = {
    {"name"}, {"formula", ValueRule::Text, FieldRole::Formula}, {"unit"}, {"ofmask", ValueRule::Unsigned}};

inline constexpr std::array<KindRules, 3> kUsecaseKinds = {{
    {UsecaseKind::Sc, "SC", "type=SC", true, true, kScFields},
    {UsecaseKind::Cpt, "CPT", "type=CPT", false, false, kCptFields},
    {UsecaseKind::Pmi, "PMI/CMI", "type=PMI_CMI", false, false, kPmiFields},
}};

/// The sources that a host can ask for.
inline constexpr std::string_view kPmiSources[] = {"PMI", "CMI0", "CMI1"};

}  // namespace stmdcm
