#pragma once

#include <string>

#include "tool/commands/DemoRun.h"
#include "tool/commands/LiveDemoRun.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Tells a demo's results, which must outlive the report.
class DemoReport {
  public:
    DemoReport(const DemoResult& result, const LiveDemoResult& live) : m_result(result), m_live(live) {}

    std::string Text(const Palette& palette) const;
    std::string Json() const;

  private:
    std::string LiveText(const Palette& palette) const;

    const DemoResult& m_result;
    const LiveDemoResult& m_live;
};

}  // namespace stmdcm
