#include "stmdcm/change/SettingsEdit.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "trace/format/SettingsText.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::string_view kCrLf = "\r\n";

/// Remembers the first line of a name.
struct FirstLineOf final : TextReporter {
    explicit FirstLineOf(std::string_view wanted) : name(wanted) {}
    void OnProperty(std::size_t line, const PropertyLine& /*property*/) override { Take(line); }
    void OnNoValue(std::size_t line, std::string_view found) override {
        if (found == name) {
            Take(line);
        }
    }
    void Take(std::size_t line) { first = first.value_or(line); }

    std::string_view name;
    std::optional<std::size_t> first;
};

}  // namespace

SettingsEdit::SettingsEdit(std::string text) : m_text(std::move(text)), m_lineStarts{0} {
    for (std::size_t end = 0; (end = m_text.find('\n', end)) != std::string::npos;) {
        m_lineStarts.push_back(++end);
    }
    const auto isProperty = [](std::string_view name, std::string_view /*value*/) {
        return FindStmProperty(name) != nullptr;
    };
    const SettingsText read(m_text, kFileLineLimits, isProperty, this);
}

void SettingsEdit::OnProperty(std::size_t line, const PropertyLine& property) {
    const std::size_t start = StartOf(line);
    const std::size_t value = m_text.find(property.name, start) + property.name.size() + property.between.size();
    std::size_t length = property.value.size();
    if (property.rest.empty() && value + length < m_text.size() && m_text[value + length] != '\0') {
        length = start + LineAt(start).size() - value;  // The value reaches the limit, behind which it goes on.
    }
    m_values[std::string(property.name)] = {value, length, m_text.substr(value, length)};
    m_lastProperty = start;
}

void SettingsEdit::OnPropertiesEnd(std::size_t line, PropertiesEnd /*why*/, std::string_view /*text*/) {
    m_end = StartOf(line);
}

std::optional<std::size_t> SettingsEdit::UnreadLine(std::string_view property) const {
    FirstLineOf lines(property);
    if (m_end) {
        const auto isIt = [&](std::string_view name, std::string_view /*value*/) { return name == property; };
        ReadDeviceText(std::string_view(m_text).substr(*m_end), isIt, &lines);
    }
    if (!lines.first) {
        return std::nullopt;
    }
    const auto end = std::lower_bound(m_lineStarts.begin(), m_lineStarts.end(), *m_end);
    return static_cast<std::size_t>(end - m_lineStarts.begin()) + *lines.first;
}

void SettingsEdit::Set(const Assignment& assignment) {
    if (const auto value = m_values.find(assignment.name); value != m_values.end()) {
        value->second.text = fmt::format("{}", assignment.value);
    } else {
        m_added.push_back(assignment);
    }
}

std::string SettingsEdit::Text() const {
    std::vector<Replacement> replacements;
    for (const auto& [name, value] : m_values) {
        replacements.push_back(value);
    }
    const std::size_t behind = m_lastProperty ? *m_lastProperty + LineAt(*m_lastProperty).size() : 0;
    replacements.push_back({behind, 0, Added()});
    // From the back, so that what is in front stays where it is.
    std::stable_sort(replacements.begin(), replacements.end(),
                     [](const Replacement& a, const Replacement& b) { return a.offset > b.offset; });
    std::string text = m_text;
    for (const Replacement& each : replacements) {
        text.replace(each.offset, each.length, each.text);
    }
    return text;
}

std::string_view SettingsEdit::LineAt(std::size_t start) const {
    const std::string_view rest = std::string_view(m_text).substr(start);
    const std::string_view line = rest.substr(0, rest.find('\n'));
    return line.substr(0, line.size() - (line.size() < rest.size() && line.ends_with('\r') ? 1 : 0));
}

/// As the text's first line ends.
std::string_view SettingsEdit::LineEnd() const {
    const std::string_view behind = std::string_view(m_text).substr(LineAt(0).size());
    return behind.starts_with(kCrLf) ? kCrLf : kCrLf.substr(1);
}

std::string SettingsEdit::Added() const {
    std::string text;
    for (const Assignment& each : m_added) {
        const std::string line = fmt::format("{} = {}", each.name, each.value);
        text += m_lastProperty ? fmt::format("{}{}", LineEnd(), line) : fmt::format("{}{}", line, LineEnd());
    }
    return text;
}

}  // namespace stmdcm
