#include "trace/dcm/StmDeviceConfigManager.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "host/vorn/vornError.h"
#include "source_utilities/Log.h"
#include "source_utilities/PosixFile.h"
#include "source_utilities/ReplaceFile.h"
#include "trace/dcm/EnvironmentVariables.h"
#include "trace/dcm/PropertyValue.h"
#include "trace/dcm/TraceEnvironment.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/SettingsText.h"
#include "trace/format/StmSections.h"
#include "trace/tdf/CaptureSave.h"
#include "trace/tdf/OpenCapture.h"

namespace Zu::Wep::Trace {

namespace {

constexpr char kDefaultConfigFileName[] = "STM_Config.txt";
constexpr char kConfigFileNameEnd[] = "-STMCfg.txt";
constexpr char kSettingsExtension[] = ".dcm";
constexpr char kConstantProperty[] = "CycleModeDelta";  ///< always true, never stored

/// Beside that of the common half, which every manager prepares first: each has its own (trace/dcm/TraceEnvironment.h).
TraceEnvironment stmEnvironment;

/// Most names of a device identification are no properties.
ApplyProperty Applier(StmDeviceConfigManager& manager) {
    return [&manager](std::string_view name, std::string_view value) {
        return manager.ExtractValue(std::string(name), std::string(value));
    };
}

/// Tells the log what of a settings text is not read (docs/log.md).
struct SettingsLog final : TextReporter {
    explicit SettingsLog(const std::string& name) : source(name) {}
    void OnLineCut(std::size_t line, std::size_t /*length*/, std::size_t limit) override {
        ZU_WEP::Log(ZU_WEP::LogError, "STM Device DCM: %s line %zu is longer than %zu characters, the rest is skipped",
                    source.c_str(), line, limit);
    }

