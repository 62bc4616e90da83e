#pragma once

#include <optional>
#include <string>
#include <vector>

#include "stmdcm/change/ConfigurationChange.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// How the changes of one file are told.
namespace ChangeReport {

/// What changed: a property, or a field of a use case or object file.
std::string Item(const Difference& change);

/// A line for each, in columns.
std::string Changes(const std::vector<Difference>& changes, const Palette& palette);

std::string Text(const ChangeResult& result, const Palette& palette);
Json Document(const ChangeResult& result);

}  // namespace ChangeReport

/// Tells what `set` changed in a file.
struct SetReport {
    const ChangeResult& result;

    std::string Text(const Palette& palette) const { return ChangeReport::Text(result, palette); }
    Json Document() const { return JsonRenderer::Document("set", ChangeReport::Document(result)); }
};

/// Tells what `apply` changed in one capture.
struct ApplyReport {
    const std::string& source;
    const std::vector<std::string>& sourceDoubts;
    bool isDryRun;
    const ChangeResult& result;
    const std::optional<std::string>& failure;  ///< why nothing was

    std::string Text(const Palette& palette) const { return failure ? "" : ChangeReport::Text(result, palette); }
    Json Document() const;
};

}  // namespace stmdcm
