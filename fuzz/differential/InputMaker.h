#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/ScratchDir.h"

namespace stmdcm_test {

using std::literals::operator""sv;

inline std::set<std::filesystem::path> FilesIn(const char* directory) {
    return {std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator()};
}

/// What inputs are made of beside chance: the samples of tests/data and the names of the properties.
struct Samples {
    std::vector<std::string> texts, captures;
    std::string properties;  ///< with "|" between them

    Samples() {
        for (const auto& file : FilesIn(STMDCM_TEST_DATA)) {
            (file.extension() == ".tdf" ? captures : texts).push_back(ReadWhole(file));
        }
        std::istringstream in(ReadWhole(STMDCM_TEST_DATA "/settings.txt"));
        for (std::string name; in >> name && name != "{"; std::getline(in, name)) {
            properties += (properties.empty() ? "" : "|") + name;
        }
    }
};

inline std::string LittleEndian(std::uint64_t number, std::size_t bytes) {
    std::string text;
    for (; text.size() < bytes; number >>= 8) {
        text += static_cast<char>(number & 255);
    }
    return text;
}

inline std::string SectionBytes(const std::string& name, const std::string& payload, std::uint64_t version = 1,
                                std::uint64_t lengthLie = 0, std::uint64_t nameLie = 0) {
    return LittleEndian(12 + name.size() + payload.size() + lengthLie, 4) + LittleEndian(version, 4) +
           LittleEndian(name.size() + nameLie, 4) + name + payload;
}

constexpr std::int64_t kImageTime = 1700000000;  ///< of the object file "image0"; "image1" is a second younger

/// Makes inputs by chance: the same for the same seed, in one build of the program.
class InputMaker {
  public:
    InputMaker(std::uint64_t seed, const Samples& samples) : m_random(seed), m_samples(samples) {}

    std::size_t Below(std::size_t end) { return m_random() % end; }
    bool OneIn(std::size_t count) { return Below(count) == 0; }
    template <class List>
    const auto& Pick(const List& list) {
        return list[Below(std::size(list))];
    }
    /// One of the words that "|" separates.
    std::string Word(std::string_view words) {
        for (auto skip = Below(1 + static_cast<std::size_t>(std::count(words.begin(), words.end(), '|')));
             skip-- > 0;) {
            words.remove_prefix(words.find('|') + 1);
        }
        return std::string(words.substr(0, words.find('|')));
    }

    std::string Value() {
        return OneIn(3) ? std::to_string(static_cast<std::int32_t>(Below(1ULL << 32)))
                        : Word(
                              "|0|00|1|no|-1|12abc|0x10|+7|2.5e8|-2.9|1e300|nan|-inf|2147483648|4294967296|99999999999|"
                              "-9223372036854775809|PMI|CMI0|CMI1|mod0|a b|#0:10+#1:10|X:123/Y|:7|a:-12|a,b|x\0y|1 \0|"
                              "1\r2|port\tb|x=1=2|\xe4"sv);
    }

    std::string SettingsText() {
        std::string text = OneIn(3) ? Pick(m_samples.texts) : Repeat(16, &InputMaker::PropertyLine);
        text += (OneIn(5) ? Repeat(3, &InputMaker::PackedBlock) : "") + Repeat(5, &InputMaker::Block);
        text = OneIn(2) ? ChangeLines(text) : text;
        text = OneIn(4) ? ChangeBytes(text) : text;
        return text.substr(0, text.size() - (OneIn(3) && !text.empty() ? 1 : 0));
    }

    std::string Capture() {
        if (OneIn(4)) {
            return ChangeBytes(Pick(m_samples.captures));
        }
        std::vector<std::string> parts{Section("TRACE0", std::string(Below(40), '\1')),
                                       Section("DEVID", Repeat(4, &InputMaker::PropertyLine)),
                                       Section("DCM_COMMON", ObjectFiles()), Section("STMDECODERINFO", SettingsText())};
        for (std::size_t changes = OneIn(3) ? Below(4) : 0; changes > 0; --changes) {
            const std::string other = Pick(parts);
            std::string& part = parts[Below(parts.size())];
            part = OneIn(3) ? "" : OneIn(2) ? other : other + part;
        }
        std::string bytes = OneIn(50) ? "TDF3" : "TDF2";
        for (const std::string& part : parts) {
            bytes += part;
        }
        bytes.append(OneIn(8) ? Below(40) : 0, '\0');
        return OneIn(4) ? ChangeBytes(bytes) : bytes;
    }

  private:
    static constexpr std::uint64_t kRetired = 0x80000001;  ///< the version of a section that a newer one replaced
    static constexpr std::string_view kStrays =
        "{ x\n|}\n|\n|\n\n|\r\n|x\n|/$\n|$/\n| \t\n|\0\n|STM_ATB_Id = 7\n|type=CPT\n|type=SC\n|{\n"sv;

    std::string Repeat(std::size_t most, std::string (InputMaker::*make)()) {
        std::string text;
        for (std::size_t times = Below(most + 1); times > 0; --times) {
            text += (this->*make)();
        }
        return text;
    }

    /// Now and then behind so many characters that the line is at one of the limits, some of them blanks at its end.
    std::string EndLine(std::string line) {
        static constexpr std::size_t limits[] = {126, 127, 255, 999, 4095};
        if (OneIn(10)) {
            line.resize(std::max(line.size() + 3, Pick(limits) + Below(5) - 2), 'x');
            line.replace(line.size() - 3, Below(4), Below(4), Pick(" \t\r"));
        }
        return line + (OneIn(16) ? Word(" \n|\r\n|\t \r\n|\0\n| x\n|\n\n"sv) : "\n");
    }

