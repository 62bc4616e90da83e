#pragma once

#include <string>

#include "tool/commands/DemoRun.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Tells a demo's result. The result must outlive the report.
class DemoReport {
  public:
    explicit DemoReport(const DemoResult& result) : m_result(result) {}

    std::string Text(const Palette& palette) const;
    std::string Json() const;

  private:
    const DemoResult& m_result;
};

}  // namespace stmdcm
