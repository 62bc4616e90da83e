#pragma once

#include <string>
#include <vector>

#include "tool/change/ConfigurationBytes.h"

namespace stmdcm {

class Manager;
struct PluginSession;

/// The properties and use cases of a capture or a settings file, to be put into other configurations.
class AppliedText {
  public:
    /// Reads the file; throws Failure where that holds none. The session must outlive this.
    AppliedText(PluginSession& session, const std::string& path);

    void ApplyTo(Manager& manager) const { m_bytes.Load(manager, m_text); }

    /// Sentences: what of the file was not read.
    const std::vector<std::string>& Doubts() const { return m_doubts; }

  private:
    ConfigurationBytes m_bytes;
    std::string m_text;
    std::vector<std::string> m_doubts;
};

}  // namespace stmdcm
