#include "trace/dcm/CDeviceConfigManagerCommon.h"

#include <fcntl.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <utility>

#include "source_utilities/Log.h"
#include "source_utilities/PosixFile.h"
#include "trace/dcm/ModificationTime.h"
#include "trace/dcm/TraceEnvironment.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/tdf/CaptureSave.h"
#include "trace/tdf/OpenCapture.h"

namespace Zu::Wep::Trace {

namespace {

TraceEnvironment environment;

bool CanBeRead(const std::string& path) {
    // Not blocking, so that a recorded path that is a pipe by now can't stop the host.
    return ZU_WEP::PosixFile::Open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY).IsOpen();
}

std::string UpperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

}  // namespace

CDeviceConfigManagerCommon::CDeviceConfigManagerCommon() : CDeviceConfigManagerCommon(nullptr, nullptr) {}

CDeviceConfigManagerCommon::CDeviceConfigManagerCommon(CPUInfo* cpu, CDeviceIdentifier* id)
    : m_cpuInfo(cpu), m_deviceIdentifier(id), m_factoryLibrary(nullptr, -1) {
    TraceEnvironment::ManagerBegins();
    environment.Prepare();
}

CDeviceConfigManagerCommon::~CDeviceConfigManagerCommon() {
    DisconnectLiveSystem();
    ClearObjectFiles();
    TraceEnvironment::ManagerEnds();
}

void CDeviceConfigManagerCommon::RegisterEventHandler(CDeviceConfigEvents* handler) { m_eventHandler = handler; }

bool CDeviceConfigManagerCommon::GetInfo(int& deviceId, int& cpuId, std::string& name) {
    if (m_cpuInfo == nullptr) {
        deviceId = m_fallbackDeviceId;
        cpuId = m_fallbackCpuId;
        return true;
    }
    deviceId = m_cpuInfo->deviceId;
    cpuId = m_cpuInfo->cpuId;
    name = m_cpuInfo->name != nullptr ? m_cpuInfo->name : "";
    return true;
}

bool CDeviceConfigManagerCommon::SaveCommonConfiguration(const std::string& fileName, eTraceDataFileType type) {
    if (type != TRACE_DATA_FILE_TDF) {
        return false;
    }
    CaptureSave save(fileName);
    LetHostSave(fileName, save);
    return AppendObjectFiles(save, kCommonSectionName, kCommonSectionVersion);
}

void CDeviceConfigManagerCommon::LetHostSave(const std::string& fileName, CaptureSave& save) {
    save.PrepareForHost();
    if (m_refreshObjectFiles) {
        GetLiveSystemObjectFiles();
    }
    if (m_deviceIdentifier != nullptr) {
        m_deviceIdentifier->SaveToFile(fileName, TRACE_DATA_FILE_TDF);
    }
}

bool CDeviceConfigManagerCommon::SaveConfigurationLocal(const char* fileName, [[maybe_unused]] eTraceDataFileType type,
                                                        const char* sectionName, int version) {
    const std::string path = fileName != nullptr ? fileName : "";
    CaptureSave save(path);
    return AppendObjectFiles(save, sectionName, version);
}

bool CDeviceConfigManagerCommon::AppendObjectFiles(CaptureSave& save, const char* sectionName, int version) {
    if (save.Open() != SaveTarget::Capture) {
        return false;
    }
    save.Append({ObjectFilesSection(sectionName, version)});
    return true;
}

SectionToSave CDeviceConfigManagerCommon::ObjectFilesSection(const char* name, int version) {
    SectionToSave section{name != nullptr ? name : "", static_cast<std::uint32_t>(version), ""};
    for (std::size_t i = 0; i < m_objectFiles.size(); ++i) {
        m_objectFilePath.clear();  // classes that derive from this one find the path empty after a save
        if (!m_objectFiles[i]->fileName.empty()) {
            AppendObjectFileEntry(section.payload,
                                  {m_objectFileNames[i], m_objectFiles[i]->fileName, m_objectFiles[i]->timeStamp});
        }
    }
    return section;
}

bool CDeviceConfigManagerCommon::LoadCommonConfiguration(const std::string& fileName, eTraceDataFileType type) {
    OpenCapture capture(fileName);
    return type == TRACE_DATA_FILE_TDF && LoadObjectFiles(fileName, capture);
}

bool CDeviceConfigManagerCommon::LoadObjectFiles(const std::string& fileName, OpenCapture& capture) {
    if (!capture.IsTDF()) {
        return false;
    }
    if (capture.PayloadLength(kCommonSection) == 0) {
        return true;  // the object files known so far stay, unchecked
    }
    if (!ReplaceObjectFiles(capture.Read(kCommonSection))) {
        ZU_WEP::Log(ZU_WEP::LogUnexpected, "DCM: %s: section %s ends within an object file, %zu whole ones are kept",
                    fileName.c_str(), kCommonSectionName, m_objectFiles.size());
    }
    const std::uint32_t before = m_questions;
    CheckObjectFileTimeStamp();
    if (m_deviceIdentifier != nullptr) {
        m_deviceIdentifier->LoadFromFile(fileName, TRACE_DATA_FILE_TDF);
    }
    if (m_deviceIdentifier != nullptr || m_questions != before) {
        capture.HostWasCalled();
    }
    return true;
}

