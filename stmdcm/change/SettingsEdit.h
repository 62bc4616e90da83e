#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "stmdcm/change/Assignment.h"
#include "trace/format/TextReporter.h"

namespace stmdcm {

/// Sets properties in the text of a settings file (docs/settings-text.md) and leaves every other byte as it is. The
/// line of a property that counts, which is the last that is read, gets the new value in place of the old one; a
/// property that no such line sets gets a line behind the last one of a property, or at the start.
class SettingsEdit final : private Zu::Wep::Trace::TextReporter {
  public:
    explicit SettingsEdit(std::string text);

    /// Whether a line that is read sets the property.
    bool Names(std::string_view property) const { return m_values.find(property) != m_values.end(); }
    /// The first line that looks as if it set the property but stands behind the end of the properties.
    std::optional<std::size_t> UnreadLine(std::string_view property) const;

    void Set(const Assignment& assignment);
    /// The text with what was set.
    std::string Text() const;

  private:
    /// A piece of the text, and what takes its place.
    struct Replacement {
        std::size_t offset = 0;
        std::size_t length = 0;
        std::string text;
    };

    void OnProperty(std::size_t line, const Zu::Wep::Trace::PropertyLine& property) override;
    void OnPropertiesEnd(std::size_t line, Zu::Wep::Trace::PropertiesEnd why, std::string_view text) override;

    std::size_t StartOf(std::size_t line) const { return m_lineStarts[line - 1]; }
    /// Without its line end.
    std::string_view LineAt(std::size_t start) const;
    std::string_view LineEnd() const;
    std::string Added() const;

    std::string m_text;
    std::vector<std::size_t> m_lineStarts;
    std::map<std::string, Replacement, std::less<>> m_values;  ///< by property
    std::optional<std::size_t> m_lastProperty;                 ///< where the line begins that set one last
    std::optional<std::size_t> m_end;                          ///< and the one that ended them
    std::vector<Assignment> m_added;
};

}  // namespace stmdcm
