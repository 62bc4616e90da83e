#include "tool/output/Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Words.h"

namespace stmdcm {

namespace {

using namespace std::chrono_literals;

constexpr auto kDelay = 1s;
constexpr auto kTerminalInterval = 100ms;
constexpr auto kLineInterval = 1s;

}  // namespace

bool Progress::IsShown(bool isAskedFor) { return isAskedFor || ::isatty(STDERR_FILENO) == 1; }

Progress::Progress(std::string what, std::optional<std::uint64_t> total, bool isAskedFor, Unit unit)
    : m_what(std::move(what)),
      m_total(total),
      m_unit(unit),
      m_isTerminal(::isatty(STDERR_FILENO) == 1),
      m_isShown(IsShown(isAskedFor)),
      m_begin(Clock::now()),
      m_next(m_begin + kDelay) {}

Progress::~Progress() { Clear(); }

void Progress::Clear() {
    if (m_isLineOpen) {
        std::fputs("\r\x1b[K", stderr);
        std::fflush(stderr);
        m_isLineOpen = false;
    }
}

void Progress::Update(std::uint64_t done) {
    const Clock::time_point now = m_isShown ? Clock::now() : Clock::time_point();
    if (!m_isShown || now < m_next) {
        return;
    }
    const std::string line = Line(done, std::chrono::duration<double>(now - m_begin).count());
    std::fputs(m_isTerminal ? ("\r" + line + "\x1b[K").c_str() : (line + "\n").c_str(), stderr);
    std::fflush(stderr);
    m_isLineOpen = m_isTerminal;
    m_next = now + (m_isTerminal ? Clock::duration(kTerminalInterval) : Clock::duration(kLineInterval));
}

std::string Progress::Line(std::uint64_t done, double seconds) const {
    const auto amount = static_cast<double>(done);
    const double rate = amount / seconds;
    const std::string speed = fmt::format("{}/s", InWords(static_cast<std::uint64_t>(rate)));
    if (!m_total) {
        return fmt::format("{}: {}, {}", m_what, InWords(done), speed);
    }
    const auto total = static_cast<double>(*m_total);
    const double percent = *m_total == 0 ? 100.0 : 100.0 * amount / total;
    const std::string left = rate > 0 ? fmt::format(", {:.0f} s left", (total - amount) / rate) : "";
    const std::string part = m_unit == Unit::Bytes ? InWords(done) : fmt::format("{}", done);
    return fmt::format("{}: {:.0f}% ({} of {}), {}{}", m_what, percent, part, InWords(*m_total), speed, left);
}

std::string Progress::InWords(std::uint64_t amount) const {
    return m_unit == Unit::Bytes ? SizeInWords(amount) : Counted(amount, "file");
}

}  // namespace stmdcm
