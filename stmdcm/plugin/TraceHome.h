#pragma once

#include <filesystem>
#include <optional>

#include "stmdcm/plugin/InterruptGuard.h"

namespace stmdcm {

/// A home directory of the process's own. The plug-in keeps its directories, settings files and logs below HOME and
/// looks there only once, so this comes into being before the plug-in is loaded: nothing in the user's home is read or
/// written, whatever the environment says.
class TraceHome {
  public:
    /// A private temporary directory, removed with everything in it at the end, also when the program is interrupted.
    TraceHome();
    /// `directory` instead, kept at the end. It must be new or empty; Failure otherwise.
    explicit TraceHome(const std::filesystem::path& directory);
    ~TraceHome();
    TraceHome(const TraceHome&) = delete;
    TraceHome& operator=(const TraceHome&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

  private:
    void Remove() const;

    std::filesystem::path m_path;
    std::optional<InterruptGuard> m_guard;  ///< of a temporary directory alone
};

}  // namespace stmdcm
