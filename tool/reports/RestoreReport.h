#pragma once

#include <string>

#include "stmdcm/change/History.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Tells what is in force now.
struct RestoreReport {
    const std::string& file;
    std::size_t number;
    RestoreResult result;

    std::string Text(const Palette& /*palette*/) const;
    Json Document() const;

  private:
    const char* Outcome() const;
};

}  // namespace stmdcm
