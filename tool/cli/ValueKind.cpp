#include "tool/cli/ValueKind.h"

#include <algorithm>
#include <set>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/reading/Reading.h"
#include "tool/cli/Syntax.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

namespace {

constexpr ValueSyntax kConfigurationFile{ValueKind::File, ".tdf .txt .dcm"};

/// What stands for a value. A SECTION is one in the file that is named in front of it.
struct Row {
    std::string_view placeholder;
    ValueSyntax syntax;
};

constexpr Row kRows[] = {
    {"CAPTURE", {ValueKind::File, ".tdf"}}, {"FILE", kConfigurationFile},
    {"SETTINGS", kConfigurationFile},       {"OUT", {ValueKind::File, ""}},
    {"FILE.so", {ValueKind::File, ".so"}},  {"FILE.json", {ValueKind::File, ".json"}},
    {"DIR", {ValueKind::Directory, ""}},    {"NAME=VALUE", {ValueKind::Property, ""}},
    {"SECTION", {ValueKind::Section, ""}},  {"ITEM", {ValueKind::Item, ""}},
};

bool IsPlainPositional(const CLI::Option& option) {
    return option.get_positional() && option.get_type_name() == CLI::detail::type_name<std::string>();
}

/// What is beyond is no help on a terminal.
constexpr std::size_t kMostSections = 200;

std::vector<Candidate> Plain(const std::vector<std::string>& words) {
    std::vector<Candidate> candidates;
    candidates.reserve(words.size());
    for (const std::string& word : words) {
        candidates.push_back({word, ""});
    }
    return candidates;
}

/// The names, and behind the "=" of a flag its values.
std::vector<Candidate> Properties(const std::string& value) {
    std::vector<Candidate> candidates;
    const std::size_t equals = value.find('=');
    for (const Zu::Wep::Trace::StmProperty& property : Zu::Wep::Trace::kStmProperties) {
        const std::string start = std::string(property.name) + "=";
        if (equals == std::string::npos) {
            candidates.push_back({start, ""});
        } else if (property.flag != nullptr && value.starts_with(start)) {
            candidates.push_back({start + "yes", ""});
            candidates.push_back({start + "no", ""});
        }
    }
    return candidates;
}

/// None of a file that is no capture: a completion is no place for a diagnostic.
std::vector<Candidate> SectionNames(const std::vector<std::string>& positionals) {
    std::set<std::string> names;
    try {
        const Container container(positionals.empty() ? "" : positionals.back());
        for (const Section& section : container.Sections()) {
            const std::string name = container.Name(section);
            if (IsPlausibleName(name) && names.size() < kMostSections) {
                names.insert(name);
            }
        }
    } catch (const Failure&) {
        return {};
    }
    return Plain({names.begin(), names.end()});
}

/// What stands in the file that is named in front of it, by the names that Explain takes.
std::vector<Candidate> ItemNames(const std::vector<std::string>& positionals) {
    std::set<std::string> names;
    try {
        const Configuration configuration = Read(positionals.empty() ? "" : positionals.back()).configuration;
        const auto add = [&](const std::string& name) {
            if (IsPlausibleName(name) && names.size() < kMostSections) {
                names.insert(name);
            }
        };
        Configuration::ForEachKind([&](auto /*kind*/, auto list) {
            for (const auto& item : configuration.*list) {
                if constexpr (requires { item.moduleName; }) {
                    add(item.moduleName);
                } else {
                    add(item.source);
                }
            }
        });
        for (const ObjectFile& file : configuration.objectFiles) {
            add(file.name);
        }
        for (const Property& property : configuration.properties) {
            add(property.name);
        }
    } catch (const Failure&) {
        return {};
    }
    return Plain({names.begin(), names.end()});
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

std::vector<Candidate> ValueCandidates(const CLI::Option& option, const std::string& value,
                                       const std::vector<std::string>& positionals) {
    switch (ValueSyntaxOf(option).kind) {
        case ValueKind::Choice:
            return Plain(Choices(option));
        case ValueKind::Property:
            return Properties(value);
        case ValueKind::Section:
            return SectionNames(positionals);
        case ValueKind::Item:
            return ItemNames(positionals);
        default:
            return {};
    }
}

}  // namespace stmdcm
