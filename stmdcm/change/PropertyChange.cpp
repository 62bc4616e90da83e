#include "stmdcm/change/PropertyChange.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/change/SettingsChange.h"

namespace stmdcm {

PropertyChange::PropertyChange(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        Assignment assignment = Assignment::Parse(text);
        if (std::any_of(m_assignments.begin(), m_assignments.end(),
                        [&](const Assignment& other) { return other.name == assignment.name; })) {
            throw Failure(fmt::format("{} is given twice", assignment.name), Failure::Kind::Request);
        }
        m_assignments.push_back(std::move(assignment));
    }
}

ChangeResult PropertyChange::In(const std::string& file, bool force, ChangeMode mode) const {
    if (KindOf(file) == ConfigurationKind::Settings) {
        return SetInSettings(file, m_assignments, force, mode);
    }
    const ConfigurationChange change([&](Settings& settings) {
        for (const Assignment& assignment : m_assignments) {
            assignment.ApplyTo(settings.properties);
        }
    });
    return change.InCapture(file, ConfigurationChange::Missing::IsFailure, mode);
}

}  // namespace stmdcm
