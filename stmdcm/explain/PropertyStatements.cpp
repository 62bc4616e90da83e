#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "stmdcm/explain/Statements.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/Words.h"
#include "trace/format/SettingsText.h"
#include "trace/format/StmPropertyTable.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// Hears the lines of one text that set a property, and what its value is behind each. Borrows all that it is given.
class Listener final : public TextReporter {
  public:
    Listener(const StatingSection& section, const StmProperty& row, const Settings& settings,
             std::vector<Statement>& statements)
        : m_section(section), m_row(row), m_settings(settings), m_statements(statements) {}

    void OnProperty(std::size_t line, const PropertyLine& property) override {
        if (property.name == m_row.name) {
            Add(line, std::string(property.value), InWords(PropertyOf(m_row, NumberOf(m_settings.properties, m_row))),
                m_section.standing, m_section.why);
        }
    }
    void OnPropertiesEnd(std::size_t line, PropertiesEnd why, std::string_view text) override {
        constexpr const char* kReasons[] = {"a block begins", "there is no value", "there is no such property"};
        m_end = line;
        m_endReason = kReasons[static_cast<std::size_t>(why)];
        const std::string_view name = text.substr(0, text.find_last_not_of(" =\r\t") + 1);
        if (why == PropertiesEnd::NoValue && name == m_row.name) {
            Add(line, "", "", Standing::NotRead, "it has no value, so the properties end here");
        }
    }

    /// The lines of that name behind the end of the properties.
    void AddUnread() {
        if (m_end == 0) {
            return;
        }
        std::size_t number = 0;
        std::string_view rest = m_section.text;
        while (++number <= m_end) {
            rest.remove_prefix(std::min(rest.find('\n'), rest.size() - 1) + 1);
        }
        UnreadLines unread(*this, number - 1);
        const auto isIt = [&](std::string_view name, std::string_view /*value*/) { return name == m_row.name; };
        ReadDeviceText(rest, isIt, &unread);
    }

  private:
    struct UnreadLines final : TextReporter {
        UnreadLines(Listener& listener, std::size_t before) : owner(listener), linesBefore(before) {}
        void OnProperty(std::size_t line, const PropertyLine& property) override {
            owner.Add(linesBefore + line, std::string(property.value), "", Standing::NotRead,
                      fmt::format("the properties end on line {}, where {}", owner.m_end, owner.m_endReason));
        }
        Listener& owner;
        std::size_t linesBefore;
    };

    void Add(std::size_t line, std::string text, std::string value, Standing standing, std::string why) {
        const std::string source = m_section.name.empty() ? "settings text" : m_section.name;
        m_statements.push_back(
            {source, m_section.place.AtLine(line), std::move(value), std::move(text), standing, std::move(why)});
    }

    const StatingSection& m_section;
    const StmProperty& m_row;
    const Settings& m_settings;
    std::vector<Statement>& m_statements;
    std::size_t m_end = 0;  ///< the line; 0: the text ran out
    const char* m_endReason = "";
};

void ListenToDevice(const StatingSection& section, const StmProperty& row, Settings& settings,
                    std::vector<Statement>& statements) {
    Listener listener(section, row, settings, statements);
    settings.ReadDevice(section.text, &listener);
}

void ListenToText(const StatingFile& file, const StatingSection& section, const StmProperty& row, Settings& settings,
                  std::vector<Statement>& statements) {
    Listener listener(section, row, settings, statements);
    const SettingsText read(section.text, file.limits, settings.Applier(), &listener);
    listener.AddUnread();
}

/// Of those that are read the last counts.
void TellWinner(std::vector<Statement>& statements) {
    const Statement* winner = nullptr;
    for (auto each = statements.rbegin(); each != statements.rend(); ++each) {
        if (each->standing != Standing::InForce) {
            continue;
        }
        if (winner == nullptr) {
            winner = &*each;
            each->why += "; of what is read the last counts";
        } else {
            each->standing = Standing::Overridden;
            each->why += fmt::format("; {} sets it again", InWords(winner->place));
        }
    }
}

}  // namespace

Explanation ExplainProperty(const StatingFile& file, const StmProperty& row) {
    const bool isLoaded = file.reading.isLoaded;
    Settings settings;
    const std::string start = InWords(PropertyOf(row, NumberOf(settings.properties, row)));
    Explanation explanation{"property", row.name, "", {}};
    std::vector<Statement>& statements = explanation.statements;
    statements.push_back({"default",
                          {},
                          start,
                          "",
                          isLoaded ? Standing::InForce : Standing::NotInForce,
                          "a manager begins with it, or with what its CPU's settings file on that machine says"});
    std::vector<Statement> others;
    for (const StatingSection& section : file.Of(kDeviceSectionName)) {
        Settings alone;
        ListenToDevice(section, row, section.IsRead() ? settings : alone, section.IsRead() ? statements : others);
    }
    const StmProperties ofDevice = settings.properties;
    for (const StatingSection& section : file.Of(file.settings)) {
        Settings alone;
        alone.properties = ofDevice;
        ListenToText(file, section, row, section.IsRead() ? settings : alone, section.IsRead() ? statements : others);
    }
    explanation.value = isLoaded ? InWords(PropertyOf(row, NumberOf(settings.properties, row))) : "";
    TellWinner(statements);
    statements.insert(statements.end(), others.begin(), others.end());
    return explanation;
}

}  // namespace stmdcm
