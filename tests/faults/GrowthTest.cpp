// What hostile input costs: for 2n and 4n of anything at most a little more than two and four times the instructions
// that n takes, counted and not timed.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>

#include "tests/faults/FaultTest.h"
#include "tests/support/KillAtSyscall.h"
#include "tests/support/SectionList.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"
#include "trace/format/UnfinishedSection.h"

namespace stmdcm_test {
namespace {

using stmdcm::MakeSection;
using namespace Zu::Wep::Trace;

/// Where the pieces of a family stand in a capture.
enum class Place { Front, Behind, Objects, Text, Block };

struct Family {
    const char* name;
    Place place;
    unsigned pieces;      ///< the n of n, 2n and 4n
    const char* command;  ///< the one that is tried outside the soak, if any
    std::string (*piece)(unsigned number);
};

std::string Number(unsigned n) { return std::to_string(n); }
std::string Entry(const std::string& name) {
    std::string entry;
    AppendObjectFileEntry(entry, {name, "/opt/images/" + name, 1'700'000'000});
    return entry;
}
std::string Stm(unsigned version, unsigned n) {
    return MakeSection(kStmSectionName, version, "STM_ATB_Id=" + Number(n) + "\n");
}
std::string Formula(const std::string& name) { return "/$\nname=" + name + "\nformula=#0:10\nunit=u\nofmask=1\n$/\n"; }

const Family kFamilies[] = {
    {"sections", Place::Front, 2000, nullptr, [](unsigned n) { return MakeSection("TRACE" + Number(n), 1, "x"); }},
    {"longnames", Place::Front, 100, nullptr, [](unsigned n) { return MakeSection(std::string(4000, 'n'), n, "x"); }},
    {"zerosections", Place::Front, 2000, "recover", [](unsigned) { return MakeSection("", 0, ""); }},
    {"sectionswithinheaders", Place::Front, 500, nullptr,
     [](unsigned) { return EncodeSectionStart(4, "", 5) + std::string(8, '\4'); }},
    {"unfinished", Place::Behind, 500, nullptr, [](unsigned) { return MakeSection("unfinished", 1, Entry("a")); }},
    {"interrupted", Place::Behind, 500, "check",
     [](unsigned n) { return MakeSection("unfinished", 1, Entry("a")) + Stm(1, n); }},
    {"shadowed", Place::Behind, 500, nullptr, [](unsigned n) { return Stm(1, n); }},
    {"retired", Place::Behind, 200, "history", [](unsigned n) { return Stm(0x80000001, n); }},
    {"torn", Place::Behind, 500, nullptr, [](unsigned n) { return MakeSection("TORN", 1, "x").substr(0, 5 + n % 9); }},
    {"lengthsbeyond", Place::Behind, 500, nullptr, [](unsigned) { return EncodeSectionStart(0x7000000, "DEVID", 1); }},
    {"zeros", Place::Behind, 500, nullptr, [](unsigned) { return std::string(1000, '\0'); }},
    {"headersinpayload", Place::Front, 500, "recover",
     [](unsigned) { return std::string(20, '\0') + EncodeSectionStart(64, "STMDECODERINFO", 1); }},
    {"objects", Place::Objects, 500, "objects", [](unsigned n) { return Entry("core" + Number(n)); }},
    {"sameobjects", Place::Objects, 500, "diff", [](unsigned) { return Entry("core"); }},
    {"properties", Place::Text, 2000, nullptr, [](unsigned n) { return "STM_ATB_Id=" + Number(n) + "\n"; }},
    {"unknownlines", Place::Text, 2000, "check", [](unsigned n) { return "key" + Number(n) + "=1\n"; }},
    {"longlines", Place::Text, 50, nullptr, [](unsigned) { return std::string(2000, 'l') + "\n"; }},
    {"oneline", Place::Text, 500, nullptr, [](unsigned) { return std::string(100, 'l'); }},
    {"openers", Place::Text, 500, "check", [](unsigned) { return std::string("{\n"); }},
    {"closers", Place::Text, 500, nullptr, [](unsigned) { return std::string("}\n"); }},
    {"usecases", Place::Text, 200, "save-capture", [](unsigned n) { return "{\nid=" + Number(n) + "\nname=m\n}\n"; }},
    {"sameusecases", Place::Text, 200, "diff", [](unsigned) { return std::string("{\nid=1\nname=m\n}\n"); }},
    {"packed", Place::Text, 200, "apply", [](unsigned n) { return "{type=CPT,sid=" + Number(n) + ",jobid=1}\n"; }},
    {"counters", Place::Block, 300, "load-capture", [](unsigned n) { return "#" + Number(n) + "=c\n"; }},
    {"samecounters", Place::Block, 300, nullptr, [](unsigned) { return std::string("#1=c\n"); }},
    {"formulas", Place::Block, 300, "convert", [](unsigned n) { return Formula("f" + Number(n)); }},
    {"sameformulas", Place::Block, 300, "diff", [](unsigned) { return Formula("f"); }},
};

const std::vector<std::vector<std::string>> kGrowthCommands = {
    {"show", "a.tdf"},
    {"check", "a.tdf"},
    {"sections", "a.tdf"},
    {"history", "a.tdf"},
    {"objects", "a.tdf"},
    {"diff", "a.tdf", "b.tdf"},
    {"convert", "a.tdf", "out.txt", "--force"},
    {"recover", "a.tdf", "-o", "out.tdf", "--force"},
    {"set", "a.tdf", "STM_ATB_Id=42"},
    {"apply", "b.tdf", "a.tdf", "--force"},
    {"load-capture", "once"},  // a host
    {"save-capture", "once"},
};

/// Of the instructions that are added from 2n to 4n, to those from n to 2n: 2 if they are in proportion, 4 if
/// quadratic.
constexpr double kMostGrowth = 2.4;
constexpr double kNoise = 100'000;

class GrowthTest : public testing::TestWithParam<Family> {
  protected:
    /// So many pieces, from the first or from the last on.
    static std::string Capture(unsigned count, bool isReversed) {
        std::string pieces;
        for (unsigned i = 0; i < count; ++i) {
            pieces += GetParam().piece(isReversed ? count - 1 - i : i);
        }
        const auto at = [&](Place place) { return GetParam().place == place ? pieces : ""; };
        const std::string text = "STM_ATB_Id=12\n" + at(Place::Text) + "{\nid=1\nname=n\n" + at(Place::Block) + "}\n";
        return BareCapture() + at(Place::Front) +
               MakeSection(kCommonSectionName, 1, Entry("core") + at(Place::Objects)) +
               MakeSection(kStmSectionName, 1, text) + at(Place::Behind);
    }

    /// Of a command, the program's start included.
    std::uint64_t Instructions(unsigned count, const std::vector<std::string>& arguments) const {
        const std::string capture = Capture(count, false);
        m_machine.Reset({{"a.tdf", capture},
                         {"b.tdf", Capture(count, true)},
                         {"full.tdf", capture},
                         {"many.tdf", capture},
                         {"bare.tdf", capture}});
        const bool isHost = arguments.back() == "once";
        std::vector<std::string> command{STMDCM_VALGRIND, "--tool=cachegrind", "--cache-sim=no",
                                         "--cachegrind-out-file=/dev/null", isHost ? STMDCM_FAULT_HOST : STMDCM_TOOL};
        command.insert(command.end(), isHost ? 1 : 0, STMDCM_PLUGIN);
        command.insert(command.end(), arguments.begin(), arguments.end());
        const FaultResult result = m_machine.Run(command);
        const std::size_t place = result.error.rfind("I   refs:");
        EXPECT_LT(result.status, 128) << arguments.front() << " of " << count;
        if (place == result.error.npos) {
            ADD_FAILURE() << result.error;
            return 0;
        }
        std::string digits = result.error.substr(place + 9);
        digits.erase(std::remove_if(digits.begin(), digits.end(), [](char c) { return c < '0' || c > '9'; }),
                     digits.end());
        return std::stoull(digits);
    }

    FaultMachine m_machine;
};

TEST_P(GrowthTest, IsNoWorseThanNTimesItsLogarithm) {
    if (kIsSanitized || !std::filesystem::exists(STMDCM_VALGRIND)) {
        GTEST_SKIP() << "counted in a release, with valgrind, which scripts/setup installs";
    }
    for (const std::vector<std::string>& arguments : kGrowthCommands) {
        if (!IsSoak() && (GetParam().command == nullptr || arguments.front() != GetParam().command)) {
            continue;
        }
        const unsigned n = GetParam().pieces;
        const std::uint64_t once = Instructions(n, arguments), twice = Instructions(2 * n, arguments),
                            fourTimes = Instructions(4 * n, arguments);
        std::printf("%-24s %-9s %12lu %12lu %12lu\n", GetParam().name, arguments.front().c_str(), once, twice,
                    fourTimes);
        EXPECT_LT(static_cast<double>(fourTimes) - static_cast<double>(twice),
                  kMostGrowth * (static_cast<double>(twice) - static_cast<double>(once)) + kNoise);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, GrowthTest, testing::ValuesIn(kFamilies),
                         [](const auto& family) { return family.param.name; });

}  // namespace
}  // namespace stmdcm_test
