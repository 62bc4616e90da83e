#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Compares two configurations, as far as both kinds of file can hold the same, and tells the result.
struct DiffReport {
    const Reading& left;
    const Reading& right;
    bool isOneOfMany = false;
    bool comparesObjectFiles = left.hasObjectFiles && right.hasObjectFiles;
    std::vector<Difference> differences = comparesObjectFiles ? Compare(left.configuration, right.configuration)
                                                              : Compare(left.configuration.WithoutObjectFiles(),
                                                                        right.configuration.WithoutObjectFiles());

    bool IsEqual() const { return differences.empty(); }
    std::string Text(const Palette& palette) const;
    Json Document() const;
};

}  // namespace stmdcm
