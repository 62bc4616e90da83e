// Finding the last of 100,000 sections in a sparse capture of 3.9 GiB, and appending one.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/support/AppendSection.h"
#include "trace/format/SectionLayout.h"
#include "trace/tdf/TDFHandler.h"

namespace {

using namespace Zu::Wep::Trace;

constexpr unsigned kSections = 100'000;
constexpr std::uint32_t kSectionLength = 41'800;  // 3.9 GiB in all
constexpr unsigned kLastVersion = 7;

/// A file of this run, removed at its end.
class TemporaryFile {
  public:
    TemporaryFile() : m_descriptor(::mkstemps(m_path, 4)) {
        if (m_descriptor < 0) {
            std::perror(m_path);
            std::exit(1);
        }
    }
    ~TemporaryFile() { ::unlink(m_path); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const char* Path() const { return m_path; }
    void WriteAt(std::uint64_t offset, const std::string& bytes) const {
        if (::pwrite(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset)) < 0) {
            std::perror(m_path);
            std::exit(1);
        }
    }

  private:
    char m_path[32] = "/tmp/stmdcm-bench-XXXXXX.tdf";
    int m_descriptor;
};

const char* LargeCapture() {
    static const TemporaryFile file;
    static const bool filled = [] {
        file.WriteAt(0, std::string(kTDFIdentifier));
        for (unsigned i = 0; i < kSections; ++i) {
            const unsigned version = i + 1 == kSections ? kLastVersion : 1;
            file.WriteAt(kFirstSectionOffset + std::uint64_t{i} * kSectionLength,
                         EncodeSectionStart(kSectionLength, "TRACE0", version));
        }
        return ::truncate(file.Path(), kFirstSectionOffset + std::uint64_t{kSections} * kSectionLength) == 0;
    }();
    return filled ? file.Path() : "";
}

void FindOurs(benchmark::State& state) {
    const char* path = LargeCapture();
    for (auto _ : state) {
        unsigned position = 0, length = 0;
        TDFHandler().GetSectionDataPosition(path, "TRACE0", kLastVersion, position, length);
        benchmark::DoNotOptimize(position);
    }
}

/// How one walks such a file with nothing but the C library.
void FindWithStdio(benchmark::State& state) {
    const char* path = LargeCapture();
    for (auto _ : state) {
        std::FILE* stream = std::fopen(path, "rb");
        long position = kFirstSectionOffset;
        char start[SectionHeader::kSize + 6];
        std::fseek(stream, position, SEEK_SET);
        while (std::fread(start, 1, sizeof start, stream) == sizeof start) {
            const SectionHeader header = DecodeSectionHeader(start);
            if (header.version == kLastVersion && std::memcmp(start + SectionHeader::kSize, "TRACE0", 6) == 0) {
                break;
            }
            position += header.length;
            std::fseek(stream, position, SEEK_SET);
        }
        benchmark::DoNotOptimize(position);
        std::fclose(stream);
    }
}

const std::string kPayload(4096, 'x');

void AppendOurs(benchmark::State& state) {
    const TemporaryFile file;
    file.WriteAt(0, std::string(kTDFIdentifier));
    for (auto _ : state) {
        stmdcm_test::AppendSection(file.Path(), "BENCH", 1, kPayload);
        state.PauseTiming();
        if (::truncate(file.Path(), kFirstSectionOffset) != 0) std::exit(1);
        state.ResumeTiming();
    }
}

void AppendInTwoSteps(benchmark::State& state) {
    const TemporaryFile file;
    file.WriteAt(0, std::string(kTDFIdentifier));
    for (auto _ : state) {
        unsigned offset = 0, length = 0;
        TDFHandler().SaveSectionHeader(file.Path(), "BENCH", 1, offset);
        TDFHandler().SaveSectionData(file.Path(), "BENCH", offset, kPayload.data(), 1,
                                     static_cast<unsigned>(kPayload.size()), length);
        const int descriptor = ::open(file.Path(), O_RDONLY | O_CLOEXEC);
        ::fdatasync(descriptor);
        ::close(descriptor);
        state.PauseTiming();
        if (::truncate(file.Path(), kFirstSectionOffset) != 0) std::exit(1);
        state.ResumeTiming();
    }
}

BENCHMARK(FindOurs)->Name("find section 100,000/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(FindWithStdio)->Name("find section 100,000/peer: fread and fseek")->Unit(benchmark::kMillisecond);
BENCHMARK(AppendOurs)->Name("append 4 KiB, synced/ours")->UseRealTime();
BENCHMARK(AppendInTwoSteps)->Name("append 4 KiB, synced/peer: the two-step protocol, then a sync")->UseRealTime();

}  // namespace
