#pragma once

#include <string>

#include "stmdcm/recover/RecoveryPlan.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Tells what was recovered. All is borrowed.
class RecoverReport {
  public:
    RecoverReport(const std::string& file, const std::string& output, const RecoveryPlan& plan)
        : m_file(file), m_output(output), m_plan(plan) {}

    std::string Text(const Palette& palette) const;
    std::string Json() const;

  private:
    const std::string& m_file;
    const std::string& m_output;
    const RecoveryPlan& m_plan;
};

}  // namespace stmdcm
