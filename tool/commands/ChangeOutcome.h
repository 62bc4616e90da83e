#pragma once

#include "stmdcm/change/ConfigurationChange.h"
#include "tool/many/FileWork.h"
#include "tool/output/Console.h"

namespace stmdcm {

/// The doubts and warnings of a result that changes something.
void Diagnose(const ChangeResult& result, const Console& console);

/// For the summary of many.
FileResult ResultOf(const ChangeResult& result);

}  // namespace stmdcm
