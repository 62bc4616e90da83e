#pragma once

#include <string>
#include <vector>

#include "host/CChannelDriver.h"

namespace Zu::Wep::Trace {

/// Knows the CPUs of the live system. Made and destroyed by the trace factory; failures are exceptions.
class CChannelServer {
  public:
    /// Sets `objectFile` to the path of the program image loaded on the CPU named `cpu`.
    virtual void GetObjectFile(const std::string& cpu, std::string& objectFile) = 0;

    /// Sets `driver` to the channel driver of the CPU named `cpu`; the server goes on owning it.
    virtual void GetChannelDriver(const std::string& cpu, CChannelDriver*& driver) = 0;

    /// Sets `cpus` to the names of the CPUs.
    virtual void ListCPUs(std::vector<std::string>& cpus) = 0;

  protected:
    ~CChannelServer() = default;
};

}  // namespace Zu::Wep::Trace
