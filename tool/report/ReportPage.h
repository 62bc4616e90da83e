#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace stmdcm {

/// Writes the page of `stmdcm report` (docs/report.md): the viewer, and in it a block for each capture, one by one.
class ReportPage {
  public:
    using Write = std::function<void(std::string_view)>;

    /// Writes the beginning.
    explicit ReportPage(Write write);

    /// `line` is a CaptureDocument's, or a failure's document; `text` is shown where scripts are not allowed.
    void Add(std::string_view line, std::string_view text);
    void End();

    std::size_t Captures() const { return m_captures; }
    std::uint64_t Size() const { return m_size; }

  private:
    void Put(std::string_view text);

    Write m_write;
    std::string m_end;
    std::size_t m_captures = 0;
    std::uint64_t m_size = 0;
};

}  // namespace stmdcm
