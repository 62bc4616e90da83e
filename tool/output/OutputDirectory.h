#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"
#include "stmdcm/bundle/Bundle.h"
#include "tool/output/InterruptGuard.h"

namespace stmdcm {

/// The directory that a command makes, all or nothing: it gets its name, synced, at Commit. Until then it is a
/// temporary one beside that (source_utilities/Temporaries.h), which goes when the program fails or is interrupted.
/// Every failure is a Failure that names the file as it would be called.
class OutputDirectory final : public BundleFolder {
  public:
    /// Refuses a path at which anything is.
    explicit OutputDirectory(const std::string& path);
    ~OutputDirectory() override;
    OutputDirectory(const OutputDirectory&) = delete;
    OutputDirectory& operator=(const OutputDirectory&) = delete;

    void Add(const std::string& name, const std::string& input, const ZU_WEP::PosixFile* source,
             const std::function<void(ByteSink&)>& write) override;
    void Commit();

  private:
    void Make();
    void Sync(const std::string& directory) const;
    Failure Named(const Failure& failure) const;
    [[noreturn]] void Fail(const char* what) const;

    std::string m_path;
    std::string m_parent;
    std::filesystem::path m_temporary;  ///< empty once it has its name
    std::set<std::string> m_folders;    ///< in it
    ZU_WEP::PosixFile m_lock;           ///< open as long as the directory is temporary
    std::optional<InterruptGuard> m_guard;
};

}  // namespace stmdcm
