// A host that does everything right hears nothing, and gets from the checker what the real library gives, to the bit.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>

#include "tests/check/CheckedHost.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm_test {

using namespace Zu::Wep::Trace;
using nlohmann::json;
namespace fs = std::filesystem;

namespace {

/// Calls at random, and writes down what came of it.
class RandomHost {
  public:
    RandomHost(Host& host, unsigned seed, std::string home)
        : m_host(host), m_random(seed), m_home(std::move(home)), m_out(m_home + "/results") {
        fs::copy_file(STMDCM_TEST_DATA "/full.tdf", m_home + "/own.tdf");
    }

    void Run() {
        for (int round = 0; round < 3; ++round) {
            m_manager = m_host.Make();
            m_manager->RegisterEventHandler(&m_events);
            for (int step = 0; step < 60; ++step) {
                Step();
            }
            m_host.destroy(m_manager);
        }
    }

  private:
    struct Answers final : CDeviceConfigEvents {};

    unsigned Below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }
    template <class... Values>
    void Note(const Values&... values) {
        ((m_out << values << ' '), ...) << '\n';
    }
    /// Null is another text than any.
    static std::string Text(const char* text) { return text != nullptr ? text : "(null)"; }

    void Step() {
        switch (Below(8)) {
            case 0:
                return Property();
            case 1:
                return Files();
            case 2:
                return Record(*m_manager->GetUsecaseRecord());
            case 3:
                return Record(*m_manager->GetCTUsecaseRecord());
            case 4:
                return Record(*m_manager->GetPMIUsecaseRecord());
            case 5:
                return Counters();
            case 6:
                return Container();
            default:
                return Questions();
        }
    }
    void Property() {
        const StmProperty& row = kStmProperties[Below(kStmProperties.size())];
        ConfigPropertyValue value;
        value.value.real = 3.25 * Below(2);  // of numbers and flags the second half may be anything
        const bool isFlag = row.flag != nullptr;
        value.type = isFlag ? ConfigPropertyValue::Boolean : ConfigPropertyValue::Integer;
        value.value.integer = static_cast<std::int32_t>(isFlag ? Below(2) : m_random());
        Note(row.name, m_manager->SetSTMProperty(row.name, value));
        ConfigPropertyValue got;
        Note(m_manager->GetProperty(row.name, got), got.type, got.value.integer, m_manager->GetProperty("x", got));
    }
    void Files() {
        const std::string names[] = {m_home + "/own.tdf", "mine", STMDCM_TEST_DATA "/settings.txt", "/none"};
        const std::string& name = names[Below(4)];
        const auto type = static_cast<eTraceDataFileType>(Below(5));
        Note(Below(2) != 0 ? m_manager->LoadConfiguration(name, type)
                           : name.front() != '/' && m_manager->SaveConfiguration(name, type));
        Note(Below(3) == 0 && m_manager->SaveConfiguration(m_home + "/own.tdf", TRACE_DATA_FILE_TDF));
    }
    template <class RecordIF>
    void Record(RecordIF& record) {
        auto* usecase = record.GetAUsecaseInfo();
        usecase->SetModuleName(Below(2) != 0 ? "CMI0" : "module");
        usecase->SetProbeName("probe");
        usecase->SetModuleId(Below(100));
        usecase->SetJobNum(static_cast<int>(Below(4)) - 1);
        usecase->SetSampleWindow(Below(1000));
        record.AddUsecase(usecase);
        std::string text;
        Note(record.SaveAllRecords(text), text);
        std::istringstream in(text);
        Note(Below(4) == 0 ? record.RetrieveAllRecords(in) : 7, in.tellg());
        if (const auto* found = record.GetUsecase(Below(3))) {
            Note(Text(found->GetModuleName()), Text(found->GetProbeName()), found->GetModuleId(), found->GetJobNum(),
                 found->GetSampleWindow(), found == record.GetUsecase(0));
        }
        if (Below(3) == 0) {
            record.RemoveUsecase(static_cast<int>(Below(4)));
            record.CleaupUsecases(Below(2) != 0);
        }
        Note(record.GetNumUsecases());
    }
    void Counters() {
        UsecaseInfoIF* usecase = m_manager->GetUsecaseRecord()->GetUsecase(Below(2));
        if (usecase == nullptr) {
            return;
        }
        const _CounterLineInfo counter{Below(9), "own"};
        usecase->AddCounter(&counter);
        usecase->AddFormula("name", "#1:2", "unit", Below(9));
        usecase->SetSuppress(Below(2) != 0);
        _CounterLineInfo* borrowed = usecase->GetCounterInfo(0);
        borrowed->text += "+";  // a host may change what it borrows
        usecase->GetFormula(0)->unit = borrowed->text;
        std::string text;
        m_manager->GetUsecaseRecord()->SaveAllRecords(text);
        Note(text, usecase->GetNumCounters(), usecase->GetNumFormulars(), usecase->GetSuppress(),
             usecase->GetCounterInfo(99) == nullptr, usecase->GetCounterInfo(0) == borrowed);
    }
    /// Through the exported names, as a host that links to the library calls them.
    void Container() {
        TDFHandler handler;
        const std::string prefix = "_ZN2Zu3Wep5Trace10TDFHandler";
        const auto isTdf =
            reinterpret_cast<bool (*)(void*, const char*)>(::dlsym(m_host.library, (prefix + "5ISTDFEPKc").c_str()));
        const auto position =
            reinterpret_cast<void (*)(void*, const char*, const char*, unsigned, unsigned&, unsigned&)>(
                ::dlsym(m_host.library, (prefix + "22GetSectionDataPositionEPKcS4_jRjS5_").c_str()));
        unsigned at = 5, length = 6;
        try {
            position(&handler, (m_home + "/own.tdf").c_str(), Below(2) != 0 ? "DEVID" : "NONE", 1, at, length);
        } catch (const std::exception& error) {
            Note(error.what(), typeid(error).name());
        }
        Note(isTdf(&handler, (m_home + "/own.tdf").c_str()), at, length);
    }
    void Questions() {
        int first = 0, last = 0;
        std::string name, file;
        Note(m_manager->GetInfo(first, last, name), first, last, name, m_manager->GetLastError());
        Note(m_manager->GetObjectFile("core1", file), file, m_manager->LoadConfigurationLive());
        if (Below(2) != 0) {
            m_manager->SaveAllConfiguration();
        } else {
            m_manager->RetrieveAllConfiguration();
        }
    }

