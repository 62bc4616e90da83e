#pragma once

#include <string>
#include <vector>

#include "stmdcm/change/ConfigurationChange.h"
#include "tool/many/FileWork.h"
#include "tool/output/Console.h"
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

/// The doubts and warnings of a result that changes something.
void Diagnose(const ChangeResult& result, const Console& console);

/// For the summary of many.
FileResult ResultOf(const ChangeResult& result);

}  // namespace ChangeReport

}  // namespace stmdcm
