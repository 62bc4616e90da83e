#pragma once

#include <string>
#include <utility>

#include "stmdcm/plugin/LiveConfiguration.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Tells what a live target gave. The configuration must outlive the report.
class LiveReport {
  public:
    /// An empty `saved` for none.
    LiveReport(const LiveConfiguration& live, std::string plugin, std::string saved)
        : m_live(live), m_plugin(std::move(plugin)), m_saved(std::move(saved)) {}

    std::string Text(const Palette& palette) const;
    std::string Json() const;

  private:
    const LiveConfiguration& m_live;
    std::string m_plugin;
    std::string m_saved;
};

}  // namespace stmdcm
