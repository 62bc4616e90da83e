#include "tool/output/Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

namespace stmdcm {

namespace {

using namespace std::chrono_literals;

constexpr auto kDelay = 1s;
constexpr auto kTerminalInterval = 100ms;
constexpr auto kLineInterval = 1s;

}  // namespace

Progress::Progress(std::string what, std::uint64_t total, Show show)
    : m_what(std::move(what)),
      m_total(total),
      m_isTerminal(::isatty(STDERR_FILENO) == 1),
      m_isShown(m_isTerminal || show == Show::Always),
      m_next(Clock::now() + kDelay) {}

Progress::~Progress() {
    if (m_isLineOpen) {
        std::fputs("\r\x1b[K", stderr);
        std::fflush(stderr);
    }
}

void Progress::Update(std::uint64_t done) {
    if (!m_isShown || Clock::now() < m_next) {
        return;
    }
    const double percent = m_total == 0 ? 100.0 : 100.0 * static_cast<double>(done) / static_cast<double>(m_total);
    const std::string line =
        fmt::format("{}: {:.0f}% ({} of {})", m_what, percent, SizeInWords(done), SizeInWords(m_total));
    std::fputs(m_isTerminal ? ("\r" + line + "\x1b[K").c_str() : (line + "\n").c_str(), stderr);
    std::fflush(stderr);
    m_isLineOpen = m_isTerminal;
    m_next = Clock::now() + (m_isTerminal ? Clock::duration(kTerminalInterval) : Clock::duration(kLineInterval));
}

std::string SizeInWords(std::uint64_t bytes) {
    constexpr const char* kUnits[] = {"KiB", "MiB", "GiB", "TiB"};
    if (bytes < 1024) {
        return bytes == 1 ? "1 byte" : fmt::format("{} bytes", bytes);
    }
    double value = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    // What would be rounded up to 1024 takes the next unit.
    while (value >= 1023.95 && unit + 1 < std::size(kUnits)) {
        value /= 1024;
        ++unit;
    }
    return fmt::format("{:.1f} {}", value, kUnits[unit]);
}

}  // namespace stmdcm
