#pragma once

#include <string>
#include <vector>

#include "stmdcm/recover/RecoveryPlan.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Tells what was recovered, or would be.
struct RecoverReport {
    const std::string& file;
    const std::string& output;  ///< empty for none
    bool isWritten;
    const RecoveryPlan& plan;
    /// So many lines of text; the document has more.
    static constexpr std::size_t kMaxShown = 1000;

    std::string Text(const Palette& palette) const;
    Json Document() const;
    /// What of the result is not read, as every command tells it, and how many other doubts there are.
    std::vector<std::string> Doubts() const;

  private:
    static std::string RemarkText(const Remark& remark, const Palette& palette);
};

}  // namespace stmdcm
