#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <exception>
#include <string>

#include "trace/dcm/CDeviceConfigManagerCommon.h"
#include "trace/format/StmProperties.h"
#include "trace/usecase/UsecaseRecords.h"

namespace Zu::Wep::Trace {

/// The manager of an STM's configuration: its properties (docs/settings-text.md) and three records of use cases.
/// Hosts that load the plug-in reach it through StmDeviceConfigManagerIF; this header is for the library itself and for
/// programs that link it statically.
/// The order of virtual operations and of data members is part of the binary interface.
class StmDeviceConfigManager : public CDeviceConfigManagerCommon {
  public:
    /// Loads the settings file of `cpu`, if there is one.
    StmDeviceConfigManager(CPUInfo* cpu, CDeviceIdentifier* id);
    ~StmDeviceConfigManager() override;

    bool LoadConfigurationLive() override;
    bool LoadConfiguration(const std::string& fileName, eTraceDataFileType type) override;
    bool SaveConfiguration(const std::string& fileName, eTraceDataFileType type) override;
    bool GetProperty(const std::string& name, ConfigPropertyValue& value) override;
    std::string GetLastError() const override;

    bool SetSTMProperty(const std::string& name, ConfigPropertyValue& value) override;
    void SaveAllConfiguration() override;
    void RetrieveAllConfiguration() override;
    UsecaseRecord* GetUsecaseRecord() override;
    CTUsecaseRecord* GetCTUsecaseRecord() override;
    PMIUsecaseRecord* GetPMIUsecaseRecord() override;

    /// Appends the property lines of the settings text.
    void OutputParametersToBuffer(std::string& out);
    /// Sets the property `name` from its text; false, with a log line, when there is none.
    bool ExtractValue(const std::string& name, const std::string& value);
    /// Appends the one-line block in `line`, which it changes, as a block of lines.
    void PackOneLineMetaData(std::string& out, char* line);

    /// Reads a settings text. See LoadConfiguration for the result.
    bool LoadSTMConfiguration(const std::string& path);
    /// Reads the settings file `name` of the trace settings directory, "`.dcm`" added unless the path holds it.
    bool LoadSTMConfigurationLive(const std::string& name);
    /// Replaces the settings file `name` + ".dcm", a whole path (docs/settings-text.md). True also, with nothing
    /// written and a line in the log, when it can't be opened.
    bool SaveSTMConfigurationLive(const std::string& name);
    /// Reads the sections "DEVID" and "STMDECODERINFO" of a capture; one that is missing, or empty, is a failure.
    bool LoadSTMConfigurationFromTDF(const std::string& path);
    /// Appends the section "STMDECODERINFO" to a capture; true, with nothing written, when `path` is no capture.
    bool SaveSTMConfigurationToTDF(const std::string& path);

  private:
    /// Keeps the error's text and logs it, since GetLastError tells nothing; gives false.
    bool FailFileWork(const std::string& fileName, const std::exception& error);
    std::string ConfigurationText();
    SectionToSave ConfigurationSection();
    bool SaveIntoCapture(const std::string& path);
    bool LoadStmSections(const std::string& path, OpenCapture& capture);
    void FindChannelDriver();

    std::string m_errorText;  ///< why the last file operation failed; GetLastError does not give it
    StmProperties m_properties;
    UsecaseRecords m_usecases;
    bool m_retrievalEnabled = true;
    std::string m_configFileName;
    CChannelDriver* m_channelDriver = nullptr;  ///< owned by the channel server
};

}  // namespace Zu::Wep::Trace
