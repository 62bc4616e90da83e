#include "tests/tool/Accident.h"

#include <algorithm>
#include <regex>

namespace stmdcm {

namespace {

std::vector<std::string> Split(const std::string& text) {
    std::vector<std::string> lines(1);
    for (const char c : text) {
        if (c == '\n') {
            lines.emplace_back();
        } else {
            lines.back() += c;
        }
    }
    return lines;
}

std::string Join(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += (&line == &lines.front() ? "" : "\n") + line;
    }
    return text;
}

bool IsOneLineBlock(const std::string& line) { return line.starts_with("{type"); }

/// A text of any length, or a whole number.
bool SaysAValue(const std::string& line) {
    static const std::regex kValue("(#[^=]*|name|probe|formula|unit)=[^]*|[A-Za-z0-9_]+[ =]+-?[0-9]+[.]?");
    return std::regex_match(line, kValue);
}

}  // namespace

Accident AccidentMaker::Damage(const std::string& text, bool passesOver) {
    Lines lines = Split(text);
    Accident accident;
    accident.what = Change(lines, accident.isPlausible);
    if (passesOver && (accident.what.starts_with("dropped") || accident.what.ends_with("-> "))) {
        accident.isPlausible = true;
    }
    accident.text = Join(lines);
    return accident;
}

/// Where there are blocks, most often one of theirs.
std::size_t AccidentMaker::AnyLine(const Lines& lines) {
    const auto block =
        std::find_if(lines.begin(), lines.end(), [](const std::string& line) { return line.starts_with('{'); });
    const auto first = block == lines.end() || Below(4) == 0 ? 0 : block - lines.begin();
    return static_cast<std::size_t>(first) + Below(lines.size() - static_cast<std::size_t>(first));
}

std::string AccidentMaker::Change(Lines& lines, bool& isPlausible) {
    const std::size_t at = AnyLine(lines);
    std::string& line = lines[at];
    const std::string was = line;
    const auto place = lines.begin() + static_cast<std::ptrdiff_t>(at);
    switch (Below(6)) {
        case 0:
            isPlausible = line.starts_with('#') || IsOneLineBlock(line);
            lines.erase(place);
            return "dropped: " + was;
        case 1:
            lines.insert(place, was);
            return "doubled: " + was;
        case 2:
            line.resize(Below(line.size() + 1));
            isPlausible = SaysAValue(line) || (line.empty() && IsOneLineBlock(was));
            return "cut: " + was + " -> " + line;
        case 3:
            if (line == "{") {
                const auto end = std::find(place, lines.end(), "}");
                lines.erase(place, end == lines.end() ? end : end + 1);
                isPlausible = true;
                return "dropped: block";
            }
            break;
        case 4:
            if (const std::size_t brace = line.find_first_of("{}"); brace != std::string::npos) {
                isPlausible = !IsOneLineBlock(line) && SaysAValue(line);
                line.erase(brace, 1);
                return "brace: " + was;
            }
            break;
        default:
            break;
    }
    std::string text = Join(lines);
    if (!text.empty()) {
        const std::size_t begin = Join({lines.begin(), place}).size();
        text[std::min(begin + Below(line.size() + 2), text.size() - 1)] = '\0';
        lines = {text};
    }
    return "zeroed in: " + was;
}

}  // namespace stmdcm
