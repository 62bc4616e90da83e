#include "tool/output/Console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "source_utilities/PosixFile.h"
#include "stmdcm/Failure.h"
#include "stmdcm/reading/Words.h"

namespace stmdcm {

Console::Console(ColorMode mode)
    : m_out(Palette::For(STDOUT_FILENO, mode)), m_error(Palette::For(STDERR_FILENO, mode)) {}

Console Console::Into(Told& told) const {
    Console other = *this;
    other.m_told = &told;
    return other;
}

void Console::ToStandardOutput(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(STDOUT_FILENO, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            throw Failure(fmt::format("standard output can't be written: {}", ZU_WEP::ErrnoText(errno)),
                          Failure::Kind::Output);
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

void Console::ToStandardError(const std::string& text) {
    // Not by fmt, which throws where it can't be written: what the command does is not changed by that.
    std::fputs(text.c_str(), stderr);
}

void Console::Print(std::string_view text) const {
    if (m_told != nullptr) {
        m_told->out += text;
    } else {
        ToStandardOutput(text);
    }
}

void Console::Diagnose(std::string_view sentence) const {
    const std::string line = fmt::format("{} {}\n", m_error.Paint(Style::Bad, "stmdcm:"), Escaped(sentence));
    if (m_told != nullptr) {
        m_told->error += line;
    } else {
        ToStandardError(line);
    }
}

void Console::Diagnose(const std::vector<std::string>& sentences) const {
    for (const std::string& sentence : sentences) {
        Diagnose(sentence);
    }
}

void Console::Diagnose(const std::string& file, const std::vector<std::string>& doubts) const {
    for (const std::string& doubt : doubts) {
        Diagnose(fmt::format("{}: {}", Shown(file), doubt));
    }
}

}  // namespace stmdcm
