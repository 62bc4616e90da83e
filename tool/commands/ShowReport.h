#pragma once

#include <string>

#include "stmdcm/reading/Reading.h"
#include "tool/render/Palette.h"
#include "tool/render/Selection.h"

namespace stmdcm {

/// Tells what a file holds. The configuration must outlive the report.
class ShowReport {
  public:
    ShowReport(const Reading& loaded, const Selection& selection) : m_loaded(loaded), m_selection(selection) {}

    std::string Text(const Palette& palette) const;
    std::string Json() const;

  private:
    const Reading& m_loaded;
    Selection m_selection;
};

}  // namespace stmdcm
