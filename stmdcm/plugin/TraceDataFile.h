#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "stmdcm/plugin/Plugin.h"
#include "trace/tdf/TDFHandler.h"

namespace stmdcm {

/// Captures (docs/tdf.md) through the container operations that the plug-in exports. Every failure is a Failure that
/// names the file.
class TraceDataFile {
  public:
    /// The plug-in must outlive this object.
    explicit TraceDataFile(const Plugin& plugin);
    ~TraceDataFile();
    TraceDataFile(const TraceDataFile&) = delete;
    TraceDataFile& operator=(const TraceDataFile&) = delete;

    /// Makes an empty capture.
    void Create(const std::string& path);
    void AppendSection(const std::string& path, const char* name, unsigned version, std::string_view payload);
    /// The payload of the first section of that name and version, as much of it as the file holds.
    std::string ReadSection(const std::string& path, const char* name, unsigned version);

  private:
    using Handler = Zu::Wep::Trace::TDFHandler;
    using Lifetime = void (Handler::*)();

    Handler& Object() { return *reinterpret_cast<Handler*>(m_object); }

    // Resolved from the loaded library: this program is not linked with it.
    Lifetime m_construct;
    Lifetime m_destroy;
    decltype(&Handler::CreateTDFFile) m_create;
    decltype(&Handler::SaveSectionHeader) m_saveHeader;
    decltype(&Handler::SaveSectionData) m_saveData;
    decltype(&Handler::GetSectionDataPosition) m_position;
    decltype(&Handler::LoadSectionData) m_load;
    alignas(Handler) std::byte m_object[sizeof(Handler)];
};

}  // namespace stmdcm
