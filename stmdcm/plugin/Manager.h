#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "host/CPUInfo.h"
#include "stmdcm/plugin/ObjectFileQuestions.h"
#include "trace/dcm/StmDeviceConfigManagerIF.h"

namespace stmdcm {

class Plugin;

/// A manager of the plug-in together with what it borrows: the CPU and the event handler. Only virtual operations of
/// its objects are called.
class Manager {
  public:
    /// The plug-in must outlive the manager. Without `answer` every question is answered with "none".
    Manager(const Plugin& plugin, std::string cpuName, ObjectFileQuestions::Answer answer = {});
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    const std::string& CpuName() const { return m_cpuName; }
    const std::vector<ObjectFileQuestion>& Questions() const { return m_questions.Asked(); }

    bool Load(const std::string& file, Zu::Wep::Trace::eTraceDataFileType type);
    bool Save(const std::string& file, Zu::Wep::Trace::eTraceDataFileType type);
    /// From the live target, through the trace factory library that the dynamic loader finds.
    bool LoadLive();

    /// Flags are 0 or 1. Both throw Failure for a name that the plug-in does not know.
    std::int32_t Property(const std::string& name) const;
    void SetProperty(const std::string& name, std::int32_t value);

    /// The path that the manager holds for the name, empty for none.
    std::string ObjectFile(const std::string& name) const;

    Zu::Wep::Trace::UsecaseRecordIF& ScRecord() const { return *m_manager->GetUsecaseRecord(); }
    Zu::Wep::Trace::CTUsecaseRecordIF& CptRecord() const { return *m_manager->GetCTUsecaseRecord(); }
    Zu::Wep::Trace::PMIUsecaseRecordIF& PmiRecord() const { return *m_manager->GetPMIUsecaseRecord(); }

  private:
    using Interface = Zu::Wep::Trace::StmDeviceConfigManagerIF;

    std::string m_cpuName;
    Zu::Wep::Trace::CPUInfo m_cpu;
    ObjectFileQuestions m_questions;
    std::unique_ptr<Interface, std::function<void(Interface*)>> m_manager;
};

}  // namespace stmdcm