/// False when the payload ends within an entry.
bool CDeviceConfigManagerCommon::ReplaceObjectFiles(std::string_view payload) {
    ClearObjectFiles();
    return ReadObjectFileEntries(payload, [this](auto name, auto fileName, std::int64_t timeStamp) {
        AddObjectFile(name, fileName, timeStamp);
    });
}

void CDeviceConfigManagerCommon::CheckObjectFileTimeStamp() {
    for (std::size_t i = 0; i < m_objectFiles.size(); ++i) {
        if (m_objectFiles[i] == nullptr || !CheckObjectFile(i)) {
            return;
        }
    }
}

/// False stops the whole check, not only that of this file (docs/object-files.md, "Reading").
bool CDeviceConfigManagerCommon::CheckObjectFile(std::size_t index) {
    if (m_objectFiles[index]->fileName.empty()) {
        return false;
    }
    std::string answer;
    const bool asked = !CanBeRead(m_objectFiles[index]->fileName);
    if (asked) {
        if (!AskForListedFile(index, false, answer)) {
            return false;
        }
        m_objectFiles[index]->fileName = std::exchange(answer, {});
    }
    const auto modified = ModificationTime(m_objectFiles[index]->fileName);
    if (!modified) {
        return false;
    }
    if (*modified == m_objectFiles[index]->timeStamp) {
        return true;
    }
    if (!asked && !AskForListedFile(index, true, answer)) {
        return false;
    }
    FILE_Info& file = *m_objectFiles[index];
    if (answer != file.fileName) {
        if (!ModificationTime(answer)) {
            return false;
        }
        file.fileName = answer;
    }
    file.timeStamp = *modified;  // of the file first looked at, also when another was named (docs/object-files.md)
    return true;
}

/// False when the list was replaced meanwhile: the index means nothing then.
bool CDeviceConfigManagerCommon::AskForListedFile(std::size_t index, bool timeStampChanged, std::string& answer) {
    const std::string fileName = m_objectFiles[index]->fileName;  // the entry's own text can go while it is asked about
    const std::uint32_t before = m_objectFilesReplaced;
    answer = AskForObjectFile(fileName, timeStampChanged);
    return m_objectFilesReplaced == before;
}

std::string CDeviceConfigManagerCommon::AskForObjectFile(const std::string& fileName, bool timeStampChanged) {
    std::string answer;
    if (m_eventHandler != nullptr) {
        ++m_questions;
        m_eventHandler->OnUpdateObjectFile(fileName, timeStampChanged, answer);
    }
    return answer;
}

bool CDeviceConfigManagerCommon::GetObjectFile(const std::string& name, std::string& objectFile) {
    GetLiveSystemObjectFiles();
    const int index = FindObjectFile(name);
    if (index >= 0) {
        objectFile = m_objectFiles[static_cast<std::size_t>(index)]->fileName;
        return true;
    }
    if (m_eventHandler == nullptr) {
        return false;
    }
    const std::string answer = AskForObjectFile("Application for " + name, false);
    const auto modified = ModificationTime(answer);
    if (!modified) {
        return false;
    }
    AddObjectFile(name, answer, *modified);
    objectFile = answer;
    return true;
}

int CDeviceConfigManagerCommon::FindObjectFile(const std::string& name) {
    const auto first = [this](const auto& matches) {
        const auto found = std::find_if(m_objectFileNames.begin(), m_objectFileNames.end(), matches);
        return found == m_objectFileNames.end() ? -1 : static_cast<int>(found - m_objectFileNames.begin());
    };
    int index = first([&](const std::string& known) { return known == name; });
    if (index < 0) {
        index = first([&](const std::string& known) { return known.find(name) != std::string::npos; });
    }
    if (index < 0) {
        index = first([&](const std::string& known) { return IsCloseMatch(known, name); });
    }
    return index;
}

bool CDeviceConfigManagerCommon::IsCloseMatch(const std::string& candidate, const std::string& wanted) {
    // Any suffix of `wanted` may occur, and the shortest is its last character: as loose as it looks
    // (docs/object-files.md).
    return !wanted.empty() && UpperCase(candidate).find(UpperCase(wanted).back()) != std::string::npos;
}

void CDeviceConfigManagerCommon::AddObjectFile(std::string_view name, std::string_view fileName,
                                               std::int64_t timeStamp) {
    auto file = std::make_unique<FILE_Info>(FILE_Info{std::string(fileName), timeStamp});
    if (m_objectFiles.size() == m_objectFiles.capacity()) {
        m_objectFiles.reserve(2 * m_objectFiles.size() + 1);  // here, so that the two lists can't come apart below
    }
    m_objectFileNames.emplace_back(name);
    m_objectFiles.push_back(file.release());
}

void CDeviceConfigManagerCommon::ClearObjectFiles() {
    ++m_objectFilesReplaced;
    for (const FILE_Info* file : m_objectFiles) {
        delete file;
    }
    m_objectFiles.clear();
    m_objectFileNames.clear();
}

}  // namespace Zu::Wep::Trace
