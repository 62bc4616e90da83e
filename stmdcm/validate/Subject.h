#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "stmdcm/validate/Host.h"
#include "trace/dcm/StmDeviceConfigManagerIF.h"

namespace stmdcm::validate {

/// What hosts call of a manager.
using ManagerInterface = Zu::Wep::Trace::StmDeviceConfigManagerIF;

/// The property that questions change where any will do; 1 by default.
inline constexpr char kAtbId[] = "STM_ATB_Id";
inline constexpr char kCpuName[] = "Core_0/Cluster";

/// The host's half of a capture or settings file. Does what it is told, and notes the calls: "save NAME TYPE".
class Identifier final : public Zu::Wep::Trace::CDeviceIdentifier {
  public:
    bool SaveToFile(const std::string& fileName, Zu::Wep::Trace::eTraceDataFileType type) override;
    bool LoadFromFile(const std::string& fileName, Zu::Wep::Trace::eTraceDataFileType type) override;

    std::vector<std::string> calls;
    std::function<void()> inside;
    bool result = true;
};

/// Answers questions about object files, and notes them: "missing FILE" or "changed FILE".
class Handler final : public Zu::Wep::Trace::CDeviceConfigEvents {
  public:
    /// Every question gets that answer; "=": the file that it is about.
    explicit Handler(std::string given = "") : answer(std::move(given)) {}
    void OnUpdateObjectFile(const std::string& file, bool timeStampChanged, std::string& newFile) override;

    std::string answer;
    std::vector<std::string> asked;
    std::string cameIn;            ///< what stood in the answers' place
    std::function<void()> inside;  ///< done within the first question
};

/// A manager of the library under question, made as a host makes one, and destroyed at the end.
class Subject {
  public:
    explicit Subject(Host& host, const std::string& cpu = kCpuName, Identifier* identifier = nullptr);
    Subject(Subject&& other) noexcept = default;
    Subject& operator=(Subject&& other) noexcept = default;
    ~Subject() { End(); }

    void End();
    ManagerInterface* operator->() const { return m_manager; }
    const Zu::Wep::Trace::CPUInfo& Cpu() const { return m_borrowed->cpu; }

    Zu::Wep::Trace::UsecaseRecordIF& Sc() const { return *m_manager->GetUsecaseRecord(); }
    Zu::Wep::Trace::CTUsecaseRecordIF& Cpt() const { return *m_manager->GetCTUsecaseRecord(); }
    Zu::Wep::Trace::PMIUsecaseRecordIF& Pmi() const { return *m_manager->GetPMIUsecaseRecord(); }

    /// Of a property that there is; flags are 0 or 1.
    std::int32_t Number(const std::string& property) const;
    /// Through the union's integer.
    bool Set(const std::string& property, std::int32_t number) const;

    bool Load(const std::string& path) const;
    bool LoadCapture(const std::string& bytes) const { return Load(m_host->Write("loaded.tdf", bytes)); }
    bool LoadText(const std::string& text) const;
    /// The capture after a save into it, which must be true.
    std::string SavedInto(const std::string& bytes) const;
    /// All but the object files, as it is saved.
    std::string Text() const;
    /// The path of the object file; "(none)".
    std::string Image(const std::string& name) const;
    /// The object files as a save writes them: "name file time", without the files' folder.
    std::vector<std::string> Images() const;

  private:
    struct Borrowed {
        std::string name;
        Zu::Wep::Trace::CPUInfo cpu;
    };

    Host* m_host;
    std::unique_ptr<Borrowed> m_borrowed;
    ManagerInterface* m_manager;
};

}  // namespace stmdcm::validate
