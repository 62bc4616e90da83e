#pragma once

#include <unistd.h>

#include <map>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"

namespace stmdcm_test {

/// What is to happen to a program that runs under the shim.
struct FaultPlan {
    std::string mode = "count";  ///< count, fail, kill, short, cut, alloc or record
    unsigned n = 0;              ///< the call that is hit, from 1
    int error = 5;               ///< which calls can be hit follows from it
    bool onwards = false;        ///< every call from the n-th on
};

struct FaultResult {
    int status = -1;  ///< as a shell tells it: 128 + signal for a program that was killed
    std::string out;
    std::string error;
    unsigned calls = 0;  ///< that the plan could have hit
    bool isHit = false;
    std::string hit;  ///< the call and its file

    bool operator==(const FaultResult& other) const { return status == other.status && out == other.out; }
};

/// The contents of a folder's files by name; links and folders by what they are.
using Snapshot = std::map<std::string, std::string>;

inline bool Holds(const Snapshot& files, const std::string& name, const std::string& bytes) {
    const auto file = files.find(name);
    return file != files.end() && file->second == bytes;
}

/// A user's machine of its own: a folder to work in, a home and a temporary folder.
class FaultMachine {
  public:
    FaultMachine();

    /// "NAME=VALUE", for every program, before what a machine has.
    void AddVariable(const std::string& variable) { m_more.push_back(variable); }
    /// From now on programs run as a user without rights, to whom the machine's folders belong.
    void LeaveRoot() { m_isUnprivileged = ::geteuid() == 0; }
    /// Runs a program in the folder, with the shim and the plan.
    FaultResult Run(const std::vector<std::string>& command, const FaultPlan& plan = {}) const;
    /// What the last run with the mode "record" changed on disk: DiskChange after DiskChange.
    std::string Recording() const;
    /// Puts the folder's files back as they were given, and removes everything else.
    void Reset(const Snapshot& files) const;
    Snapshot Files() const;
    /// What lies in the home and the temporary folder.
    Snapshot Left() const;

    std::string Folder() const { return m_root / "work"; }
    /// Another's folder, and its files.
    std::string ForeignFolder() const { return m_root / "foreign"; }
    Snapshot ForeignFiles() const;

  private:
    void Give(const std::string& folder) const;

    ScratchDir m_root{MemoryDirectory()};
    std::string m_report;
    std::vector<std::string> m_environment;
    std::vector<std::string> m_more;
    bool m_isUnprivileged = false;
};

}  // namespace stmdcm_test
