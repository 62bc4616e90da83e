#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

/// The names of the files to work on: those of the command line, and behind them those of a list, which is read as it
/// comes and never kept.
class FileNames {
  public:
    /// `list` is a file with a name a line, or with a zero byte behind each where `isZeroEnded`; "-" is standard
    /// input, empty none. Throws Failure where it can't be opened.
    /// The list is not waited for any more as soon as the descriptor `stop` can be read.
    FileNames(std::vector<std::string> named, const std::string& list, bool isZeroEnded, int stop = -1);

    /// Nothing at the end, where the list can't be read on, and when there was a stop. Waits for the list. May be no
    /// possible name; one that is too long comes without its end.
    std::optional<std::string> Next();
    /// Why the list could not be read to its end, if it could not.
    const std::optional<Failure>& WhyUnread() const { return m_whyUnread; }

    /// Whether Next would not wait.
    bool IsReady() const;
    /// Waits until the list, or else `descriptor`, can be read, or for a stop; reads some of the list then. False: it
    /// was not the list.
    bool WaitFor(int descriptor);

    /// How many there are in all, where that can be known before the end.
    std::optional<std::uint64_t> Total() const;

  private:
    int Descriptor() const;
    std::optional<std::string> TakeFromList();
    void ReadSome();

    std::vector<std::string> m_named;
    std::size_t m_taken = 0;  ///< of those
    std::string m_list;
    char m_end;
    int m_stop;
    ZU_WEP::PosixFile m_file;  ///< closed: standard input
    bool m_isListOver;
    std::string m_buffer;
    std::size_t m_begin = 0;  ///< of what was not taken of the buffer
    std::optional<Failure> m_whyUnread;
};

}  // namespace stmdcm
