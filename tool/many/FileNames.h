#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "source_utilities/PosixFile.h"

namespace stmdcm {

/// The names of the files to work on: those of the command line, and behind them those of a list, which is read as it
/// comes and never kept.
class FileNames {
  public:
    /// No longer name is taken: nor does the system (PATH_MAX).
    static constexpr std::size_t kLongest = 4096;

    /// `list` is a file with a name a line, or with a zero byte behind each where `isZeroEnded`; "-" is standard
    /// input, empty none. Throws Failure where it can't be opened.
    FileNames(std::vector<std::string> named, const std::string& list, bool isZeroEnded);

    /// Nothing at the end. Waits for the list. Throws Failure where that can't be read.
    std::optional<std::string> Next();

    /// Whether Next would not wait.
    bool IsReady() const;
    /// Waits until the list, or else `descriptor`, can be read; reads some of the list then. False: of the other.
    bool WaitFor(int descriptor);

    /// How many there are in all, where that can be known before the end.
    std::optional<std::uint64_t> Total() const;

  private:
    int Descriptor() const;
    std::optional<std::string> TakeFromList();
    std::string Checked(std::string name) const;
    [[noreturn]] void FailAsTooLong() const;
    void ReadSome();

    std::vector<std::string> m_named;
    std::size_t m_taken = 0;  ///< of those
    std::string m_list;
    char m_end;
    ZU_WEP::PosixFile m_file;  ///< closed: standard input
    bool m_isListOver;
    std::string m_buffer;
    std::size_t m_begin = 0;  ///< of what was not taken of the buffer
};

}  // namespace stmdcm
