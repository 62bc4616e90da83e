#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/Configuration.h"
#include "tool/render/Selection.h"

namespace stmdcm {

/// Configurations for programs. The schema is docs/json.md.
class JsonRenderer {
  public:
    using Json = nlohmann::ordered_json;

    static constexpr int kSchemaVersion = 1;

    /// An object to which a command adds what it found.
    static Json Document(const char* command);
    /// One document as text, line feed included. Bytes that are no UTF-8 become U+FFFD.
    static std::string Text(const Json& document);

    /// What is not selected is null.
    static Json Render(const Configuration& configuration, const Selection& selection = {});
    static Json ObjectFiles(const std::vector<ObjectFile>& files);
    static Json Differences(const std::vector<Difference>& differences);
};

}  // namespace stmdcm
