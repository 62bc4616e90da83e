#include "tool/commands/DemoRun.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include "stmdcm/Failure.h"
#include "stmdcm/change/NewCapture.h"
#include "stmdcm/plugin/HeldConfiguration.h"
#include "stmdcm/plugin/Installation.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/WorkingFile.h"

namespace stmdcm {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

namespace {

constexpr char kShippedCapture[] = "full.tdf";

// The sections that a host writes itself.
constexpr char kTraceSection[] = "TRACE0";
constexpr unsigned kHostSectionVersion = 1;
constexpr char kDeviceIdentification[] = "device=demo-board\nSTM_ATB_Id=7\n";  // The saved configuration overrides it.

constexpr std::pair<const char*, std::int32_t> kPropertyChanges[] = {
    {"TWP_Protocol", 1}, {"STM_DTC_target_clock_hz", 1'250'000'000}, {"STM_ATB_Id", 42}, {"STM_VornLib_Import", 1}};
constexpr std::size_t kAddedUsecases = 3;

void AddScUsecase(UsecaseRecordIF& record) {
    UsecaseInfoIF& usecase = *record.GetAUsecaseInfo();
    usecase.SetModuleId(21);
    usecase.SetModuleName("l3_interconnect");
    usecase.SetProbeName("port_b");
    usecase.SetSampleWindow(2048);
    usecase.SetJobNum(5);
    const _CounterLineInfo counters[] = {{0, "bytes_in"}, {1, "bytes_out"}};
    for (const _CounterLineInfo& counter : counters) {
        usecase.AddCounter(&counter);
    }
    usecase.AddFormula("throughput", "#0:20+#1:20", "MB/s", 3);
    record.AddUsecase(&usecase);
}

void AddCptUsecase(CTUsecaseRecordIF& record) {
    CTUsecaseInfoIF& usecase = *record.GetAUsecaseInfo();
    usecase.SetModuleId(18);
    usecase.SetModuleName("cpt_mem1");
    usecase.SetProbeName("p1");
    usecase.SetSampleWindow(4096);
    usecase.SetJobNum(6);
    usecase.SetClockRate(500'000'000);
    usecase.SetDividFactor(4);
    usecase.SetDataOptions(CT_DATA_OPTION_0, true);
    usecase.SetDataOptions(CT_DATA_OPTION_7, false);
    record.AddUsecase(&usecase);
}

void AddPmiUsecase(PMIUsecaseRecordIF& record) {
    UsecaseInfoIFBase& usecase = *record.GetAUsecaseInfo();
    usecase.SetModuleName("CMI0");
    usecase.SetSampleWindow(128);
    record.AddUsecase(&usecase);
}

std::string Payload(const std::string& path, const char* name) {
    const Container capture(path);
    const Section* section = capture.Find(name, kHostSectionVersion);
    return section == nullptr ? "" : capture.ReadPayload(*section);
}

void LoadCapture(PluginSession& session, Manager& manager, const std::string& path) {
    session.log.Take();
    if (!manager.Load(path, TRACE_DATA_FILE_TDF)) {
        throw Failure(path, fmt::format("the plug-in can't load the configuration{}", session.log.WhyFailed(path)));
    }
}

class DemoRun {
  public:
    explicit DemoRun(PluginSession& session) : m_session(session) {
        m_result.cpu = kDemoCpu;
        m_result.plugin = session.plugin.Path().string();
        m_result.capture = session.WorkingFile(kShippedCapture);
        m_result.savedCapture = session.WorkingFile("saved.tdf");
    }

    DemoResult Run() {
        {
            Manager manager(m_session.plugin, kDemoCpu, [this](const auto& question) { return Answer(question); });
            Load(manager);
            Change(manager);
            Save(manager);
        }
        ReloadAndCompare();
        return std::move(m_result);
    }

  private:
    std::string Answer(const ObjectFileQuestion& question) const {
        if (question.changed) {
            return question.file;
        }
        const auto entry = std::find_if(m_result.recorded.begin(), m_result.recorded.end(),
                                        [&](const ObjectFile& file) { return file.path == question.file; });
        if (entry == m_result.recorded.end()) {
            return {};
        }
        const fs::path image = m_session.home.Path() / "images" / fs::path(entry->path).filename();
        WriteDemoImage(image, entry->recorded);
        return image.string();
    }

    void Load(Manager& manager) {
        WriteWorkingFile(m_result.capture, ReadWorkingFile(DataFile(kShippedCapture)));
        m_result.recorded = Read(m_result.capture).configuration.objectFiles;
        LoadCapture(m_session, manager, m_result.capture);
        m_result.questions = manager.Questions();
        m_result.loaded = ReadConfiguration(manager);
        m_result.loaded.objectFiles = ObjectFilesHeldBy(manager, m_result.recorded);
    }

    void Change(Manager& manager) {
        for (const auto& [name, value] : kPropertyChanges) {
            manager.SetProperty(name, value);
        }
        AddScUsecase(manager.ScRecord());
        AddCptUsecase(manager.CptRecord());
        AddPmiUsecase(manager.PmiRecord());

        m_result.changed = ReadConfiguration(manager);
        m_result.changed.objectFiles = m_result.loaded.objectFiles;
        m_result.changes = Compare(m_result.loaded, m_result.changed);
        if (m_result.changes.size() != std::size(kPropertyChanges) + kAddedUsecases) {
            m_result.problems.emplace_back("the plug-in did not take the changes as they were made");
        }
    }

    void Save(Manager& manager) {
        const std::string& path = m_result.savedCapture;
        const std::string trace = Payload(m_result.capture, kTraceSection);
        WriteWorkingFile(
            path, NewCapture({{kTraceSection, kHostSectionVersion, trace}, DeviceSection(kDeviceIdentification)}));
        m_session.log.Take();
        if (!manager.Save(path, TRACE_DATA_FILE_TDF)) {
            throw Failure(path,
                          fmt::format("the plug-in can't save the configuration{}", m_session.log.WhyFailed(path)));
        }
        CheckHostSection(kTraceSection, trace);
        CheckHostSection(kDeviceSectionName, kDeviceIdentification);
    }

    void CheckHostSection(const char* name, const std::string& payload) {
        if (Payload(m_result.savedCapture, name) != payload) {
            m_result.problems.push_back(fmt::format("saving changed the host's own section {}", name));
        }
    }

    void ReloadAndCompare() {
        Manager manager(m_session.plugin, kDemoCpu);
        Reload(m_session, manager, m_result);
        m_result.differences = Compare(m_result.changed, m_result.reloaded);

        Configuration held = m_result.reloaded;
        held.objectFiles = ObjectFilesHeldBy(manager, held.objectFiles);
        if (!Compare(m_result.reloaded, held).empty() || !manager.Questions().empty()) {
            m_result.problems.emplace_back("the second manager does not hold the object files that were saved");
        }
    }

    PluginSession& m_session;
    DemoResult m_result;
};

}  // namespace

DemoResult RunDemo(PluginSession& session) { return DemoRun(session).Run(); }

void Reload(PluginSession& session, Manager& manager, DemoOutcome& outcome) {
    LoadCapture(session, manager, outcome.savedCapture);
    outcome.reloaded = ReadConfiguration(manager);
    outcome.reloaded.objectFiles = Read(outcome.savedCapture).configuration.objectFiles;
}

void WriteDemoImage(const fs::path& path, std::int64_t modified) {
    fs::create_directories(path.parent_path());
    WriteWorkingFile(path, fmt::format("program image {}\n", path.filename().string()));
    const timespec times[2] = {{modified, 0}, {modified, 0}};
    if (::utimensat(AT_FDCWD, path.c_str(), times, 0) != 0) {
        const int error = errno;
        throw Failure(path.string(), fmt::format("its time can't be set: {}", ZU_WEP::ErrnoText(error)));
    }
}

}  // namespace stmdcm
