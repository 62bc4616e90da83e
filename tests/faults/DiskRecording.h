#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/faults/FaultPlan.h"
#include "tests/faults/FaultRun.h"

namespace stmdcm_test {

/// What a loss of power leaves of a folder while a program works in it: the program's changes are recorded, and what a
/// disk may have of them is made anew. A file has what was written before its last sync, and any sectors and sizes of
/// the rest; a folder has its names as of its last sync and, in their order, some of those that followed.
class DiskRecording {
  public:
    /// Runs the program, in a folder with these files.
    DiskRecording(const FaultMachine& machine, const Snapshot& files, const std::vector<std::string>& command);

    std::size_t Changes() const { return m_changes.size(); }

    /// The folder's files when the power goes after so many changes, `lucky` of 100 of which reach the disk unsynced.
    Snapshot After(std::size_t changes, unsigned lucky, std::mt19937& random) const;

  private:
    struct Change : DiskChange {
        std::string bytes;
        std::size_t synced = ~std::size_t{0};  ///< the change that makes it last
    };

    struct Disk {
        std::map<std::string, std::uint64_t> names;
        std::map<std::uint64_t, std::string> files;
        std::set<std::uint64_t> late;  ///< folders that are behind their names' changes
    };

    void Rename(Disk& disk, const Change& change) const;

    std::string m_folder;
    Disk m_before;
    std::vector<Change> m_changes;
};

}  // namespace stmdcm_test
