#pragma once

#include "stmdcm/capture/Container.h"
#include "tool/commands/SectionsText.h"

namespace stmdcm {

/// A capture's sections for programs (docs/json-container.md), printed as the document is made.
void PrintSectionsJson(const Container& container, const TextSink& print);

}  // namespace stmdcm
