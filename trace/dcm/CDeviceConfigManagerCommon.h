#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/CDeviceIdentifier.h"
#include "host/CPUInfo.h"
#include "host/CTraceFactory.h"
#include "source_utilities/uDll.h"
#include "trace/dcm/FILE_Info.h"
#include "trace/dcm/StmDeviceConfigManagerIF.h"

namespace Zu::Wep::Trace {

class CaptureSave;
class OpenCapture;
struct SectionToSave;

/// The device-independent half of every manager: the object files of the target's CPUs, the section "DCM_COMMON"
/// that keeps them in a capture (docs/object-files.md), and the connection to the live system.
/// The order of the data members is part of the binary interface.
class CDeviceConfigManagerCommon : public StmDeviceConfigManagerIF {
  public:
    CDeviceConfigManagerCommon();
    /// Borrows both for its whole life; either may be null. Prepares the trace environment and the log.
    CDeviceConfigManagerCommon(CPUInfo* cpu, CDeviceIdentifier* id);
    CDeviceConfigManagerCommon(const CDeviceConfigManagerCommon&) = delete;
    CDeviceConfigManagerCommon& operator=(const CDeviceConfigManagerCommon&) = delete;
    /// Gives the live connection back.
    ~CDeviceConfigManagerCommon() override;

    void RegisterEventHandler(CDeviceConfigEvents* handler) override;
    bool GetInfo(int& deviceId, int& cpuId, std::string& name) override;
    bool GetObjectFile(const std::string& name, std::string& objectFile) override;

    CDeviceIdentifier* GetDeviceIdentifier() const { return m_deviceIdentifier; }

    /// Appends the object files to a capture. False, with nothing written, for another `type` or a file that is no
    /// capture. Throws vornError when the capture can't be written.
    bool SaveCommonConfiguration(const std::string& fileName, eTraceDataFileType type);
    /// Replaces the object files by those of a capture, and checks them. An empty section leaves them alone.
    /// False as for saving. Throws vornError when the section can't be read.
    bool LoadCommonConfiguration(const std::string& fileName, eTraceDataFileType type);
    /// Appends the object files as the section `sectionName`; `type` is not used.
    bool SaveConfigurationLocal(const char* fileName, eTraceDataFileType type, const char* sectionName, int version);
    /// Holds the recorded files against the disk, asking the event handler about each that is missing or was
    /// modified, at most once. Stops at the first that stays without an answer. The handler may call the manager: when
    /// it has the list replaced, the check ends; when it has it grow, the new files are checked too.
    void CheckObjectFileTimeStamp();
    /// Whether the last character of `wanted` occurs in `candidate`, in any case.
    bool IsCloseMatch(const std::string& candidate, const std::string& wanted);

    /// Makes sure that there is a channel server; false when there can't be one now. May be tried again.
    bool ConnectLiveSystem();
    /// Brings the object files up to date with the live system, if connected.
    void GetLiveSystemObjectFiles();

  protected:
    /// What the host does for a save into that capture: its own part, and the live system's object files.
    void LetHostSave(const std::string& fileName, CaptureSave& save);
    /// The object files as a section; borrows the name.
    SectionToSave ObjectFilesSection(const char* name, int version);
    /// The part of LoadCommonConfiguration for a capture, which is that file.
    bool LoadObjectFiles(const std::string& fileName, OpenCapture& capture);

    CPUInfo* m_cpuInfo = nullptr;
    std::int32_t m_fallbackDeviceId = 0;
    std::int32_t m_fallbackCpuId = 0;
    CDeviceIdentifier* m_deviceIdentifier = nullptr;
    CDeviceConfigEvents* m_eventHandler = nullptr;
    std::vector<std::string> m_objectFileNames;  ///< parallel to m_objectFiles
    std::vector<FILE_Info*> m_objectFiles;       ///< owned
    CTraceFactory* m_traceFactory = nullptr;
    CChannelServer* m_channelServer = nullptr;
    ZU_WEP::uDll m_factoryLibrary;
    std::string m_objectFilePath;  ///< the path that the live system gave last
    bool m_refreshObjectFiles = false;

  private:
    bool AppendObjectFiles(CaptureSave& save, const char* sectionName, int version);
    bool ReplaceObjectFiles(std::string_view payload);
    void AddObjectFile(std::string_view name, std::string_view fileName, std::int64_t timeStamp);
    void ClearObjectFiles();
    bool CheckObjectFile(std::size_t index);
    std::string AskForObjectFile(const std::string& fileName, bool timeStampChanged);
    bool AskForListedFile(std::size_t index, bool timeStampChanged, std::string& answer);
    int FindObjectFile(const std::string& name);
    bool LoadFactoryLibrary();
    bool CreateTraceFactory();
    bool CreateChannelServer();
    void UpdateLiveObjectFile(const std::string& cpu);
    void DisconnectLiveSystem() noexcept;

    std::uint32_t m_objectFilesReplaced = 0;  ///< how often: an event handler can do so while it is asked
    std::uint32_t m_questions = 0;            ///< asked of the event handler so far
};

}  // namespace Zu::Wep::Trace
