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
void WriteItem(JsonWriter& out, const Item& item);

class FieldWriter {
  public:
    explicit FieldWriter(JsonWriter& out) : m_out(out) {}

    template <class T>
    void operator()(const Field& field, const T& value) const {
        m_out.Member(field.name, value);
    }
    // JavaScript would round a large number, so all of this width are strings.
    void operator()(const Field& field, std::int64_t value) const {
        m_out.Member(field.name, std::to_string(value));
        PutTime(field, UtcTime(value));
    }
    void operator()(const Field& field, const std::optional<std::int64_t>& value) const {
        if (value) {
            (*this)(field, *value);
        } else {
            m_out.Member(field.name, nullptr);
            PutTime(field, nullptr);
        }
    }
    template <class T>
    void operator()(const Field& field, const std::vector<T>& items) const {
        m_out.Key(field.name).BeginArray();
        for (const T& item : items) {
            WriteItem(m_out, item);
        }
        m_out.EndArray();
    }

  private:
    template <class T>
    void PutTime(const Field& field, const T& time) const {
        if (field.unit == Unit::UnixTime) {
            const std::string name = std::string(field.name) + "_utc";
            m_out.Member(name, time);
        }
    }

    JsonWriter& m_out;
};

template <class Item>
void WriteItem(JsonWriter& out, const Item& item) {
    out.BeginObject();
    VisitFields(item, FieldWriter(out));
    out.EndObject();
}

/// "sc", "pmi_cmi".
std::string KeyOf(Zu::Wep::Trace::UsecaseKind kind) {
    std::string key(NamesOf(kind).Type());
    std::transform(key.begin(), key.end(), key.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return key;
}

void WriteProperty(JsonWriter& out, const Property& property) {
    const auto put = [&](const char* name, std::int32_t number) {
        property.isFlag ? out.Member(name, number != 0) : out.Member(name, number);
    };
    out.BeginObject().Member("name", property.name);
    put("value", property.value);
    put("default", property.defaultValue);
    out.Member("text", InWords(property)).EndObject();
}

void WritePin(JsonWriter& out, const ImageIdentity& pin) {
    out.BeginObject().Member("size", std::to_string(pin.size)).Member("sha256", InHexadecimal(pin.sha256));
    out.Key("build_id").OrNull(InHexadecimal(pin.buildId)).EndObject();
}

void WriteUsecases(JsonWriter& out, const Configuration& configuration) {
    out.BeginObject();
    Configuration::ForEachKind([&](auto kind, auto list) {
        const std::string key = KeyOf(kind);
        const FieldWriter write(out);
        write({key.c_str()}, configuration.*list);
    });
    out.EndObject();
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

}  // namespace

Json JsonRenderer::Document(const char* command, Json findings) {
    return Object({{"schema", kSchemaVersion}, {"command", command}}, std::move(findings));
}

JsonWriter JsonRenderer::Begin(const char* command) {
    JsonWriter out;
    out.BeginObject().Member("schema", kSchemaVersion).Member("command", command);
    return out;
}

std::string JsonRenderer::Text(const JsonLine& document) { return Json::parse(document.text).dump(kJsonIndent) + "\n"; }

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

void JsonRenderer::Write(JsonWriter& out, const Configuration& configuration, const Selection& selection) {
    out.BeginObject().Key("properties");
    if (selection.properties) {
        WriteProperties(out, configuration.properties, selection.changedOnly);
    } else {
        out.Value(nullptr);
    }
    out.Key("use_cases");
    if (selection.usecases) {
        WriteUsecases(out, configuration);
    } else {
        out.Value(nullptr);
    }
    out.Key("object_files");
    if (selection.objectFiles) {
        Write(out, configuration.objectFiles);
    } else {
        out.Value(nullptr);
    }
    out.EndObject();
}

void JsonRenderer::WriteProperties(JsonWriter& out, const std::vector<Property>& properties, bool changedOnly) {
    out.BeginArray();
    for (const Property& property : properties) {
        if (!changedOnly || !property.IsAtDefault()) {
            WriteProperty(out, property);
        }
    }
    out.EndArray();
}

void JsonRenderer::Write(JsonWriter& out, const std::vector<ObjectFile>& files) {
    out.BeginArray();
    for (const ObjectFile& file : files) {
        out.BeginObject();
        WriteMembers(out, file);
        out.EndObject();
    }
    out.EndArray();
}

void JsonRenderer::WriteMembers(JsonWriter& out, const ObjectFile& file) {
    VisitFields(file, FieldWriter(out));
    out.Key("pin");
    if (file.pin) {
        WritePin(out, *file.pin);
    } else {
        out.Value(nullptr);
    }
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
