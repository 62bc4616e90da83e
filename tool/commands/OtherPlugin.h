#pragma once

#include <memory>
#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"
#include "tool/cli/Command.h"

namespace stmdcm {

/// The plug-in that --plugin names, for commands that hold their answer against its own. Loaded once, in a home of its
/// own, when it is first asked; copies share it.
class OtherPlugin {
  public:
    /// Sentences: where it says something else than was read. None where none is named.
    std::vector<std::string> Differences(const Context& context, const Reading& reading);

  private:
    struct Loaded;

    std::shared_ptr<Loaded> m_loaded;
};

}  // namespace stmdcm
