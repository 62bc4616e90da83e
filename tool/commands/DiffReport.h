#pragma once

#include <string>
#include <vector>

#include "tool/model/Comparison.h"
#include "tool/model/LoadedConfiguration.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Compares two configurations, as far as both kinds of file can hold the same, and tells the result. Both must outlive
/// the report.
class DiffReport {
  public:
    DiffReport(const LoadedConfiguration& left, const LoadedConfiguration& right);

    bool IsEqual() const { return m_differences.empty(); }
    std::string Text(const Palette& palette) const;
    std::string Json() const;

  private:
    const LoadedConfiguration& m_left;
    const LoadedConfiguration& m_right;
    bool m_comparesObjectFiles;
    std::vector<Difference> m_differences;
};

}  // namespace stmdcm
