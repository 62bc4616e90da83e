#include "tests/tool/Damage.h"

#include <fmt/format.h>

#include <algorithm>

#include "tests/support/SectionList.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kPlaces = 6;

std::string Zeroed(std::string bytes, std::size_t at, std::size_t count) {
    return bytes.replace(at, std::min(count, bytes.size() - at), std::min(count, bytes.size() - at), '\0');
}

void DamageSections(const std::string& bytes, std::vector<Damaged>& damages) {
    const std::vector<SectionInfo> sections = SectionList(bytes);
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const SectionInfo& section = sections[i];
        const std::uint32_t next = i + 1 < sections.size() ? sections[i + 1].length : 100;
        for (const std::uint32_t length :
             {0U, 5U, section.length - 1, section.length + 1, section.length + next, 0x7fffffffU}) {
            const std::string field = EncodeSectionStart(length, "", 0).substr(0, SectionHeader::kLengthSize);
            damages.push_back({fmt::format("length of section {} is {}", i, length),
                               std::string(bytes).replace(section.offset, field.size(), field)});
        }
        damages.push_back({fmt::format("section {} has lost a byte of its name", i),
                           Zeroed(bytes, section.offset + SectionHeader::kSize, 1)});
        const std::size_t end = section.offset + section.length;
        if (i + 1 < sections.size() && end + next <= bytes.size()) {
            damages.push_back({fmt::format("sections {} and {} are swapped", i, i + 1),
                               bytes.substr(0, section.offset) + bytes.substr(end, next) +
                                   bytes.substr(section.offset, section.length) + bytes.substr(end + next)});
        }
    }
}

}  // namespace

std::vector<Damaged> Damages(const std::string& bytes) {
    std::vector<Damaged> damages = {{"nothing", bytes}, {"doubled", bytes + bytes}};
    for (std::size_t i = 0; i < kPlaces && !bytes.empty(); ++i) {
        const std::size_t at = (bytes.size() * (2 * i + 1)) / (2 * kPlaces);
        damages.push_back({fmt::format("byte {} is zero", at), Zeroed(bytes, at, 1)});
        damages.push_back({fmt::format("cut to {}", at), bytes.substr(0, at)});
        damages.push_back({fmt::format("cut to {}", bytes.size() - i - 1), bytes.substr(0, bytes.size() - i - 1)});
    }
    for (std::size_t at = 0; at < bytes.size(); at += kPage) {
        damages.push_back({fmt::format("the page at {} is zero", at), Zeroed(bytes, at, kPage)});
    }
    if (bytes.starts_with(kTDFIdentifier)) {
        damages.push_back({"the identifier is zero", Zeroed(bytes, 0, kTDFIdentifier.size())});
        damages.push_back({"the identifier is gone", bytes.substr(kTDFIdentifier.size())});
        DamageSections(bytes, damages);
    }
    return damages;
}

std::vector<Damaged> Accidents(const std::string& text, bool passesOver) {
    std::vector<Damaged> accidents;
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
        end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        const auto add = [&](const char* what, const std::string& now) {
            accidents.push_back({what + (": " + line), text.substr(0, begin) + now + text.substr(end)});
        };
        add("doubled", line + "\n" + line);
        for (const std::size_t at : {std::size_t{0}, line.size() / 2}) {
            add("zeroed", line.substr(0, at) + '\0' + line.substr(std::min(at + 1, line.size())));
        }
        const std::size_t brace = line.find_first_of("{}"), key = line.find('=');
        if (brace == 0) {
            add("without its brace", line.substr(1));
        } else if (!passesOver && key != line.npos) {
            add("cut", line.substr(0, key / 2));
        }
    }
    return accidents;
}

}  // namespace stmdcm
