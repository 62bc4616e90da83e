#pragma once

#include <string>

#include "stmdcm/images/ImageUpdate.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"
#include "tool/render/Table.h"

namespace stmdcm {

/// Tells how the program images of a capture are.
struct ObjectsReport {
    const ImageList& list;
    ImageParts parts;  ///< that were to be recorded

    std::string Text(const Palette& palette) const;
    JsonLine Document() const;

  private:
    static void AddRows(const ImageAnswer& answer, Table& table);
};

}  // namespace stmdcm
