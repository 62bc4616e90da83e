#include "stmdcm/reading/Comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace {

struct FieldText {
    std::string exact;
    std::string words;
};

using FieldTexts = std::vector<std::pair<std::string, FieldText>>;

/// Walks an item and the items in it down to plain fields, each under a path such as "counters[0].text".
class Flattener {
  public:
    explicit Flattener(FieldTexts& out, std::string prefix = {}) : m_out(out), m_prefix(std::move(prefix)) {}

    template <class T>
    void operator()(const Field& field, const T& value) const {
        if (field.derived) {
            return;
        }
        if constexpr (std::is_same_v<T, std::optional<std::int64_t>>) {
            (*this)(field, value.value_or(0));
        } else {
            m_out.emplace_back(m_prefix + field.name, FieldText{fmt::format("{}", value), InWords(field.unit, value)});
        }
    }

    template <class T>
    void operator()(const Field& field, const std::vector<T>& items) const {
        for (std::size_t i = 0; i < items.size(); ++i) {
            VisitFields(items[i], Flattener(m_out, fmt::format("{}{}[{}].", m_prefix, field.name, i)));
        }
    }

  private:
    FieldTexts& m_out;
    std::string m_prefix;
};

template <class Item>
FieldTexts Flatten(const Item& item) {
    FieldTexts texts;
    VisitFields(item, Flattener(texts));
    return texts;
}

/// The texts by their names, which are unlike each other.
class FieldIndex {
  public:
    explicit FieldIndex(const FieldTexts& texts) {
        for (const auto& [name, text] : texts) {
            m_texts.emplace(name, &text);
        }
    }
    const FieldText* Find(const std::string& name) const {
        const auto found = m_texts.find(name);
        return found == m_texts.end() ? nullptr : found->second;
    }

  private:
    std::unordered_map<std::string_view, const FieldText*> m_texts;
};

std::optional<std::string> WordsOf(const FieldText* text) {
    return text == nullptr ? std::nullopt : std::optional(text->words);
}

class Comparer {
  public:
    std::vector<Difference> Take() { return std::move(m_differences); }

    void CompareProperties(const std::vector<Property>& left, const std::vector<Property>& right) {
        for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i) {
            if (left[i].value != right[i].value) {
                m_differences.push_back({"property", left[i].name, "value", InWords(left[i]), InWords(right[i])});
            }
        }
    }

    template <class Item>
    void CompareItems(const std::string& kind, const std::vector<Item>& left, const std::vector<Item>& right) {
        std::multimap<std::string, const Item*> unmatched;
        for (const Item& item : right) {
            unmatched.emplace(item.Key(), &item);  // Equal keys stay in their order.
        }
        for (const Item& item : left) {
            const auto match = unmatched.lower_bound(item.Key());
            if (match == unmatched.end() || match->first != item.Key()) {
                m_differences.push_back({kind, item.Key(), {}, "there", std::nullopt});
                continue;
            }
            CompareFields(kind, item.Key(), Flatten(item), Flatten(*match->second));
            unmatched.erase(match);
        }
        for (const auto& [key, item] : unmatched) {
            m_differences.push_back({kind, key, {}, std::nullopt, "there"});
        }
    }

  private:
    void CompareFields(const std::string& kind, const std::string& item, const FieldTexts& left,
                       const FieldTexts& right) {
        const FieldIndex leftIndex(left), rightIndex(right);
        for (const auto& [name, text] : left) {
            const FieldText* other = rightIndex.Find(name);
            if (other == nullptr || other->exact != text.exact) {
                m_differences.push_back({kind, item, name, text.words, WordsOf(other)});
            }
        }
        for (const auto& [name, text] : right) {
            if (leftIndex.Find(name) == nullptr) {
                m_differences.push_back({kind, item, name, std::nullopt, text.words});
            }
        }
    }

    std::vector<Difference> m_differences;
};

}  // namespace

std::string Difference::Sentence(const std::string& path) const {
    const std::string what = fmt::format("{}: {} {}", path, kind, item);
    if (field.empty()) {
        return what + (left ? " is not kept" : " is new");
    }
    return fmt::format("{}, {}: {} has become {}", what, field, left.value_or("nothing"), right.value_or("nothing"));
}

std::vector<Difference> Compare(const Configuration& left, const Configuration& right) {
    Comparer comparer;
    comparer.CompareProperties(left.properties, right.properties);
    Configuration::ForEachKind([&](auto kind, auto list) {
        comparer.CompareItems(fmt::format("{} use case", NamesOf(kind).name), left.*list, right.*list);
    });
    comparer.CompareItems("object file", left.objectFiles, right.objectFiles);
    return comparer.Take();
}

}  // namespace stmdcm
