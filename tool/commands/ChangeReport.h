#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "stmdcm/change/ConfigurationChange.h"
#include "tool/output/Console.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// How the changes of one file are told.
namespace ChangeReport {

/// What changed: a property, or a field of a use case or object file.
std::string Item(const Difference& change);

/// "  STM_ATB_Id: 12 -> 42", a line for each.
std::string Lines(const std::vector<Difference>& changes, const Palette& palette);

std::string Text(const ChangeResult& result, const Palette& palette);
nlohmann::ordered_json Json(const ChangeResult& result);

/// The doubts, as diagnostics that name the file.
void Diagnose(const std::string& path, const std::vector<std::string>& doubts, const Console& console);
/// Those of a result that changes something.
void Diagnose(const ChangeResult& result, const Console& console);

}  // namespace ChangeReport

}  // namespace stmdcm
