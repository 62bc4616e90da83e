#include "tool/cli/ValueKind.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/change/History.h"
#include "stmdcm/plugin/TargetCpus.h"
#include "stmdcm/reading/Reading.h"
#include "tool/cli/Syntax.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

namespace {

constexpr ValueSyntax kConfigurationFile{ValueKind::File, ".tdf .txt .dcm"};

/// What stands for a value. A SECTION is one in the file that is named in front of it.
struct KindRow {
    std::string_view placeholder;
    ValueSyntax syntax;
};

constexpr KindRow kRows[] = {
    {"CAPTURE", {ValueKind::File, ".tdf"}},
    {"FILE", kConfigurationFile},
    {"RIGHT", kConfigurationFile},
    {"SETTINGS", kConfigurationFile},
    {"OUT", {ValueKind::File, ""}},
    {"FILE.so", {ValueKind::File, ".so"}},
    {"FILE.json", {ValueKind::File, ".json"}},
    {"DIR", {ValueKind::Directory, ""}},
    {"LIST", {ValueKind::File, ""}},
    {"SECTION", {ValueKind::Section, ""}},
    {"ITEM", {ValueKind::Item, ""}},
    {"NAME=VALUE", {ValueKind::Assignment, ".tdf .txt .dcm", true}},
    {"PROPERTY", {ValueKind::Property, ""}},
    {"PART", {ValueKind::Part, ""}},
    {"NUMBER", {ValueKind::Number, ".tdf", true}},
    {"CPU", {ValueKind::Cpu, ""}},
};

bool IsPlainPositional(const CLI::Option& option) {
    return option.get_positional() && option.get_type_name() == CLI::detail::type_name<std::string>();
}

/// What is beyond is no help on a terminal.
constexpr std::size_t kMostListed = 200;

std::vector<Candidate> Plain(const std::vector<std::string>& words) {
    std::vector<Candidate> candidates;
    candidates.reserve(words.size());
    for (const std::string& word : words) {
        candidates.push_back({word, ""});
    }
    return candidates;
}

/// The names, and behind the "=" of a flag its values.
std::vector<Candidate> Assignments(const std::string& value) {
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

std::vector<Candidate> Properties() {
    std::vector<Candidate> candidates;
    candidates.reserve(Zu::Wep::Trace::kStmProperties.size());
    for (const Zu::Wep::Trace::StmProperty& property : Zu::Wep::Trace::kStmProperties) {
        candidates.push_back({property.name, ""});
    }
    return candidates;
}

std::vector<Candidate> Parts() {
    std::vector<Candidate> candidates = Plain({"properties", "usecases", "objects"});
    const std::vector<Candidate> properties = Properties();
    candidates.insert(candidates.end(), properties.begin(), properties.end());
    return candidates;
}

std::vector<Candidate> SectionNames(const Container& container) {
    std::set<std::string> names;
    for (const Section& section : container.Sections()) {
        const std::string name = container.Name(section);
        if (IsPlausibleName(name) && names.size() < kMostListed) {
            names.insert(name);
        }
    }
    return Plain({names.begin(), names.end()});
}

/// What stands in the file, by the names that Explain takes.
std::vector<Candidate> ItemNames(const std::string& file) {
    std::set<std::string> names;
    const Configuration configuration = Read(file).configuration;
    const auto add = [&](const std::string& name) {
        if (IsPlausibleName(name) && names.size() < kMostListed) {
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
    for (const ObjectFile& image : configuration.objectFiles) {
        add(image.name);
    }
    for (const Property& property : configuration.properties) {
        add(property.name);
    }
    return Plain({names.begin(), names.end()});
}

/// Of the configurations that are not in force; the youngest where there are too many.
std::vector<Candidate> HistoryNumbers(const Container& container) {
    std::vector<Candidate> candidates;
    const History history(container);
    for (const HistoryEntry& entry : history.Entries()) {
        if (!entry.IsCurrent() && entry.number + kMostListed > history.Entries().size()) {
            candidates.push_back({std::to_string(entry.number), fmt::format("{}, {}", entry.name, entry.State())});
        }
    }
    return candidates;
}

std::string ValueOf(const GivenWords& given, const char* option) {
    const auto found = given.options.find(option);
    return found == given.options.end() ? "" : found->second;
}

std::vector<Candidate> Listed(ValueKind kind, const GivenWords& given) {
    if (kind == ValueKind::Cpu) {
        return Plain(TargetCpus(ChooseFactory(ValueOf(given, "--scenario"), ValueOf(given, "--factory-dir"))));
    }
    const std::string file = given.positionals.empty() ? "" : given.positionals.back();
    if (kind == ValueKind::Item) {
        return ItemNames(file);
    }
    const Container container(file);
    return kind == ValueKind::Section ? SectionNames(container) : HistoryNumbers(container);
}

}  // namespace

ValueSyntax ValueSyntaxOf(const CLI::Option& option) {
    if (!Choices(option).empty()) {
        return {ValueKind::Choice, ""};
    }
    const std::string placeholder = Placeholder(option);
    const auto* row = std::find_if(std::begin(kRows), std::end(kRows),
                                   [&](const KindRow& candidate) { return candidate.placeholder == placeholder; });
    if (row != std::end(kRows)) {
        return row->syntax;
    }
    return IsPlainPositional(option) ? kConfigurationFile : ValueSyntax{};
}

std::vector<Candidate> ValueCandidates(const CLI::Option& option, const std::string& value, const GivenWords& given) {
    const ValueKind kind = ValueSyntaxOf(option).kind;
    switch (kind) {
        case ValueKind::Choice:
            return Plain(Choices(option));
        case ValueKind::Assignment:
            return Assignments(value);
        case ValueKind::Property:
            return Properties();
        case ValueKind::Part:
            return Parts();
        case ValueKind::Section:
        case ValueKind::Item:
        case ValueKind::Number:
        case ValueKind::Cpu:
            break;
        default:
            return {};
    }
    try {
        return Listed(kind, given);
    } catch (const Failure&) {  // a completion is no place for a diagnostic
        return {};
    }
}

}  // namespace stmdcm