    Host& m_host;
    std::mt19937 m_random;
    std::string m_home;
    std::ofstream m_out;
    Answers m_events;
    Host::Manager* m_manager = nullptr;
};

/// All that the host and the library wrote, by name below the home.
std::map<std::string, std::string> FilesIn(const std::string& home) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(home)) {
        const std::string name = fs::relative(entry.path(), home);
        if (entry.is_regular_file() && name != "trace" && name != "said") {
            files[name] = ReadWhole(entry.path());
        }
    }
    return files;
}

}  // namespace

TEST(RightHosts, GetWhatTheRealLibraryGivesAndHearNothing) {
    std::size_t calls = 0;
    for (unsigned seed = 1; seed <= 8; ++seed) {
        HostRun real(STMDCM_PLUGIN), checked(STMDCM_CHECKER);
        real.Run([&](Host& host) { RandomHost(host, seed, real.Home()).Run(); });
        std::ofstream(checked.Home() + "/trace") << R"({"event":"cal)";  // as a full disk cuts it
        EXPECT_EQ(checked.Run([&](Host& host) { RandomHost(host, seed, checked.Home()).Run(); }), "");
        ASSERT_EQ(FilesIn(checked.Home()), FilesIn(real.Home())) << "seed " << seed;

        std::istringstream trace(checked.Trace());
        std::map<long, int> open;
        json event;
        std::string line;
        for (std::getline(trace, line); std::getline(trace, line); calls += event["event"] == "call" ? 1 : 0) {
            event = json::parse(line);
            open[event.value("call", 0)] += event["event"] == "return" ? -1 : event.contains("call") ? 1 : 0;
        }
        EXPECT_EQ(event["event"], "end");
        EXPECT_EQ(event["managers_alive"], 0);
        EXPECT_TRUE(std::all_of(open.begin(), open.end(), [](const auto& call) { return call.second == 0; }));
    }
    EXPECT_GT(calls, 5000U);
}

}  // namespace stmdcm_test
