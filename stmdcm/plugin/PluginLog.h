#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace stmdcm {

class TraceHome;

/// One message of the plug-in's log (docs/log.md).
struct PluginMessage {
    enum class Kind { Information, Unexpected, Error };

    Kind kind = Kind::Information;
    std::string text;

    bool StartsWith(std::string_view start) const { return text.starts_with(start); }
};

/// What the plug-in writes into its log, which alone tells why something failed.
class PluginLog {
  public:
    /// Switches the log on, in `home`: make it before the first manager.
    explicit PluginLog(const TraceHome& home);

    /// The messages since the last call. None where the log can't be written; throws Failure where it can't be read.
    std::vector<PluginMessage> Take();
    /// Takes them; ": " and what was logged first as an error, without the file in front of it. Empty for none.
    std::string WhyFailed(const std::string& file);

  private:
    std::string File() const;
    std::string ReadNew();

    std::filesystem::path m_directory;
    std::size_t m_taken = 0;  ///< bytes of the log
};

}  // namespace stmdcm
