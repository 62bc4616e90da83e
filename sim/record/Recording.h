#pragma once

#include <list>
#include <set>
#include <string>
#include <vector>

#include "host/CChannelDriver.h"
#include "sim/record/Steps.h"

namespace stmdcm_sim {

/// Of one CPU, whatever calls named it.
struct RecordedCpu {
    std::string name;
    Steps objectFileFailures;
    std::vector<std::string> objectFiles;
    Steps driverFailures;
    std::vector<std::pair<std::string, Steps>> attributes;

    Steps& Attribute(const std::string& attribute);
};

/// What a trace factory answered, as a scenario that plays it again.
class Recording {
  public:
    using Json = Steps::Json;

    Steps factoryFailures;
    Steps serverFailures;
    Steps serverEndFailures;
    Steps listFailures;

    /// The one called so, which comes into being.
    RecordedCpu& Cpu(const std::string& name);
    /// What listing the CPUs gave.
    void AddList(const std::vector<std::string>& names);
    /// Adds what no scenario can say, a sentence.
    void Remark(const std::string& sentence) { m_remarks.insert(sentence); }

    /// Replaces the file. Standard error is told when that can't be done.
    void Write(const std::string& path) const;

  private:
    Json Scenario() const;
    std::vector<const RecordedCpu*> ListedFirst() const;

    std::list<RecordedCpu> m_cpus;  ///< the addresses stay
    std::vector<std::vector<std::string>> m_lists;
    std::set<std::string> m_remarks;
};

/// A failure step for what is being handled.
Steps::Json StepOfException();
Steps::Json StepOfSuccess();
Steps::Json StepOfNothing();

}  // namespace stmdcm_sim
