#pragma once

#include <string>

#include "tool/model/LoadedConfiguration.h"
#include "tool/model/Selection.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Tells what a file holds. The configuration must outlive the report.
class ShowReport {
  public:
    ShowReport(const LoadedConfiguration& loaded, const Selection& selection)
        : m_loaded(loaded), m_selection(selection) {}

    std::string Text(const Palette& palette) const;
    std::string Json() const;

  private:
    const LoadedConfiguration& m_loaded;
    Selection m_selection;
};

}  // namespace stmdcm
