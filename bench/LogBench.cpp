// One log line, written through to the file.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <string_view>

#include "bench/Ratios.h"
#include "bench/ScratchCapture.h"
#include "source_utilities/uLogger.h"

namespace {

using namespace stmdcm_bench;

void LogOurs(benchmark::State& state) {
    const ScratchFile file(".txt");
    ZU_WEP::uLogger logger(file.Path().c_str(), true);
    for (auto _ : state) {
        logger.Log(ZU_WEP::LogInformation, ZU_WEP::uLogger::TIME_STAMP, "STM Device DCM: %s = %d", "Stm_NumPins", 4);
    }
}

void LogSpdlog(benchmark::State& state) {
    const ScratchFile file(".txt");
    const auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(file.Path());
    spdlog::logger logger("bench", sink);
    logger.set_pattern("%L     %H:%M:%S:%e | %v");
    logger.flush_on(spdlog::level::info);
    for (auto _ : state) {
        logger.info("STM Device DCM: {} = {}", "Stm_NumPins", 4);
    }
}

void WriteReadyLine(benchmark::State& state) {
    const ScratchFile file(".txt");
    const int descriptor = ::open(file.Path().c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    constexpr std::string_view kLine = "M     14:03:59:512 | STM Device DCM: Stm_NumPins = 4\n";
    for (auto _ : state) {
        benchmark::DoNotOptimize(::write(descriptor, kLine.data(), kLine.size()));
    }
    ::close(descriptor);
}

const Family kLine{"one log line, flushed",
                   {{kOurs, LogOurs}, {"spdlog, flushed", LogSpdlog}, {"write of the ready line", WriteReadyLine}},
                   {{"spdlog, flushed", 1.0}, {"write of the ready line", 1.4}}};

}  // namespace
