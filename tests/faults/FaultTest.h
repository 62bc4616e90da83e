#pragma once

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/faults/FaultRun.h"

namespace stmdcm_test {

/// Whether STMDCM_SOAK is set: everything is to be tried, however long it takes.
bool IsSoak();

/// How far apart the calls are that a test hits.
inline unsigned FaultStep(unsigned usual) { return IsSoak() ? 1 : usual; }

/// A host's capture, to which no manager has saved.
std::string BareCapture();

/// Runs one program again and again on the same files, with another of its calls hit each time.
class FaultTest : public testing::Test {
  protected:
    /// `changed`: the file that is changed in place, which may be left as before or as after; empty: none.
    void Prepare(std::vector<std::string> command, Snapshot files, std::string changed);

    /// Hits each call up to `all`, then each `step`-th, and fails for what Judge says of the result, or for files
    /// neither old nor new.
    void Try(FaultPlan plan, unsigned step, unsigned all = 0);

    /// Fails for files neither old nor new after a loss of power, or old ones after one behind the program's end.
    void LosePower();

    /// Puts each trap (a link, a pipe, a device ...) in the place of each of these files, for a user without rights.
    void SpringTraps(const std::vector<std::string>& names);

    /// What is wrong with a run that did not do all of its work; empty: nothing.
    virtual std::string Judge(const FaultResult& result, const FaultPlan& plan) = 0;

    /// Whether a run that did not do its work says so, of this file.
    virtual bool Tells(const FaultResult& result, const std::string& name) const = 0;

    /// Why the next changes of a file that was left are not done or not found; empty: they are.
    virtual std::string WhatStopsWorkOn(const std::string& name);

    /// Whether the changed file reads as after the change.
    bool IsChanged();

    FaultMachine m_machine;
    FaultResult m_whole;  ///< of a run without faults
    Snapshot m_before;
    Snapshot m_after;
    /// Whether the program leaves nothing in its home and its temporary folder.
    bool m_isTidy = true;
    /// Whether what the program writes depends on the fault.
    bool m_mayChangeFiles = false;

  private:
    FaultResult RunAnew(const FaultPlan& plan) const;
    void LosePowerDuring(unsigned subsets, std::mt19937& random);
    std::string Meaning(const std::string& name, const std::string& bytes);
    std::string WhatIsWrongWithFiles(bool mayClean);
    std::string WhatIsWrongWith(const std::string& name, const std::string& bytes);

    std::vector<std::string> m_command;
    std::string m_changed;
    std::map<std::string, std::string> m_meanings;
    std::string m_oldMeaning;
    std::string m_newMeaning;
    std::set<std::string> m_told;
};

}  // namespace stmdcm_test
