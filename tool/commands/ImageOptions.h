#pragma once

#include <string>
#include <vector>

#include "stmdcm/images/ImageFinder.h"
#include "tool/cli/Command.h"
#include "tool/output/HashProgress.h"

namespace stmdcm {

/// Where a command that asks for program images looks for them.
class ImageOptions {
  public:
    void Declare(CLI::App& app);
    /// Borrows the progress. Throws Failure for a mapping or a directory that is none.
    ImageFinder Finder(HashProgress& progress) const;

  private:
    std::vector<std::string> m_mappings;
    std::vector<std::string> m_directories;
};

}  // namespace stmdcm
