#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/Reading.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Compares two configurations, as far as both kinds of file can hold the same, and tells the result. Both must outlive
/// the report.
class DiffReport {
  public:
    DiffReport(const Reading& left, const Reading& right);

    bool IsEqual() const { return m_differences.empty(); }
    std::string Text(const Palette& palette) const;
    std::string Json() const;

  private:
    const Reading& m_left;
    const Reading& m_right;
    bool m_comparesObjectFiles;
    std::vector<Difference> m_differences;
};

}  // namespace stmdcm
