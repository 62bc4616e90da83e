#pragma once

#include <string>

#include "stmdcm/change/Undo.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Tells what is in force again, and what that changes.
struct UndoReport {
    const std::string& file;
    UndoDirection direction;
    UndoResult result;

    bool HasChanges() const { return !result.restored.empty(); }
    std::string Text(const Palette& palette) const;
    Json Document() const;
};

}  // namespace stmdcm
