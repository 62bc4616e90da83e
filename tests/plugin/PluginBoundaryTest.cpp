// Drives the built plug-in through its two C functions, tables and layouts, all of them declared here once more.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "tests/support/KillAtSyscall.h"
#include "tests/support/ScratchDir.h"
#include "tests/support/Slot.h"

namespace {

using stmdcm_test::Slot;

struct Cpu {
    const char* name;
    std::int32_t first, reserved, last;
};

struct Value {
    std::int32_t type = 0;
    std::string text = "untouched";
    union {
        std::int32_t integer;
        unsigned char bytes[8];
        double real = 0;
    };
};

struct FileInfo {
    std::string path;
    std::int64_t stamp;
};

/// A manager up to its retrieval of object files.
struct ManagerHead {
    void* table;
    Cpu* cpu;
    std::int32_t fallback[2];
    void *identifier, *events;
    std::vector<std::string> names;
    std::vector<FileInfo*> files;
    void *factory, *server;
};

std::string calls;

bool Note(const char* what, const std::string& name, int number) {
    calls += what + (' ' + name.substr(name.rfind('/') + 1)) + ' ' + std::to_string(number) + '\n';
    return false;
}

/// What a host brings, as its own compiler lays it out.
struct Identifier {
    virtual bool Save(const std::string& name, int type) { return Note("save", name, type); }
    virtual bool Load(const std::string& name, int type) { return Note("load", name, type); }
};
struct Events {
    virtual void Ask(const std::string& file, bool changed, std::string&) { Note("ask", file, changed); }
};

// The slots of a manager's table.
enum : std::size_t { DeletingDestructor = 1, RegisterEvents, GetInfo, LoadLive, Load, Save, GetProperty };
enum : std::size_t { GetObjectFile = 8, GetLastError, SetProperty, SaveAll, RetrieveAll };

class Plugin : public testing::Test {
  protected:
    Plugin() {
        ::setenv("HOME", Home().Path().c_str(), 1);
        for (const char* name : {"ZU_TRACE_LOGGING", "ZU_TRACE_DEBUGCLIENT_PID"}) {
            ::unsetenv(name);
        }
        m_library = ::dlopen(STMDCM_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        if (m_library == nullptr) {
            throw std::runtime_error(::dlerror());
        }
        m_manager = Create(&m_cpu, &m_identifier);
        calls.clear();
    }
    ~Plugin() override { Call<void>("DestroyDeviceConfigManager", m_manager); }

    template <class Result, class... Args>
    Result Call(const char* name, Args... args) {
        return reinterpret_cast<Result (*)(Args...)>(::dlsym(m_library, name))(args...);
    }
    void* Create(void* cpu, void* identifier) { return Call<void*>("CreateDeviceConfigManager", cpu, identifier); }
    Value Get(const std::string& name) {
        Value value;
        EXPECT_TRUE((Slot<bool, const std::string&, Value&>(m_manager, GetProperty, name, value))) << name;
        return value;
    }
    bool Set(const std::string& name, std::int32_t number) {
        Value value;
        value.integer = number;
        return Slot<bool, const std::string&, Value&>(m_manager, SetProperty, name, value);
    }
    bool File(std::size_t slot, const std::string& path, int type) {
        return Slot<bool, const std::string&>(m_manager, slot, path, type);
    }
    /// One for all tests: the plug-in fixes its directories once per process.
    static const stmdcm_test::ScratchDir& Home() {
        static const stmdcm_test::ScratchDir home;
        return home;
    }
    Identifier m_identifier;
    Events m_events;
    Cpu m_cpu{"Core_0/Cluster", 11, 12, 13};
    void* m_library = nullptr;
    void* m_manager = nullptr;
};

/// Open files, mapped ranges and bytes of the heap.
std::array<std::size_t, 3> Held() {
    std::ifstream maps("/proc/self/maps");
    const auto lines = std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
    const auto files = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    return {static_cast<std::size_t>(files), static_cast<std::size_t>(lines), ::mallinfo2().uordblks};
}

/// The first of all: the others keep the library loaded.
TEST(Unloading, LeavesNothingBehind) {
    const stmdcm_test::ScratchDir home(stmdcm_test::MemoryDirectory());
    const int status = stmdcm_test::RunInChild([&home] {
        ::setenv("HOME", home.Path().c_str(), 1);
        ::setenv("ZU_TRACE_LOGGING", "1", 1);
        Cpu cpu{"cpu", 1, 0, 2};
        std::array<std::size_t, 3> before{}, after{};
        for (int cycle = 0; cycle < 1000; ++cycle) {
            void* const library = ::dlopen(STMDCM_PLUGIN, RTLD_NOW | RTLD_LOCAL);
            const auto create =
                reinterpret_cast<void* (*)(void*, void*)>(::dlsym(library, "CreateDeviceConfigManager"));
            const auto destroy = reinterpret_cast<void (*)(void*)>(::dlsym(library, "DestroyDeviceConfigManager"));
            destroy(create(&cpu, nullptr));
            ::dlclose(library);
            (cycle < 100 ? before : after) = Held();
        }
        const bool isUnloaded = ::dlopen(STMDCM_PLUGIN, RTLD_NOW | RTLD_NOLOAD) == nullptr;
        const std::size_t told = stmdcm_test::kIsSanitized ? 1 : 3;  // a sanitizer maps memory of its own
        return isUnloaded && std::equal(before.begin(), before.begin() + told, after.begin()) ? 0 : 1;
    });
    EXPECT_EQ(status, 0);
}

TEST_F(Plugin, ExportsTheTwoFunctionsAndTheContainerOnly) {
    const std::string list = Home() / "list";
    ASSERT_EQ(std::system(("nm -D --defined-only -C " STMDCM_PLUGIN " | cut -c 20- >" + list).c_str()), 0);
    std::ifstream lines(list);
    std::set<std::string> exported;
    for (std::string symbol; std::getline(lines, symbol);) {
        EXPECT_TRUE(symbol == "STMDCM_1" || symbol.ends_with("@@STMDCM_1")) << symbol;
        exported.insert(symbol.substr(0, symbol.find_first_of("(@")));
    }
    std::set<std::string> expected{"STMDCM_1", "CreateDeviceConfigManager", "DestroyDeviceConfigManager",
                                   "Zu::Wep::Trace::FileSize"};
    for (const char* member : {"TDFHandler", "~TDFHandler", "CreateTDFFile", "ISTDF", "IsFileAvailable", "HasExtension",
                               "SaveNameVersion", "SaveSectionHeader", "SaveSectionData", "SeekSectionData",
                               "GetSectionDataLengthInBytes", "LoadSectionData", "GetSectionDataPosition"}) {
        expected.insert(std::string("Zu::Wep::Trace::TDFHandler::") + member);
    }
    EXPECT_EQ(exported, expected);
}

TEST_F(Plugin, NullIsNoManager) {
    EXPECT_EQ(Create(nullptr, &m_identifier), nullptr);
    Call<void>("DestroyDeviceConfigManager", static_cast<void*>(nullptr));
    Slot<void>(Create(&m_cpu, nullptr), DeletingDestructor);
}

TEST_F(Plugin, ManagerTable) {
    int first = 0, last = 0;
    std::string name;
    EXPECT_TRUE((Slot<bool, int&, int&, std::string&>(m_manager, GetInfo, first, last, name)));
    EXPECT_EQ(std::tie(first, last, name), std::make_tuple(11, 13, "Core_0/Cluster"));

    Slot<void, void*>(m_manager, RegisterEvents, &m_events);
    EXPECT_TRUE(File(Load, STMDCM_TEST_DATA "/full.tdf", 0));
    EXPECT_EQ(calls, "ask app0.out 0\nload full.tdf 0\n");
    EXPECT_EQ(Get("HEAD_Pointer_0").integer, -2147483647 - 1);
    EXPECT_EQ(Get("STM_ATB_Id").type, 2);
    EXPECT_EQ(Get("CycleModeDelta").type, 5);
    EXPECT_EQ((Slot<std::string>(m_manager, GetLastError)), "");

    EXPECT_TRUE(Set("STM_data_flip", 256) && Set("STM_VornLib_Import", 256));  // not 0, but its first byte is
    EXPECT_EQ(Get("STM_data_flip").bytes[0], 1);
    EXPECT_EQ(Get("STM_VornLib_Import").bytes[0], 0);
    EXPECT_TRUE(Set("STM_VornLib_Import", 2));
    EXPECT_EQ(Get("STM_VornLib_Import").bytes[0], 1);
    EXPECT_EQ(Get("STM_VornLib_Import").text, "untouched");

    const auto* head = static_cast<const ManagerHead*>(m_manager);
    EXPECT_EQ(head->cpu, &m_cpu);
    EXPECT_EQ(head->identifier, &m_identifier);
    EXPECT_EQ(head->events, &m_events);
    EXPECT_EQ(head->names, (std::vector<std::string>{"core0", "core1"}));
    EXPECT_EQ(head->files.at(1)->path, "/opt/images/app1.out");
    EXPECT_EQ(head->files.at(1)->stamp, 1700000001);
    EXPECT_EQ(head->server, nullptr);

    std::string objectFile;
    EXPECT_TRUE((Slot<bool, const std::string&, std::string&>(m_manager, GetObjectFile, "core1", objectFile)));
    EXPECT_EQ(objectFile, "/opt/images/app1.out");
    EXPECT_FALSE(Slot<bool>(m_manager, LoadLive));
}

TEST_F(Plugin, SettingsFileOfTheCpuThroughTheTable) {
    EXPECT_TRUE(Set("STM_ATB_Id", 77));
    Slot<void>(m_manager, SaveAll);
    EXPECT_EQ(calls, "save Core_0-Cluster-STMCfg.txt 4\n");
    EXPECT_TRUE(Set("STM_ATB_Id", 78));
    Slot<void>(m_manager, RetrieveAll);
    EXPECT_EQ(Get("STM_ATB_Id").integer, 77);
    EXPECT_TRUE(File(Save, "x", 2));
    EXPECT_FALSE(File(Save, "x", 3));
    EXPECT_TRUE(std::filesystem::exists(Home() / ".ZU-trace/settings/x.dcm"));
}

}  // namespace
