#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/Configuration.h"
#include "tool/render/Palette.h"
#include "tool/render/Selection.h"

namespace stmdcm {

/// By the name of an object file's state.
Style StateStyle(std::string_view state);

/// Configurations for people. Every text ends in a line feed; parts are separated by an empty line.
class TextRenderer {
  public:
    explicit TextRenderer(const Palette& palette) : m_palette(palette) {}

    std::string Render(const Configuration& configuration, const Selection& selection = {}) const;
    /// With `changedOnly` those alone that are not at their default.
    std::string Properties(const std::vector<Property>& properties, bool changedOnly = false) const;
    std::string ObjectFiles(const std::vector<ObjectFile>& files) const;
    std::string Differences(const std::vector<Difference>& differences) const;

    std::string Heading(const std::string& text) const { return m_palette.Paint(Style::Heading, text) + "\n"; }

  private:
    template <class Item>
    std::string Items(const std::string& title, const std::vector<Item>& items) const;

    const Palette& m_palette;
};

}  // namespace stmdcm
