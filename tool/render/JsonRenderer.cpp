#include "tool/render/JsonRenderer.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>

#include "stmdcm/pins/Sha256.h"
#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace {

template <class Item>
Json ItemToJson(const Item& item);

template <class Item>
Json ItemsToJson(const std::vector<Item>& items) {
    Json array = Json::array();
    array.get_ref<Json::array_t&>().reserve(items.size());
    for (const Item& item : items) {
        array.push_back(ItemToJson(item));
    }
    return array;
}

class JsonVisitor {
  public:
    explicit JsonVisitor(Json& out) : m_members(out.get_ref<Json::object_t&>()) { m_members.reserve(kMostFields); }

    template <class T>
    void operator()(const Field& field, const T& value) const {
        m_members.emplace_back(field.name, value);
    }
    // JavaScript would round a large number, so all of this width are strings.
    void operator()(const Field& field, std::int64_t value) const {
        Put(field, fmt::format("{}", value), UtcTime(value));
    }
    void operator()(const Field& field, const std::optional<std::int64_t>& value) const {
        if (value) {
            (*this)(field, *value);
        } else {
            Put(field, nullptr, nullptr);
        }
    }
    template <class T>
    void operator()(const Field& field, const std::vector<T>& items) const {
        m_members.emplace_back(field.name, ItemsToJson(items));
    }

  private:
    void Put(const Field& field, Json value, Json time) const {
        m_members.emplace_back(field.name, std::move(value));
        if (field.unit == Unit::UnixTime) {
            m_members.emplace_back(std::string(field.name) + "_utc", std::move(time));
        }
    }

    static constexpr std::size_t kMostFields = 12;  // more than that are kept, too

    Json::object_t& m_members;  ///< behind each other, without a search: no two fields have one name
};

template <class Item>
Json ItemToJson(const Item& item) {
    Json object = Json::object();
    VisitFields(item, JsonVisitor(object));
    return object;
}

/// "sc", "pmi_cmi".
std::string KeyOf(Zu::Wep::Trace::UsecaseKind kind) {
    std::string key(NamesOf(kind).Type());
    std::transform(key.begin(), key.end(), key.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return key;
}

Json PropertyToJson(const Property& property) {
    const auto value = [&](std::int32_t number) { return property.isFlag ? Json(number != 0) : Json(number); };
    Json json = Json::object();
    auto& members = json.get_ref<Json::object_t&>();
    members.reserve(4);
    members.emplace_back("name", property.name);
    members.emplace_back("value", value(property.value));
    members.emplace_back("default", value(property.defaultValue));
    members.emplace_back("text", InWords(property));
    return json;
}

Json PinToJson(const ImageIdentity& pin) {
    return {{"size", std::to_string(pin.size)},
            {"sha256", InHexadecimal(pin.sha256)},
            {"build_id", JsonRenderer::OrNull(InHexadecimal(pin.buildId))}};
}

Json PropertiesToJson(const std::vector<Property>& properties, bool changedOnly) {
    Json array = Json::array();
    array.get_ref<Json::array_t&>().reserve(properties.size());
    for (const Property& property : properties) {
        if (!changedOnly || !property.IsAtDefault()) {
            array.push_back(PropertyToJson(property));
        }
    }
    return array;
}

/// Behind the members of `first` those of `rest`, none of which is copied: documents can be large.
Json Object(Json first, Json rest) {
    auto& members = first.get_ref<Json::object_t&>();
    auto& others = rest.get_ref<Json::object_t&>();
    members.reserve(members.size() + others.size());
    for (auto& [name, value] : others) {
        members.emplace_back(name, std::move(value));
    }
    return first;
}

constexpr int kJsonIndent = 2;
constexpr int kNoLines = -1;

std::string Dumped(const Json& document, int indent) {
    try {
        return document.dump(indent) + "\n";
    } catch (const Json::type_error&) {  // a text is no UTF-8
        Json whole = document;
        whole["bytes"] = JsonRenderer::InvalidTexts(document);
        return whole.dump(indent, ' ', false, Json::error_handler_t::replace) + "\n";
    }
}

}  // namespace

Json JsonRenderer::Document(const char* command, Json findings) {
    return Object({{"schema", kSchemaVersion}, {"command", command}}, std::move(findings));
}

std::string JsonRenderer::Text(const Json& document) { return Dumped(document, kJsonIndent); }

std::string JsonRenderer::Line(const Json& document) { return Dumped(document, kNoLines); }

Json JsonRenderer::InvalidTexts(const Json& json, const std::string& pointer) {
    Json invalid = Json::object();
    if (const auto* text = json.get_ptr<const std::string*>(); text != nullptr && !IsUtf8(*text)) {
        invalid[pointer] = fmt::format("{:02x}", fmt::join(std::vector<unsigned char>(text->begin(), text->end()), ""));
    }
    for (std::size_t i = 0; json.is_array() && i < json.size(); ++i) {
        invalid.update(InvalidTexts(json[i], fmt::format("{}/{}", pointer, i)));
    }
    if (json.is_object()) {
        for (const auto& [key, value] : json.items()) {
            invalid.update(InvalidTexts(value, fmt::format("{}/{}", pointer, key)));
        }
    }
    return invalid;
}

std::string JsonRenderer::PlainText(const Json& document) {
    return document.dump(kJsonIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json JsonRenderer::Render(const Configuration& configuration, const Selection& selection) {
    Json json = {{"properties", nullptr}, {"use_cases", nullptr}, {"object_files", nullptr}};
    if (selection.properties) {
        json["properties"] = PropertiesToJson(configuration.properties, selection.changedOnly);
    }
    if (selection.usecases) {
        Configuration::ForEachKind(
            [&](auto kind, auto list) { json["use_cases"][KeyOf(kind)] = ItemsToJson(configuration.*list); });
    }
    if (selection.objectFiles) {
        json["object_files"] = ObjectFiles(configuration.objectFiles);
    }
    return json;
}

Json JsonRenderer::ObjectFiles(const std::vector<ObjectFile>& files) {
    Json array = ItemsToJson(files);
    for (std::size_t i = 0; i < files.size(); ++i) {
        array[i]["pin"] = files[i].pin ? PinToJson(*files[i].pin) : Json(nullptr);
    }
    return array;
}

Json JsonRenderer::Differences(const std::vector<Difference>& differences) {
    Json array = Json::array();
    for (const Difference& difference : differences) {
        array.push_back({{"kind", difference.kind},
                         {"item", difference.item},
                         {"field", OrNull(difference.field)},
                         {"left", OrNull(difference.left)},
                         {"right", OrNull(difference.right)}});
    }
    return array;
}

}  // namespace stmdcm
