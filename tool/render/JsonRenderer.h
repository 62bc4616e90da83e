#pragma once

#include <optional>
#include <string>
#include <vector>

#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/Configuration.h"
#include "tool/render/JsonWriter.h"
#include "tool/render/Selection.h"

namespace stmdcm {

/// Configurations for programs. The schema is docs/json.md.
class JsonRenderer {
  public:
    static constexpr int kSchemaVersion = 1;

    /// What every command's document has, and what this one found.
    static Json Document(const char* command, Json findings = Json::object());
    /// The same to write on: the members of this one, and the end of the object, are still to come.
    static JsonWriter Begin(const char* command);

    /// One document as text, line feed included. Bytes that are no UTF-8 become U+FFFD, and the texts that have some
    /// are added once more as `bytes`.
    static std::string Text(const JsonLine& document);
    static std::string Text(const Json& document) { return Text(JsonWriter().Value(document).Take()); }
    /// The same in one line.
    static std::string Line(const JsonLine& document) { return document.text + "\n"; }
    static std::string Line(const Json& document) { return Line(JsonWriter().Value(document).Take()); }
    /// A text without `bytes`.
    static std::string PlainText(const Json& document);
    /// The texts below `json` that are no UTF-8: from where they are, as a JSON pointer that begins with `pointer`, to
    /// their bytes in hexadecimal.
    static Json InvalidTexts(const Json& json, const std::string& pointer = {});

    /// What is not selected is null.
    static void Write(JsonWriter& out, const Configuration& configuration, const Selection& selection = {});
    static void WriteProperties(JsonWriter& out, const std::vector<Property>& properties, bool changedOnly = false);
    static void Write(JsonWriter& out, const std::vector<ObjectFile>& files);
    /// The members of one, without the object around them.
    static void WriteMembers(JsonWriter& out, const ObjectFile& file);
    static Json Differences(const std::vector<Difference>& differences);

    template <class T>
    static Json OrNull(const std::optional<T>& value) {
        return value ? Json(*value) : Json(nullptr);
    }
    /// An empty text is nothing.
    static Json OrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }
};

}  // namespace stmdcm