    const std::string& source;
};

std::string ConfigFileName(const CPUInfo* cpu) {
    if (cpu == nullptr) {
        return kDefaultConfigFileName;
    }
    std::string name = cpu->name != nullptr ? cpu->name : "";
    std::replace(name.begin(), name.end(), '/', '-');
    return name + kConfigFileNameEnd;
}

void TellFailure(const char* what, const std::string& path, int error) {
    ZU_WEP::Log(ZU_WEP::LogError, "STM Device DCM: %s %s: %s", path.c_str(), what, ZU_WEP::ErrnoText(error).c_str());
}

}  // namespace

StmDeviceConfigManager::StmDeviceConfigManager(CPUInfo* cpu, CDeviceIdentifier* id)
    : CDeviceConfigManagerCommon(cpu, id), m_configFileName(ConfigFileName(cpu)) {
    stmEnvironment.Prepare();
    if (cpu == nullptr) {
        return;
    }
    try {
        StmDeviceConfigManager::LoadConfiguration(m_configFileName, TRACE_DATA_FILE_LIVE);
    } catch (const std::logic_error&) {
        // No settings directory, so no settings file: the defaults stay.
    }
}

StmDeviceConfigManager::~StmDeviceConfigManager() = default;

bool StmDeviceConfigManager::GetProperty(const std::string& name, ConfigPropertyValue& value) {
    if (name == kConstantProperty) {
        SetBoolean(value, true);
        return true;
    }
    const StmProperty* property = FindStmProperty(name);
    if (property == nullptr) {
        // Readers of logs know it by this spelling (docs/log.md).
        ZU_WEP::Log(ZU_WEP::LogError, "STM Local DCM: GetProperty failed Proerty Name = %s.", name.c_str());
        return false;
    }
    GetValue(m_properties, *property, value);
    return true;
}

bool StmDeviceConfigManager::SetSTMProperty(const std::string& name, ConfigPropertyValue& value) {
    const StmProperty* property = FindStmProperty(name);
    if (property == nullptr) {
        return false;
    }
    SetFromValue(m_properties, *property, value);
    return true;
}

std::string StmDeviceConfigManager::GetLastError() const { return {}; }

UsecaseRecord* StmDeviceConfigManager::GetUsecaseRecord() { return &m_usecases.sc; }

CTUsecaseRecord* StmDeviceConfigManager::GetCTUsecaseRecord() { return &m_usecases.cpt; }

PMIUsecaseRecord* StmDeviceConfigManager::GetPMIUsecaseRecord() { return &m_usecases.pmi; }

bool StmDeviceConfigManager::LoadConfiguration(const std::string& fileName, eTraceDataFileType type) {
    switch (type) {
        case TRACE_DATA_FILE_TDF:
            try {
                OpenCapture capture(fileName, {kCommonSection, kDeviceSection, kStmSection});
                return LoadObjectFiles(fileName, capture) && LoadStmSections(fileName, capture);
            } catch (const Vorn::vornErrorIF& error) {
                return FailFileWork(fileName, error);
            }
        case TRACE_DATA_FILE_LIVE:
            return LoadSTMConfigurationLive(fileName);
        case TRACE_DATA_FILE_LOCAL:
            m_retrievalEnabled = false;
            return LoadSTMConfiguration(fileName);
        default:
            return false;
    }
}

bool StmDeviceConfigManager::SaveConfiguration(const std::string& fileName, eTraceDataFileType type) {
    try {
        switch (type) {
            case TRACE_DATA_FILE_TDF:
                return SaveIntoCapture(fileName);
            case TRACE_DATA_FILE_LIVE:
            case TRACE_DATA_FILE_TYPE_2:
            case TRACE_DATA_FILE_LOCAL: {
                const std::string path = SettingsPath(fileName);
                if (m_deviceIdentifier != nullptr) {
                    m_deviceIdentifier->SaveToFile(path, TRACE_DATA_FILE_LOCAL);  // host/CDeviceIdentifier.h
                }
                return SaveSTMConfigurationLive(path);
            }
            default:
                return false;
        }
    } catch (const Vorn::vornErrorIF& error) {  // also of the host's own part
        return FailFileWork(fileName, error);
    }
}

void StmDeviceConfigManager::SaveAllConfiguration() {
    if (m_cpuInfo != nullptr) {
        SaveConfiguration(ConfigFileName(m_cpuInfo), TRACE_DATA_FILE_LIVE);
    }
}

void StmDeviceConfigManager::RetrieveAllConfiguration() {
    if (!m_retrievalEnabled || m_cpuInfo == nullptr) {
        return;
    }
    m_usecases.ForEach([](auto& record) { record.CleaupUsecases(false); });
    LoadConfiguration(ConfigFileName(m_cpuInfo), TRACE_DATA_FILE_LIVE);
}

void StmDeviceConfigManager::OutputParametersToBuffer(std::string& out) {
    AppendPropertyLines(m_properties, out);
    ZU_WEP::LogAbove(2, ZU_WEP::LogInformation, "OutputParametersToBuffer is done.");
}

bool StmDeviceConfigManager::ExtractValue(const std::string& name, const std::string& value) {
    ZU_WEP::Log(ZU_WEP::LogInformation, "STM Device DCM: ExtractValue: name=\"%s\", value=\"%s\"", name.c_str(),
                value.c_str());
    const bool isProperty = SetFromText(m_properties, name, value);
    if (!isProperty) {
        ZU_WEP::Log(ZU_WEP::LogError, "STM Device DCM: extracting fail: name = %s, value = %s", name.c_str(),
                    value.c_str());
    }
    return isProperty;
}

void StmDeviceConfigManager::PackOneLineMetaData(std::string& out, char* line) { UnfoldPackedBlock(out, line); }

bool StmDeviceConfigManager::FailFileWork(const std::string& fileName, const std::exception& error) {
    m_errorText = error.what();
    ZU_WEP::Log(ZU_WEP::LogError, "STM Device DCM: %s: %s", fileName.c_str(), error.what());
    return false;
}

std::string StmDeviceConfigManager::ConfigurationText() {
    std::string text;
    OutputParametersToBuffer(text);
    m_usecases.ForEach([&text](const auto& record) { record.SaveAllRecords(text); });
    return text;
}

bool StmDeviceConfigManager::LoadSTMConfiguration(const std::string& path) {
    const ZU_WEP::PosixFile file = ZU_WEP::PosixFile::OpenAtOnce(path.c_str(), O_RDONLY);
    if (!file.IsOpen()) {
        const int error = errno;
        ZU_WEP::Log(ZU_WEP::LogError, "STM Device DCM: LoadSTMConfiguration fail to open file: %s", path.c_str());
        if (error != ENOENT) {
            TellFailure("can't be opened", path, error);
        }
        return false;
    }
    std::string content;
    const auto end = file.ReadToEnd(content, kMaxSettingsFileSize);
    if (end == ZU_WEP::PosixFile::ReadEnd::Limit) {
        ZU_WEP::Log(ZU_WEP::LogError, "STM Device DCM: %s is longer than %zu bytes, the rest is not read", path.c_str(),
                    kMaxSettingsFileSize);
    }
    if (end == ZU_WEP::PosixFile::ReadEnd::Failure) {
        TellFailure("can't be read", path, errno);
    }
    SettingsLog log(path);
    const SettingsText text(std::move(content), kFileLineLimits, Applier(*this), &log);
    if (end != ZU_WEP::PosixFile::ReadEnd::Failure) {
        m_usecases.Read(text.Blocks(), nullptr);
    }
    return end == ZU_WEP::PosixFile::ReadEnd::EndOfFile && text.IsClean();
}

bool StmDeviceConfigManager::LoadSTMConfigurationLive(const std::string& name) {
    if (name.empty()) {
        return false;
    }
    std::string path = SettingsPath(name);
    if (path.find(kSettingsExtension) == std::string::npos) {  // anywhere, in the directory too (docs/settings-text.md)
        path += kSettingsExtension;
    }
    return LoadSTMConfiguration(path);
}

bool StmDeviceConfigManager::SaveSTMConfigurationLive(const std::string& name) {
    if (name.empty()) {
        return false;
    }
    ZU_WEP::Log(ZU_WEP::LogInformation, "STM Device DCM: SaveSTMConfigurationLive %s", name.c_str());
    // Unlike the reader, the writer does not look whether the extension is there already (docs/settings-text.md).
    bool isOpen = false;
    try {
        const std::string path = name + kSettingsExtension;
        const auto result = ZU_WEP::ReplaceFile(path, [this, &isOpen] {
            isOpen = true;
            return ConfigurationText();
        });
        if (result == ZU_WEP::ReplaceResult::CannotOpen) {  // no failure (docs/host-guide.md)
            const int error = errno;
            ZU_WEP::Log(ZU_WEP::LogUnexpected, "STM Device DCM: SaveSTMConfigurationLive can't open %s: %s",
                        path.c_str(), ZU_WEP::ErrnoText(error).c_str());
        }
        if (result != ZU_WEP::ReplaceResult::Failed) {
            return true;
        }
        TellFailure("can't be written", path, errno);
    } catch (const std::exception&) {  // what there is to throw is want of memory
        ZU_WEP::Log(ZU_WEP::LogError, "STM Device DCM: %s%s can't be written: Cannot allocate memory", name.c_str(),
                    kSettingsExtension);
    }
    m_errorText = isOpen ? "Failed to write file" : "Failed to open file";
    ZU_WEP::Log(ZU_WEP::LogError, "STM Device DCM: SaveSTMConfigurationLive fail to write buffer to file");
    return false;
}

SectionToSave StmDeviceConfigManager::ConfigurationSection() {
    return {kStmSectionName, kStmSectionVersion, ConfigurationText()};
}

bool StmDeviceConfigManager::SaveIntoCapture(const std::string& path) {
    CaptureSave save(path);
    LetHostSave(path, save);
    if (save.Open() != SaveTarget::Capture) {
        return false;
    }
    save.Append({ObjectFilesSection(kCommonSectionName, kCommonSectionVersion), ConfigurationSection()});
    return true;
}

bool StmDeviceConfigManager::SaveSTMConfigurationToTDF(const std::string& path) {
    try {
        CaptureSave save(path);
        const SaveTarget target = save.Open();
        if (target != SaveTarget::Capture) {
            return IsQuietlySaved(target);
        }
        save.Append({ConfigurationSection()});
        return true;
    } catch (const Vorn::vornErrorIF& error) {
        return FailFileWork(path, error);
    }
}

bool StmDeviceConfigManager::LoadSTMConfigurationFromTDF(const std::string& path) {
    OpenCapture capture(path, {kDeviceSection, kStmSection});
    return LoadStmSections(path, capture);
}

bool StmDeviceConfigManager::LoadStmSections(const std::string& path, OpenCapture& capture) {
    if (!capture.IsTDF()) {
        return false;
    }
    try {
        ReadDeviceText(capture.Read(kDeviceSection), Applier(*this), nullptr);
        const SettingsText text(capture.Read(kStmSection), LineLimits{}, Applier(*this), nullptr);
        m_usecases.Read(text.Blocks(), nullptr);
        return true;
    } catch (const Vorn::vornErrorIF& error) {
        return FailFileWork(path, error);
    }
}

}  // namespace Zu::Wep::Trace
