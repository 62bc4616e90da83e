#include "tool/cli/ValueKind.h"

#include <algorithm>
#include <string>

#include "tool/cli/Syntax.h"

namespace stmdcm {

namespace {

constexpr ValueSyntax kConfigurationFile{ValueKind::File, ".tdf .txt .dcm"};

struct Row {
    std::string_view placeholder;
    ValueSyntax syntax;
};

constexpr Row kRows[] = {
    {"CAPTURE", {ValueKind::File, ".tdf"}}, {"FILE", kConfigurationFile},
    {"SETTINGS", kConfigurationFile},       {"OUT", {ValueKind::File, ""}},
    {"FILE.so", {ValueKind::File, ".so"}},  {"FILE.json", {ValueKind::File, ".json"}},
    {"DIR", {ValueKind::Directory, ""}},    {"NAME=VALUE", {ValueKind::Property, ""}},
    {"SECTION", {ValueKind::Section, ""}},
};

bool IsPlainPositional(const CLI::Option& option) {
    return option.get_positional() && option.get_type_name() == CLI::detail::type_name<std::string>();
}

}  // namespace

ValueSyntax ValueSyntaxOf(const CLI::Option& option) {
    if (!Choices(option).empty()) {
        return {ValueKind::Choice, ""};
    }
    const std::string placeholder = Placeholder(option);
    const auto* row = std::find_if(std::begin(kRows), std::end(kRows),
                                   [&](const Row& candidate) { return candidate.placeholder == placeholder; });
    if (row != std::end(kRows)) {
        return row->syntax;
    }
    return IsPlainPositional(option) ? kConfigurationFile : ValueSyntax{};
}

}  // namespace stmdcm
