#pragma once

#include <string>

#include "stmdcm/images/ImageUpdate.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Tells how the program images of a capture are. The list must outlive the report.
class ObjectsReport {
  public:
    explicit ObjectsReport(const ImageList& list) : m_list(list) {}

    std::string Text(const Palette& palette) const;
    std::string Json() const;

  private:
    const ImageList& m_list;
};

}  // namespace stmdcm
