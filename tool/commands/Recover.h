#pragma once

#include <string>

#include "stmdcm/recover/RecoveryPlan.h"
#include "tool/cli/Command.h"
#include "tool/output/OutputFile.h"
#include "tool/output/Progress.h"

namespace stmdcm {

/// A torn or broken capture into a new one.
class Recover final : public Command {
  public:
    void Declare(CLI::App& app) override;
    ExitStatus Run(const Context& context) override;

  private:
    RecoveryPlan Plan(const CaptureFile& file) const;
    void Write(const CaptureFile& file, RecoveryPlan& plan, OutputFile& output) const;
    void CheckLoading(const Context& context, const OutputFile& output, RecoveryPlan& plan) const;
    Progress::Show ProgressShow() const;

    std::string m_file;
    std::string m_output;
    bool m_force = false;
    bool m_progress = false;
};

}  // namespace stmdcm
