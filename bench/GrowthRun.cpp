// What one work costs at a size, for scripts/bench, which counts its instructions with callgrind: the work alone, not
// what prepares it. Usage: growth_run find|load|save|read COUNT

#include <valgrind/callgrind.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>
#include <string>

#include "bench/ScratchCapture.h"
#include "bench/UsecaseTexts.h"
#include "trace/dcm/StmDeviceConfigManager.h"
#include "trace/tdf/TDFHandler.h"
#include "trace/usecase/UsecaseRecord.h"

namespace {

using namespace stmdcm_bench;
using namespace Zu::Wep::Trace;

bool g_isDone = false;

void Count(const std::function<bool()>& work) {
    CALLGRIND_TOGGLE_COLLECT;
    g_isDone = work();
    CALLGRIND_TOGGLE_COLLECT;
}

void Find(std::uint32_t count) {
    ScratchFile capture(".tdf");
    FillCapture(capture, {count, 64});
    Count([&] {
        unsigned position = 0, length = 0;
        TDFHandler().GetSectionDataPosition(capture.Path().c_str(), kFillerName.data(), kLastVersion, position, length);
        return position != 0;
    });
}

void WithManager(std::uint32_t count, bool (StmDeviceConfigManager::*work)(const std::string&, eTraceDataFileType)) {
    ScratchFile capture(".tdf");
    FillCapture(capture, {count, 64});
    AppendConfiguration(capture);
    CPUInfo cpu{"bench", 0, 0, 0};
    StmDeviceConfigManager manager(&cpu, nullptr);
    Count([&] { return (manager.*work)(capture.Path(), TRACE_DATA_FILE_TDF); });
}

void Read(std::uint32_t count) {
    std::istringstream in(UsecaseText(count));
    UsecaseRecord record;
    Count([&] {
        record.RetrieveAllRecords(in);
        return record.GetNumUsecases() == count;
    });
}

}  // namespace

int main(int argc, char** argv) {
    ::setenv("HOME", "/nonexistent", 1);  // no manager finds anybody's settings
    const std::map<std::string, std::function<void(std::uint32_t)>> works = {
        {"find", Find},
        {"load", [](std::uint32_t count) { WithManager(count, &StmDeviceConfigManager::LoadConfiguration); }},
        {"save", [](std::uint32_t count) { WithManager(count, &StmDeviceConfigManager::SaveConfiguration); }},
        {"read", Read}};
    const auto work = argc == 3 ? works.find(argv[1]) : works.end();
    if (work == works.end()) {
        return 2;
    }
    work->second(static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10)));
    return g_isDone ? 0 : 1;
}
