// Any bytes as a trace data file, through every operation that reads or appends.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "host/vorn/vornError.h"
#include "tests/support/AppendSection.h"
#include "trace/tdf/OpenCapture.h"
#include "trace/tdf/TDFHandler.h"

using stmdcm_test::AppendSection;
using Zu::Wep::Trace::OpenCapture;
using Zu::Wep::Trace::TDFHandler;

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

std::optional<std::string> Read(const std::string& path, const char* name) {
    try {
        return OpenCapture(path).Read({name, 1});
    } catch (const Zu::Wep::Vorn::vornError&) {
        return std::nullopt;
    }
}

/// What LoadSectionData gives into a buffer of `size` bytes.
std::optional<std::string> Load(const std::string& path, const char* name, std::size_t size) {
    try {
        std::string buffer(size, '\0');
        unsigned int count = 0;
        TDFHandler().LoadSectionData(path.c_str(), name, 1, buffer.data(), static_cast<unsigned>(size), count);
        return buffer.substr(0, count);
    } catch (const Zu::Wep::Vorn::vornError&) {
        return std::nullopt;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = "/dev/shm/fuzz_tdf-" + std::to_string(::getpid()) + ".tdf";
    std::ofstream(path, std::ios::binary) << std::string_view(reinterpret_cast<const char*>(data), size);
    for (const char* name : {"", "DEVID", "STMDECODERINFO"}) {
        const auto payload = Read(path, name);
        Require(!payload || payload->size() < size);
        const auto loaded = Load(path, name, size + 1);
        Require(loaded == payload || (!payload && loaded->empty()));  // a section that states to be empty
    }
    const auto before = Read(path, "NEW");
    try {
        AppendSection(path, "NEW", 1, "appended");
        // Found, unless an older one hides it or no search comes to the end.
        const auto after = Read(path, "NEW");
        Require(before ? after.has_value() : !after || *after == "appended");
    } catch (const Zu::Wep::Vorn::vornError&) {
        Require(size < 4);
    }
    std::remove(path.c_str());
    return 0;
}
