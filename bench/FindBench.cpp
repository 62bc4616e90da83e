// Finding the last of many sections, against bare walks.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <utility>

#include "bench/Ratios.h"
#include "bench/ScratchCapture.h"
#include "source_utilities/PosixFile.h"
#include "trace/format/SectionScanner.h"
#include "trace/tdf/TDFHandler.h"

namespace {

using namespace stmdcm_bench;
using namespace Zu::Wep::Trace;

constexpr std::size_t kStartSize = SectionHeader::kSize + kFillerName.size();

void ReadHeaders(const char* path) {
    const ZU_WEP::PosixFile file = ZU_WEP::PosixFile::Open(path, O_RDONLY);
    FileSectionSource source(file);
    SectionScanner scanner(source);
    for (SectionInfo section; scanner.Next(section);) {
    }
}

const char* Capture(const CaptureShape& shape) {
    static std::map<std::pair<std::uint32_t, std::uint32_t>, std::unique_ptr<ScratchFile>> captures;
    auto& capture = captures[{shape.count, shape.payload}];
    if (!capture) {
        capture = std::make_unique<ScratchFile>(".tdf");
        FillCapture(*capture, shape);
    }
    ReadHeaders(capture->Path().c_str());  // what lay idle for a while may not be in memory any more
    return capture->Path().c_str();
}

bool IsLast(const SectionHeader& header, const char* start) {
    return header.version == kLastVersion && header.nameLength == kFillerName.size() &&
           std::memcmp(start + SectionHeader::kSize, kFillerName.data(), kFillerName.size()) == 0;
}

void FindOurs(benchmark::State& state, const CaptureShape& shape) {
    const char* path = Capture(shape);
    for (auto _ : state) {
        unsigned position = 0, length = 0;
        TDFHandler().GetSectionDataPosition(path, kFillerName.data(), kLastVersion, position, length);
        benchmark::DoNotOptimize(position);
    }
}

void FindByPread(benchmark::State& state, const CaptureShape& shape) {
    const char* path = Capture(shape);
    for (auto _ : state) {
        const int file = ::open(path, O_RDONLY | O_CLOEXEC);
        off_t position = kFirstSectionOffset;
        for (char start[kStartSize]; ::pread(file, start, sizeof start, position) == sizeof start;) {
            const SectionHeader header = DecodeSectionHeader(start);
            if (IsLast(header, start)) {
                break;
            }
            position += header.length;
        }
        benchmark::DoNotOptimize(position);
        ::close(file);
    }
}

void FindByStdio(benchmark::State& state, const CaptureShape& shape) {
    const char* path = Capture(shape);
    for (auto _ : state) {
        std::FILE* stream = std::fopen(path, "rbe");
        long position = kFirstSectionOffset;
        std::fseek(stream, position, SEEK_SET);
        for (char start[kStartSize]; std::fread(start, 1, sizeof start, stream) == sizeof start;) {
            const SectionHeader header = DecodeSectionHeader(start);
            if (IsLast(header, start)) {
                break;
            }
            position += header.length;
            std::fseek(stream, position, SEEK_SET);
        }
        benchmark::DoNotOptimize(position);
        std::fclose(stream);
    }
}

void FindByMmap(benchmark::State& state, const CaptureShape& shape) {
    const char* path = Capture(shape);
    for (auto _ : state) {
        const int file = ::open(path, O_RDONLY | O_CLOEXEC);
        struct stat info {};
        ::fstat(file, &info);
        const auto size = static_cast<std::size_t>(info.st_size);
        const auto* bytes = static_cast<const char*>(::mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0));
        std::size_t position = kFirstSectionOffset;
        while (position + kStartSize <= size) {
            const SectionHeader header = DecodeSectionHeader(bytes + position);
            if (IsLast(header, bytes + position)) {
                break;
            }
            position += header.length;
        }
        benchmark::DoNotOptimize(position);
        ::munmap(const_cast<char*>(bytes), size);
        ::close(file);
    }
}

Family FindFamily(const std::string& what, const CaptureShape& shape, double limit) {
    const auto on = [shape](auto find) { return [=](benchmark::State& state) { find(state, shape); }; };
    return {what,
            {{kOurs, on(FindOurs)},
             {"pread walk", on(FindByPread)},
             {"stdio walk", on(FindByStdio)},
             {"mmap walk", on(FindByMmap)}},
            {{kBestPeer, limit}}};
}

const Family kSmall = FindFamily("find the last of 100,000 with 64 B", {100'000, 64}, 1.3);
const Family kPages = FindFamily("find the last of 100,000 with 4 KiB", {100'000, 4096}, 1.15);
const Family kLarge = FindFamily("find the last of 20,000 with 64 KiB", {20'000, 65536}, 1.15);

}  // namespace
