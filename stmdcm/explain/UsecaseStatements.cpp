#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <map>

#include "stmdcm/explain/Statements.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/Words.h"
#include "trace/format/SettingsText.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

/// Remembers where the use cases of each kind stand, and those that are dropped.
struct BlockPlaces final : TextReporter {
    struct Dropped {
        UsecaseKind kind;
        std::size_t opener;
        std::size_t line;  ///< that ended it
        std::vector<std::string> values;
    };

    void OnBlockOpened(UsecaseKind /*kind*/, std::size_t line, std::string_view /*text*/) override {
        m_opener = line;
        m_values.clear();
    }
    void OnKey(UsecaseKind /*kind*/, std::size_t /*line*/, const BlockKey& key) override {
        m_values.emplace_back(key.value);
    }
    void OnBlockRead(UsecaseKind kind, std::size_t /*line*/) override {
        openers[static_cast<std::size_t>(kind)].push_back(m_opener);
    }
    void OnBlockDropped(UsecaseKind kind, std::size_t line, BlockFault /*fault*/, std::string_view /*text*/) override {
        dropped.push_back({kind, m_opener, line, m_values});
    }

    std::array<std::vector<std::size_t>, kUsecaseKinds.size()> openers;
    std::vector<Dropped> dropped;

  private:
    std::size_t m_opener = 0;
    std::vector<std::string> m_values;
};

template <class Item>
std::string NameOf(const Item& item) {
    if constexpr (requires { item.moduleName; }) {
        return item.moduleName;
    } else {
        return item.source;
    }
}

/// The fields in a line; of lists how many there are.
template <class Item>
std::string Fields(const Item& item) {
    std::vector<std::string> parts;
    VisitFields(item, [&](const Field& field, const auto& value) {
        if constexpr (requires { InWords(field.unit, value); }) {
            parts.push_back(fmt::format("{} {}", field.name, InWords(field.unit, value)));
        } else {
            parts.push_back(fmt::format("{} {}", value.size(), field.name));
        }
    });
    return fmt::format("{}", fmt::join(parts, ", "));
}

/// What the texts state about the use cases of a name, by kind and key.
class UsecaseListener {
  public:
    explicit UsecaseListener(const std::string& name) : m_name(name) {}

    void Listen(const StatingFile& file, const StatingSection& section) {
        Settings settings;
        BlockPlaces places;
        const SettingsText read(section.text, file.limits, settings.Applier(), nullptr);
        settings.Read(read.Blocks(), &places);
        Configuration configuration;
        Fill(configuration, settings);
        Configuration::ForEachKind([&](UsecaseKind kind, auto list) {
            const auto& items = configuration.*list;
            for (std::size_t i = 0; i < items.size(); ++i) {
                if (items[i].Key() == m_name || NameOf(items[i]) == m_name) {
                    Add(section, kind, items[i].Key(), places.openers[static_cast<std::size_t>(kind)][i],
                        Fields(items[i]));
                }
            }
        });
        for (const BlockPlaces::Dropped& each : places.dropped) {
            if (std::find(each.values.begin(), each.values.end(), m_name) != each.values.end()) {
                Of(each.kind, m_name)
                    .statements.push_back({SourceOf(section), section.place.AtLine(each.opener), "", "",
                                           section.IsRead() ? Standing::NotRead : section.standing,
                                           fmt::format("the block is dropped on line {}: it is broken off, or a line "
                                                       "of it is none; no block of its kind behind it is read",
                                                       each.line)});
            }
        }
    }

    std::vector<Explanation> Take() { return std::move(m_found); }

  private:
    static std::string SourceOf(const StatingSection& section) {
        return section.name.empty() ? "settings text" : section.name;
    }

    Explanation& Of(UsecaseKind kind, const std::string& key) {
        const std::string kindName = fmt::format("{} use case", NamesOf(kind).name);
        const auto found = std::find_if(m_found.begin(), m_found.end(), [&](const Explanation& each) {
            return each.kind == kindName && each.item == key;
        });
        return found != m_found.end() ? *found : m_found.emplace_back(Explanation{kindName, key, "", {}});
    }

    void Add(const StatingSection& section, UsecaseKind kind, const std::string& key, std::size_t line,
             std::string fields) {
        Explanation& explanation = Of(kind, key);
        const bool isTwin = section.IsRead() && !explanation.value.empty();
        Statement statement{SourceOf(section), section.place.AtLine(line), std::move(fields), "", section.standing,
                            section.why};
        if (isTwin) {
            statement.standing = Standing::Beside;
            statement.why = "kept as another one of that key; who asks for one gets the first";
        } else if (section.IsRead()) {
            explanation.value = statement.value;
        }
        explanation.statements.push_back(std::move(statement));
    }

    const std::string& m_name;
    std::vector<Explanation> m_found;
};

}  // namespace

std::vector<Explanation> ExplainUsecases(const StatingFile& file, const std::string& name) {
    UsecaseListener listener(name);
    for (const StatingSection& section : file.Of(file.settings)) {
        listener.Listen(file, section);
    }
    return listener.Take();
}

}  // namespace stmdcm
