#pragma once

#include <filesystem>

#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

/// A home directory of the process's own. The plug-in keeps its directories, settings files and logs below HOME and
/// looks there only once, so this comes into being before the plug-in is loaded: nothing in the user's home is read or
/// written, whatever the environment says.
class TraceHome {
  public:
    /// A private temporary directory, removed with everything in it at the end; also those that a killed process has
    /// left (source_utilities/Temporaries.h). Or `keep`, if that is not empty, which is kept. It must be new or empty;
    /// Failure otherwise.
    explicit TraceHome(const std::filesystem::path& keep = {});
    ~TraceHome() { Remove(); }
    TraceHome(const TraceHome&) = delete;
    TraceHome& operator=(const TraceHome&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

    /// The same failure for a user, to whom a private directory and its files mean nothing: it is about the directory
    /// that holds it.
    Failure Named(const Failure& failure) const;

    /// Does already what the end does.
    void Remove() const;

  private:
    ZU_WEP::PosixFile m_lock;  ///< open as long as the directory is in use
    std::filesystem::path m_path;
    bool m_isKept;
};

}  // namespace stmdcm
