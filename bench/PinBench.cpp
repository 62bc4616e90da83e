// Pinning a sparse image of 1 GiB, and the hash library's own loop over it, which is as fast as it can get.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <nettle/sha2.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

#include "bench/Ratios.h"
#include "source_utilities/PosixFile.h"
#include "stmdcm/pins/ImageExaminer.h"
#include "tests/support/ScratchDir.h"

namespace {

constexpr char kHashLibrary[] = "the hash library's own loop";
constexpr std::uintmax_t kSize = std::uintmax_t{1} << 30;

/// Made once, removed at the end of the program.
const std::string& Image() {
    static const stmdcm_test::ScratchDir directory;
    static const std::string path = [] {
        const std::string made = directory / "image.out";
        stmdcm_test::WriteWhole(made, "");
        std::filesystem::resize_file(made, kSize);
        stmdcm::ImageExaminer().Identify(made);  // it is in memory then, whoever comes first
        return made;
    }();
    return path;
}

void HashLibraryAlone(benchmark::State& state) {
    Image();
    for (auto _ : state) {
        const auto file = ZU_WEP::PosixFile::Open(Image().c_str(), O_RDONLY);
        static std::array<std::uint8_t, 128 << 10> piece;
        sha256_ctx hash;
        sha256_init(&hash);
        for (std::uint64_t done = 0; done < kSize; done += piece.size()) {
            benchmark::DoNotOptimize(file.ReadAt(done, piece.data(), piece.size()));
            sha256_update(&hash, piece.size(), piece.data());
        }
        sha256_digest(&hash, SHA256_DIGEST_SIZE, piece.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(kSize) * state.iterations());
}

void PinImage(benchmark::State& state) {
    Image();
    for (auto _ : state) {
        benchmark::DoNotOptimize(stmdcm::ImageExaminer().Identify(Image()));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(kSize) * state.iterations());
}

const stmdcm_bench::Family kPinning("pin 1 GiB", {{stmdcm_bench::kOurs, PinImage}, {kHashLibrary, HashLibraryAlone}},
                                    {{kHashLibrary, 1.1}});

}  // namespace
