#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "trace/format/SectionLayout.h"

namespace stmdcm_bench {

/// A file of this run, in the temporary directory, removed at its end. A failure ends the program.
class ScratchFile {
  public:
    explicit ScratchFile(const char* extension);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& Path() const { return m_path; }
    void Append(std::string_view bytes);
    void Truncate(std::uint64_t size);
    std::uint64_t Size() const { return m_size; }

  private:
    std::string m_path;
    int m_descriptor;
    std::uint64_t m_size = 0;
};

/// How the sections of a capture lie: `count` of them with `payload` bytes each, holes but for their headers.
struct CaptureShape {
    std::uint32_t count = 0;
    std::uint32_t payload = 0;
};

inline constexpr std::string_view kFillerName = "TRACE0";
inline constexpr unsigned kFillerVersion = 1;
/// The version by which the last of the fillers is found.
inline constexpr unsigned kLastVersion = 7;

std::string SectionOf(const Zu::Wep::Trace::SectionKey& key, std::string_view payload);

void FillCapture(ScratchFile& file, const CaptureShape& shape);

/// Appends the sections of a configuration with use cases.
void AppendConfiguration(ScratchFile& file);

}  // namespace stmdcm_bench