    std::string PropertyLine() {
        const std::string name = Word(OneIn(30) ? "|CycleModeDelta|stm_atb_id|STM_ATB_I|{|{x" : m_samples.properties);
        return EndLine(Word("|||||| |\t") + name + Word(" = | = |=| |\t=\t|= =\r | \0= "sv) + Value());
    }

    std::string KeyLine() {
        return EndLine(
            Word("id|sid|name|name|jobid|probe|sw|suppress|cr|df|do|mode|#0|#1|#x|#4294967295|ID|id ||type") + "=" +
            Value());
    }

    std::string FormulaLine() { return EndLine(Word("name=|formula=|unit=|ofmask=|formula|}") + Value()); }

    std::string BlockLine() {
        const std::size_t kind = Below(40);
        return kind > 2    ? KeyLine()
               : kind == 2 ? Word(kStrays)
                           : EndLine("/$") + Repeat(5, &InputMaker::FormulaLine) + (OneIn(6) ? "" : EndLine("$/"));
    }

    std::string Block() {
        const std::string open = EndLine(OneIn(15) ? "{ x" : "{");
        const std::string type = Word("|||SC\n|SC\n|CPT\n|CPT\n|CPT\n|PMI_CMI\n|PMI_CMI\n|SC \n|X\n|\n");
        return open + (type.empty() ? "" : "type=" + type) + Repeat(9, &InputMaker::BlockLine) +
               (OneIn(12) ? "" : EndLine("}")) + (OneIn(9) ? Word(kStrays) : "");
    }

    std::string PackedField() {
        const std::string line = OneIn(6) ? Word("/$|$/|") : OneIn(6) ? FormulaLine() : KeyLine();
        return "," + line.substr(0, line.find('\n'));
    }

    std::string PackedBlock() {
        return EndLine(Word("{type=SC|{type=CPT|{type=PMI_CMI|{type|{type=SC,,") + Repeat(8, &InputMaker::PackedField) +
                       Word("}|}|}|}|"));
    }

    /// What editors and accidents do: lines are swapped, doubled, cut, lost, put in; all ends change.
    std::string ChangeLines(const std::string& text) {
        std::vector<std::string> lines{""};
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);) {
            lines.push_back(line + '\n');
        }
        for (std::size_t changes = Below(4); changes > 0; --changes) {
            std::string& line = lines[Below(lines.size())];
            std::string& other = lines[Below(lines.size())];
            switch (Below(6)) {
                case 0:
                    std::swap(line, other);
                    break;
                case 1:
                    line += line;
                    break;
                case 2:
                    line.resize(Below(line.size() + 1));
                    break;
                default:
                    line = (OneIn(2) ? "" : line) + (OneIn(2) ? PropertyLine() : OneIn(2) ? Block() : Word(kStrays));
            }
        }
        std::string result;
        const std::string lineEnd = OneIn(8) ? "\r\n" : "\n";
        for (const std::string& line : lines) {
            result += line.ends_with('\n') ? line.substr(0, line.size() - 1) + lineEnd : line;
        }
        return result;
    }

    std::string ChangeBytes(std::string bytes) {
        for (std::size_t changes = Below(4); changes > 0 && !bytes.empty(); --changes) {
            bytes.replace(Below(bytes.size()), Below(2), 1,
                          OneIn(2) ? static_cast<char>(Below(256)) : Pick("\n\r\t {}="));
        }
        return bytes.substr(0, OneIn(4) ? Below(bytes.size() + 1) : bytes.size());
    }

    /// Relative paths alone: a byte changed in an absolute one makes it a directory's, whose time is anybody's. Saved
    /// ones become absolute where the host answers so.
    std::string ObjectFiles() {
        std::string payload;
        for (std::size_t entries = Below(5); entries > 0; --entries) {
            payload += Word("core0|core1|app|X_core0|") + '\0' + Word("image0|image0|image0|image1|none|") + '\0';
            payload += LittleEndian(OneIn(8) ? m_random() : kImageTime + Below(2), 8);
        }
        return OneIn(6) ? ChangeBytes(payload) : payload;
    }

    /// One of eighteen has something wrong with its name, payload, version or lengths.
    std::string Section(std::string name, const std::string& payload) {
        static constexpr std::uint64_t lies[] = {0, 1, 40, 5000, 0x10000, 0x8000000, 0x80000000, ~0ULL, ~11ULL, ~40ULL};
        const std::size_t wrong = Below(90);
        if (wrong == 0) {
            name = Word("DEVID|STMDECODERINFO||devid|DEVID\0|"sv);
            name.resize(OneIn(2) ? name.size() : 4094 + Below(4), 'x');
        }
        const std::uint64_t lie = Pick(lies) + Below(2) - (OneIn(2) ? 12 + name.size() + payload.size() : 0);
        return SectionBytes(name, wrong == 1 ? ChangeBytes(payload) : payload,
                            wrong == 2   ? lie
                            : wrong == 3 ? kRetired
                                         : 1,
                            wrong == 4 ? lie : 0, wrong == 5 ? lie : 0);
    }

    std::mt19937_64 m_random;
    const Samples& m_samples;
};

}  // namespace stmdcm_test
