// Loading a configuration from a large capture, and saving one into it.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <tuple>

#include "bench/Ratios.h"
#include "bench/ScratchCapture.h"
#include "source_utilities/PosixFile.h"
#include "trace/dcm/StmDeviceConfigManager.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/SectionScanner.h"
#include "trace/format/StmSections.h"

namespace {

using namespace stmdcm_bench;
using namespace Zu::Wep::Trace;
using ZU_WEP::PosixFile;

constexpr CaptureShape kManySmall{100'000, 64};

StmDeviceConfigManager& Manager() {
    static CPUInfo cpu{"bench", 0, 0, 0};
    static StmDeviceConfigManager manager(&cpu, nullptr);
    return manager;
}

/// A capture whose configuration comes last.
ScratchFile& CaptureToLoad() {
    static ScratchFile capture(".tdf");
    if (capture.Size() == 0) {
        FillCapture(capture, kManySmall);
        AppendConfiguration(capture);
    }
    return capture;
}

void LoadOurs(benchmark::State& state) {
    const std::string& path = CaptureToLoad().Path();
    for (auto _ : state) {
        if (!Manager().LoadConfiguration(path, TRACE_DATA_FILE_TDF)) {
            state.SkipWithError("the capture does not load");
        }
    }
}

std::uint64_t WalkedTo(const PosixFile& file) {
    FileSectionSource source(file);
    SectionScanner scanner(source);
    for (SectionInfo section; scanner.Next(section);) {
    }
    return scanner.StopOffset();
}

/// One walk of our own scanner over it.
void WalkOnce(benchmark::State& state) {
    const std::string& path = CaptureToLoad().Path();
    for (auto _ : state) {
        const PosixFile file = PosixFile::Open(path.c_str(), O_RDONLY);
        benchmark::DoNotOptimize(WalkedTo(file));
    }
}

void SaveOurs(const std::string& path) { Manager().SaveConfiguration(path, TRACE_DATA_FILE_TDF); }

/// The sections that a save writes.
std::string SavedBytes() {
    static const std::string bytes = [] {
        ScratchFile capture(".tdf");
        AppendConfiguration(capture);
        Manager().LoadConfiguration(capture.Path(), TRACE_DATA_FILE_TDF);
        ScratchFile saved(".tdf");
        saved.Append(kTDFIdentifier);
        SaveOurs(saved.Path());
        std::string text;
        const PosixFile file = PosixFile::Open(saved.Path().c_str(), O_RDONLY);
        file.ReadToEnd(text, 1 << 20);
        return text.substr(kTDFIdentifier.size());
    }();
    return bytes;
}

/// Fills a capture of its own, and cuts it back behind each save, which is not timed.
template <class Save>
void SaveInto(benchmark::State& state, const CaptureShape& shape, Save save) {
    SavedBytes();  // the manager that saves holds what was loaded
    ScratchFile capture(".tdf");
    FillCapture(capture, shape);
    const std::uint64_t size = capture.Size();
    for (auto _ : state) {
        save(capture.Path());
        state.PauseTiming();
        capture.Truncate(size);
        state.ResumeTiming();
    }
}

/// The same bytes and the four syncs that a save in one step takes (docs/tdf.md), with the bare system calls: what
/// takes the place first, the sections, the length, the name.
void SaveBare(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    const PosixFile walked = PosixFile::Open(path.c_str(), O_RDONLY);
    const auto end = static_cast<off_t>(WalkedTo(walked));
    const std::string bytes = SavedBytes();
    const std::string zeros(bytes.size(), '\0');
    const std::tuple<const std::string&, off_t, std::size_t> steps[] = {
        {zeros, 0, zeros.size()}, {bytes, 0, bytes.size()}, {bytes, 0, 4}, {bytes, 12, 10}};
    for (const auto& [from, offset, size] : steps) {
        if (::pwrite(descriptor, from.data() + offset, size, end + offset) < 0 || ::fdatasync(descriptor) != 0) {
            std::abort();
        }
    }
    ::close(descriptor);
}

Family SaveFamily(const std::string& what, const CaptureShape& shape) {
    const auto with = [shape](auto save) { return [=](benchmark::State& state) { SaveInto(state, shape, save); }; };
    return {what, {{kOurs, with(SaveOurs)}, {"walk, pwrite and the same syncs", with(SaveBare)}}, {{kBestPeer, 1.5}}};
}

const Family kLoad{"load the configuration behind 100,000",
                   {{kOurs, LoadOurs}, {"one walk of our scanner", WalkOnce}},
                   {{kBestPeer, 1.5}}};
const Family kSaveMany = SaveFamily("save behind 100,000 with 64 B", kManySmall);
const Family kSave1M = SaveFamily("save into 1 MiB", {4, 256 << 10});
const Family kSave1G = SaveFamily("save into 1 GiB", {16, 64 << 20});
const Family kSave3G = SaveFamily("save into 3.9 GiB", {62, 64 << 20});

}  // namespace
