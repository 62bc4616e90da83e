// Uses the built plug-in as a host does for a long time, and looks at what the process holds.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdint>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>

#include "tests/support/ScratchDir.h"
#include "tests/support/Slot.h"

namespace {

using stmdcm_test::Slot;

/// The mapped libraries and the number of open descriptors.
std::set<std::string> Held() {
    std::istringstream maps(stmdcm_test::ReadWhole("/proc/self/maps"));
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    std::set<std::string> held{std::to_string(std::distance(descriptors, {})) + " descriptors"};
    for (std::string line; std::getline(maps, line);) {
        if (line.find(".so") != std::string::npos) {
            held.insert(line.substr(line.rfind('/') + 1));
        }
    }
    return held;
}

TEST(Cycle, AThousandLiveLoadsLeaveNothingBehind) {
    const stmdcm_test::ScratchDir home;
    ::setenv("HOME", home.Path().c_str(), 1);
    ::setenv("ZU_TRACE_LOGGING", "0", 1);
    ::setenv("STMDCM_SCENARIO", STMDCM_SCENARIOS "/example.json", 1);
    void* plugin = ::dlopen(STMDCM_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    const auto create = reinterpret_cast<void* (*)(void*, void*)>(::dlsym(plugin, "CreateDeviceConfigManager"));
    const auto destroy = reinterpret_cast<void (*)(void*)>(::dlsym(plugin, "DestroyDeviceConfigManager"));
    struct {
        const char* name = "Core_0/Cluster";
        std::int32_t deviceId = 1, reserved = 0, cpuId = 2;
    } cpu;
    const auto cycle = [&] {
        void* manager = create(&cpu, nullptr);
        EXPECT_TRUE(Slot<bool>(manager, 4));  // LoadConfigurationLive
        EXPECT_TRUE(Held().contains("libTraceFactory.so"));
        destroy(manager);
    };
    for (int i = 0; i < 100; ++i) {  // until the heap keeps what it keeps
        cycle();
    }
    const std::set<std::string> held = Held();
    EXPECT_FALSE(held.contains("libTraceFactory.so"));
    const std::size_t memory = ::mallinfo2().uordblks;
    for (int i = 0; i < 1000 && !HasFailure(); ++i) {
        cycle();
    }
    EXPECT_EQ(Held(), held);
    // Less than the smallest leak in each cycle. A sanitizer's heap tells nothing here and looks for leaks itself.
    EXPECT_LE(::mallinfo2().uordblks, memory + 16'384);
}

}  // namespace
