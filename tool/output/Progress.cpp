#include "tool/output/Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace {

using namespace std::chrono_literals;

constexpr auto kDelay = 1s;
constexpr auto kTerminalInterval = 100ms;
constexpr auto kLineInterval = 1s;

}  // namespace

Progress::Progress(std::string what, std::uint64_t total, bool isAskedFor)
    : m_what(std::move(what)),
      m_total(total),
      m_isTerminal(::isatty(STDERR_FILENO) == 1),
      m_isShown(m_isTerminal || isAskedFor),
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

}  // namespace stmdcm
