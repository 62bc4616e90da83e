// Each mistake of a host is told, and does no harm: the child goes on to its end.

#include <gmock/gmock.h>

#include <filesystem>
#include <thread>

#include "tests/check/CheckedHost.h"

namespace stmdcm_test {

using namespace Zu::Wep::Trace;

namespace {

constexpr char kFull[] = STMDCM_TEST_DATA "/full.tdf";

/// Does something when it is asked.
struct Asked final : CDeviceConfigEvents {
    explicit Asked(std::function<void()> work) : act(std::move(work)) {}
    void OnUpdateObjectFile(const std::string&, bool, std::string&) override { act(); }
    std::function<void()> act;
};

struct ThrowingIdentifier final : CDeviceIdentifier {
    bool SaveToFile(const std::string&, eTraceDataFileType) override { throw std::runtime_error("no room"); }
    bool LoadFromFile(const std::string&, eTraceDataFileType) override { return true; }
    virtual ~ThrowingIdentifier() = default;
};

/// Loads a capture of which an image is missing, so that a handler is asked.
void LoadAsking(Host& host, CDeviceConfigEvents& handler) {
    Host::Manager* manager = host.Make();
    manager->RegisterEventHandler(&handler);
    try {
        manager->LoadConfiguration(kFull, TRACE_DATA_FILE_TDF);
    } catch (int) {
    }
    host.destroy(manager);
}

/// What is behind `act` is done right.
template <class Act>
auto WithManager(Act act) {
    return [act](Host& host) {
        Host::Manager* manager = host.Make();
        manager->LoadConfiguration(kFull, TRACE_DATA_FILE_TDF);
        act(*manager);
        host.destroy(manager);
    };
}

auto Sets(const char* name, std::int32_t type, const std::function<void(ConfigPropertyValue&)>& fill) {
    return WithManager([=](Host::Manager& manager) {
        ConfigPropertyValue value;
        value.type = type;
        fill(value);
        EXPECT_TRUE(manager.SetSTMProperty(name, value));
    });
}

/// What a host does with what it kept of a manager that has ended.
template <class Take, class Use>
auto Keeps(Take take, Use use) {
    return [=](Host& host) {
        Host::Manager* manager = host.Make();
        manager->LoadConfiguration(kFull, TRACE_DATA_FILE_TDF);
        auto* kept = take(*manager);
        host.destroy(manager);
        use(*kept);
    };
}

UsecaseInfoIF* First(Host::Manager& manager) { return manager.GetUsecaseRecord()->GetUsecase(0); }

struct WrongHost {
    std::function<void(Host&)> act;
    const char* sentence;
};

const WrongHost kWrongHosts[] = {
    {Keeps([](auto& manager) { return &manager; },
           [](auto& manager) {
               EXPECT_FALSE(manager.LoadConfiguration(kFull, TRACE_DATA_FILE_TDF));
               EXPECT_EQ(manager.GetUsecaseRecord()->GetNumUsecases(), 0U);
           }),
     "LoadConfiguration of manager 1 (Core_0/Cluster) (call 4): the manager was ended before by "
     "DestroyDeviceConfigManager (call 3); nothing was done"},
    {[](Host& host) {
         auto* manager = host.Make();
         host.destroy(manager);
         host.destroy(manager);
     },
     "DestroyDeviceConfigManager (call 3): the manager was ended before by DestroyDeviceConfigManager (call 2)"},
    {[](Host& host) { host.Make(); },
     "when the library is unloaded: manager 1 (Core_0/Cluster), made by CreateDeviceConfigManager (call 1), was never "
     "destroyed"},
    {[](Host& host) {
         host.Make();
         std::exit(0);
     },
     "at the end of the process: manager 1 (Core_0/Cluster), made by CreateDeviceConfigManager (call 1), was never "
     "destroyed"},
    {[](Host& host) { delete host.Make(); }, "DestroyDeviceConfigManager ends it"},
    {[](Host& host) {
         int other = 0;
         host.destroy(reinterpret_cast<CDeviceConfigManager*>(&other));
     },
     "this is no manager of this library"},
    {[](Host& host) {
         Host::Manager* manager = host.Make();
         Asked handler([&] { host.destroy(manager); });
         manager->RegisterEventHandler(&handler);
         manager->LoadConfiguration(kFull, TRACE_DATA_FILE_TDF);
     },
     "the manager is in a call still; it ends behind that"},
    {[](Host& host) {
         Host::Manager* other = host.Make();
         ConfigPropertyValue value;
         Asked handler([&] { std::thread([&] { other->GetProperty("STM_ATB_Id", value); }).join(); });
         LoadAsking(host, handler);
         EXPECT_EQ(value.value.integer, 1);
         host.destroy(other);
     },
     "another thread is in LoadConfiguration of manager 2 (Core_0/Cluster) (call 4) still"},
    {[](Host& host) {
         Asked handler([] { throw 3; });
         LoadAsking(host, handler);
     },
     "OnUpdateObjectFile of the event handler of manager 1 (Core_0/Cluster) (call 4): the host throws int"},
    {[](Host& host) {
         ThrowingIdentifier identifier;
         Host::Manager* manager = host.Make(&identifier);
         EXPECT_THROW(manager->SaveConfiguration("x", TRACE_DATA_FILE_LIVE), std::runtime_error);
         host.destroy(manager);
     },
     "the host throws std::runtime_error: no room"},
    {[](Host& host) {
         host.cpu.name = nullptr;
         host.destroy(host.Make());
     },
     "the CPU's name is null"},
    {[](Host& host) {
         const std::string name(128, 'x');
         host.cpu.name = name.c_str();
         host.destroy(host.Make());
     },
     "128 characters or more"},
    {[](Host& host) {
         Host::Manager* manager = host.Make();
         host.cpu.name = "another";
         manager->SaveAllConfiguration();
         host.destroy(manager);
     },
     "the CPUInfo is not what it was"},
    {WithManager([](auto& manager) { manager.LoadConfiguration("x", static_cast<eTraceDataFileType>(7)); }),
     "there is no type of file 7"},
    {Sets("STM_ATB_Id", ConfigPropertyValue::Boolean, [](auto& value) { value.value.boolean = true; }),
     "the value's type is 5, but the property's is 2 (Integer)"},
    {Sets("STM_data_flip", 6, [](auto& value) { value.value.integer = 1; }),
     "the value's type is 6, but the property's is 5 (Boolean)"},
    {Sets("STM_ATB_Id", 0, [](auto& value) { value.value.real = 3.7; }),
     "the value was set as the real number 3.700000, but its integer counts, -1717986918"},
    {Sets("STM_data_flip", ConfigPropertyValue::Boolean, [](auto& value) { value.value.integer = 0x700; }),
     "its integer counts, and the property becomes true; clear the union"},
    {Sets("STM_VornLib_Import", 0, [](auto& value) { value.value.integer = 256; }),
     "its first byte counts, and the property becomes false"},
    {Keeps([](auto& manager) { return manager.GetUsecaseRecord(); },
           [](auto& record) { EXPECT_EQ(record.GetNumUsecases(), 0U); }),
     "GetNumUsecases of SC record of manager 1 (Core_0/Cluster) (call 5): the manager was ended before"},
    {Keeps(First, [](auto& usecase) { EXPECT_STREQ(usecase.GetModuleName(), ""); }),
     "the use case ended with its manager"},
    {Keeps([](auto& manager) { return First(manager)->GetCounterInfo(0); },
           [](auto& counter) {
               EXPECT_EQ(counter.text, "(used after its end)");
               counter.number = 4;
           }),
     "a counter or formula of SC use case 0 of manager 1 (Core_0/Cluster) was written after its end"},
    {WithManager([](auto& manager) {
         UsecaseInfoIF* usecase = First(manager);
         manager.GetUsecaseRecord()->CleaupUsecases(false);
         usecase->SetJobNum(3);
         manager.GetUsecaseRecord()->AddUsecase(usecase);
     }),
     "its record was changed since by CleaupUsecases of SC record"},
    {WithManager([](auto& manager) {
         UsecaseInfoIF* usecase = First(manager);
         const _CounterLineInfo* counter = usecase->GetCounterInfo(0);
         usecase->AddCounter(counter);
         usecase->AddCounter(counter);
     }),
     "the counter has ended, since its use case was changed"},
    {WithManager([](auto& manager) { delete First(manager); }), "the use case belongs to the library"},
    {WithManager([](auto& manager) { delete manager.GetPMIUsecaseRecord(); }), "the record belongs to its manager"},
    {WithManager([](auto& manager) { First(manager)->SetModuleName(nullptr); }), "a text is null"},
    {WithManager([](auto& manager) { First(manager)->AddFormula("a", nullptr, "b", 0); }), "a text is null"},
    {WithManager([](auto& manager) { First(manager)->AddCounter(nullptr); }), "the counter is null"},
    {WithManager([](auto& manager) { manager.GetCTUsecaseRecord()->AddUsecase(nullptr); }), "the use case is null"},
    {WithManager([](auto& manager) {
         const int own = 0;
         manager.GetUsecaseRecord()->AddUsecase(reinterpret_cast<const UsecaseInfoIF*>(&own));
     }),
     "the use case is an object of the host's own"},
    {WithManager([](auto& manager) { manager.GetPMIUsecaseRecord()->AddUsecase(First(manager)); }),
     "the use case is one of another kind, SC"},
};

}  // namespace

TEST(WrongHosts, AreToldWhatIsWrong) {
    for (const WrongHost& wrong : kWrongHosts) {
        EXPECT_THAT(HostRun(STMDCM_CHECKER).Run(wrong.act), testing::HasSubstr(wrong.sentence));
    }
}

TEST(WrongHosts, HaveNoLibraryToBeCheckedWith) {
    for (const char* library : {"/no/such.so", STMDCM_CHECKER}) {
        ::setenv("STMDCM_CHECK_LIBRARY", library, 1);
        const std::string said = HostRun(STMDCM_CHECKER).Run([](Host& host) { EXPECT_EQ(host.Make(), nullptr); });
        EXPECT_THAT(said, testing::HasSubstr("the real library can't be used: "));
        ::unsetenv("STMDCM_CHECK_LIBRARY");
    }
}

}  // namespace stmdcm_test
