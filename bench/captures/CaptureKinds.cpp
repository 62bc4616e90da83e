#include "bench/captures/CaptureKinds.h"

#include <fmt/format.h>

#include <string_view>
#include <vector>

#include "bench/UsecaseTexts.h"
#include "stmdcm/pins/PinSection.h"
#include "tests/support/SectionList.h"
#include "tests/tool/Damage.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/RetiredSection.h"
#include "trace/format/SettingsText.h"
#include "trace/format/StmPropertyTable.h"
#include "trace/format/StmSections.h"

namespace stmdcm_bench {

using namespace Zu::Wep::Trace;
using namespace std::string_view_literals;

namespace {

constexpr std::int64_t kRecorded = 1700000000;
constexpr std::size_t kLargestTrace = 1500;
constexpr char kGone[] = "/srv/builds/gone";

constexpr std::array kHostile = {
    "<script>alert(1)<!--"sv, "\"quoted\"; rm -rf"sv, "=1+2"sv,        "caf\xc3\xa9"sv, "no\xff\xfeutf8"sv,
    "two\nlines"sv,           "tab\there"sv,          "{{}}<style>"sv, "'; --"sv,       "\xe2\x80\xaegnirts"sv,
    "\x1b[31mred"sv};

using Generator = GeneratedFile (*)(Random&, const std::string&);

std::string Settings(Random& random) {
    StmProperties properties;
    properties.traceClockHz = static_cast<std::int32_t>(1000000 * (1 + random.Below(400)));
    properties.targetClockHz = static_cast<std::int32_t>(1000000 * (1 + random.Below(2000)));
    for (std::size_t changed = random.Below(6); changed > 0; --changed) {
        const StmProperty& property = random.OneOf(kStmProperties);
        if (property.flag != nullptr) {
            properties.*property.flag = random.OneIn(2);
        } else {
            properties.*property.integer = static_cast<std::int32_t>(random.Below(random.OneIn(4) ? 0xffffffff : 128));
        }
    }
    std::string text;
    AppendPropertyLines(properties, text);
    return text + UsecaseText(random.Below(4));
}

/// Some of the images are there as recorded, some with another time, and some are not there.
std::string ObjectFiles(Random& random, const std::string& images) {
    std::string payload;
    for (std::size_t i = random.Below(3); i > 0; --i) {
        const std::string folder = random.OneIn(3) ? kGone : images;
        const std::string name = random.OneIn(20) ? std::string(random.OneOf(kHostile)) : fmt::format("core{}", i);
        AppendObjectFileEntry(payload, {name, fmt::format("{}/app{}.out", folder, random.Below(4)),
                                        kRecorded + (random.OneIn(5) ? 60 : 0)});
    }
    return payload;
}

std::string Trace(Random& random) {
    return stmdcm::MakeSection("TRACE0", 1,
                               std::string(random.Below(kLargestTrace), static_cast<char>(random.Below(256))));
}

std::string Stm(Random& random, std::uint32_t version = kStmSectionVersion) {
    return stmdcm::MakeSection(kStmSectionName, version, Settings(random));
}

std::string Begin(Random& random, const std::string& images) {
    return std::string(kTDFIdentifier) + Trace(random) +
           stmdcm::MakeSection(kDeviceSectionName, kDeviceSectionVersion,
                               random.OneIn(9) ? "STM_ATB_Id=9\n" : "board=7\n") +
           stmdcm::MakeSection(kCommonSectionName, kCommonSectionVersion, ObjectFiles(random, images));
}

std::string WholeBytes(Random& random, const std::string& images) { return Begin(random, images) + Stm(random); }

GeneratedFile Whole(Random& random, const std::string& images) { return {WholeBytes(random, images), ".tdf"}; }

GeneratedFile ChangedOften(Random& random, const std::string& images) {
    std::string bytes = Begin(random, images);
    const std::size_t changes = 1 + random.Below(8);
    for (std::uint32_t number = 1; number <= changes; ++number) {
        const bool isUndone = random.OneIn(6);
        bytes += Stm(random, isUndone ? Undone(kStmSectionVersion, number) : Retired(kStmSectionVersion, number));
    }
    return {bytes + Stm(random), random.OneIn(20) ? ".TDF" : ".tdf"};
}

GeneratedFile SavedAgain(Random& random, const std::string& images) {
    std::string bytes = WholeBytes(random, images);
    bytes += stmdcm::MakeSection(kCommonSectionName, kCommonSectionVersion, ObjectFiles(random, images)) + Stm(random);
    return {bytes + (random.OneIn(2) ? stmdcm::MakeSection("unfinished", 1, Stm(random)) : ""), ".tdf"};
}

GeneratedFile Pinned(Random& random, const std::string& images) {
    const stmdcm::ImageIdentity another{random.Below(4096), std::string(stmdcm::kSha256Size, 'h'), "id"};
    const std::string pins = stmdcm::EncodePins({{"core1", 0, another}});
    return {WholeBytes(random, images) + stmdcm::MakeSection(stmdcm::kPinSectionName, stmdcm::kPinSectionVersion, pins),
            ".tdf"};
}

GeneratedFile Torn(Random& random, const std::string& images) {
    const std::string bytes = WholeBytes(random, images);
    return {bytes.substr(0, random.Below(bytes.size())), ".tdf"};
}

/// Its images are not there: half of a path would be a folder, of which what is told changes while others write there.
GeneratedFile DamagedSomehow(Random& random, const std::string& /*images*/) {
    std::vector<stmdcm::Damaged> damages = stmdcm::Damages(WholeBytes(random, kGone));
    return {std::move(damages[random.Below(damages.size())].bytes), ".tdf"};
}

GeneratedFile Empty(Random& random, const std::string&) { return {"", random.OneIn(3) ? ".dcm" : ".tdf"}; }

GeneratedFile SettingsFile(Random& random, const std::string&) {
    const std::string text = Settings(random);
    if (random.OneIn(2)) {
        return {text, ".dcm"};
    }
    std::vector<stmdcm::Damaged> accidents = stmdcm::Accidents(text, false);
    return {std::move(accidents[random.Below(accidents.size())].bytes), ".dcm"};
}

/// As often in a hundred as it stands here.
struct Share {
    std::size_t percent;
    Generator generate;
};
constexpr Share kShares[] = {{45, Whole}, {16, ChangedOften},  {7, SavedAgain},   {3, Pinned},
                             {11, Torn},  {9, DamagedSomehow}, {8, SettingsFile}, {1, Empty}};

}  // namespace

GeneratedFile GenerateFile(Random& random, const std::string& images) {
    std::size_t place = random.Below(100);
    const Share* share = kShares;
    while (place >= share->percent) {
        place -= share++->percent;
    }
    return share->generate(random, images);
}

std::string GenerateName(Random& random, std::size_t number) {
    return random.OneIn(50) ? fmt::format("{} {}", random.OneOf(kHostile), number) : fmt::format("run{:06}", number);
}

}  // namespace stmdcm_bench
