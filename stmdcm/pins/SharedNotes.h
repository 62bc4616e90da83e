#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "source_utilities/PosixFile.h"

namespace stmdcm {

/// Notes that a process and those that are forked off from it leave each other, so that none does what another has
/// done. They lie in memory alone. Where the system fails nothing is passed on. For one thread at a time, but for Turn.
class SharedNotes {
  public:
    /// Throws Failure where there is no memory for them.
    SharedNotes();

    /// While it lives no other process has one for this subject; it ends with the process, however that ends.
    class Turn {
      public:
        Turn(const SharedNotes& notes, std::uint64_t subject);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

      private:
        const ZU_WEP::PosixFile& m_file;
        std::uint64_t m_place;
    };

    void Leave(std::string_view note);
    /// What others have left since the last call.
    std::vector<std::string> Take();

  private:
    void Read();

    ZU_WEP::PosixFile m_file;
    std::uint64_t m_end;  ///< of what was read
    std::vector<std::string> m_notes;
};

}  // namespace stmdcm
