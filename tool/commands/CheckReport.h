#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Tells what was found in files. The reports must outlive this.
class CheckReport {
  public:
    /// Findings below `least` are left out, in the counts too.
    CheckReport(const std::vector<Reading>& reports, Severity least) : m_reports(reports), m_least(least) {}

    /// Whether anything that is shown is more than a note.
    bool HasProblem() const;

    std::string Text(const Palette& palette) const;
    std::string Json() const;

    /// The kinds of findings.
    static std::string ListText(const Palette& palette);
    static std::string ListJson();

  private:
    bool IsShown(Severity severity) const { return severity >= m_least; }
    JsonRenderer::Json FileJson(const Reading& report) const;
    std::string FileText(const Reading& report, const Palette& palette) const;
    std::string CountsInWords(const std::vector<const Reading*>& reports) const;

    const std::vector<Reading>& m_reports;
    Severity m_least;
};

}  // namespace stmdcm
