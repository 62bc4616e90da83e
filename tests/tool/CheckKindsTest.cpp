#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "stmdcm/capture/Retired.h"
#include "tests/support/ScratchDir.h"
#include "tests/tool/CheckInputs.h"

namespace stmdcm {

namespace fs = std::filesystem;
using stmdcm_test::ReadWhole;
using stmdcm_test::ScratchDir;
using stmdcm_test::WriteWhole;
using namespace std::string_literals;

namespace {

const std::string kSc = "{\nid=1\njobid=1\n}\n";
const std::string kSc2 = "{\nid=2\njobid=2\n}\n";
const std::string kCpt = "{\ntype=CPT\nsid=1\n}\n";
const std::string kPmi = "{\ntype=PMI_CMI\nname=PMI\n}\n";

struct Case {
    std::string input;
    std::string expected;  ///< every identifier that it gives, in the order of the table
};

/// Settings texts: the first ones on their own, the others behind all properties.
const Case kLooseTexts[] = {
    {"", "F-EMPTY"},
    {" \n", "T-NOTHING T-FINAL-LINE-FEED T-NOT-SET"},
    {"STM_ATB_Id = 1", "T-NOT-SET"},
    {"STM_ATB_Id = 1\nSTM_Colour = 3\nSTM_STP_Version = 4\n", "T-UNKNOWN-KEY T-NOT-READ T-NOT-SET"},
    {"STM_ATB_Id = 1\n\nSTM_STP_Version = 4\n" + kSc, "T-BLANK-LINE T-NOT-READ T-NOT-SET"},
};

const Case kTexts[] = {
    {"", "T-FINAL-LINE-FEED"},
    {kSc, ""},
    {kSc + kSc2 + kCpt + kPmi, ""},
    {"\n" + kSc, "T-BLANK-LINE"},
    {"\n\n" + kSc, "T-BLANK-LINE U-BLANK-LINE U-NOT-READ"},
    {"STM_ATB_Id =\n" + kSc, "T-NO-VALUE"},
    {"type=SC\n" + kSc, "T-UNKNOWN-KEY"},
    {"STM_ATB_Id 1 MHz\n" + kSc, "T-NO-EQUALS T-EXTRA-FIELD T-DUPLICATE"},
    {"STM_ATB_Id = word\n" + kSc, "T-DUPLICATE T-NOT-A-NUMBER"},
    {"STM_ATB_Id = 0x10\n" + kSc, "T-DUPLICATE T-PARTLY-NUMBER"},
    {"STM_DTC_target_clock_hz = 2.5\n" + kSc, "T-DUPLICATE T-PARTLY-NUMBER"},
    {"STM_DTC_target_clock_hz = 2.5e8\n" + kSc, "T-DUPLICATE"},
    {"STM_DTC_target_clock_hz = inf\n" + kSc, "T-DUPLICATE T-NUMBER-WRAPPED"},
    {"HEAD_Pointer_0 = 4294967296\n" + kSc, "T-DUPLICATE T-NUMBER-WRAPPED"},
    {"HEAD_Pointer_0 = 4294967295\n" + kSc, "T-DUPLICATE T-NUMBER-SIGN"},
    {"HEAD_Pointer_0 = -2147483648\n" + kSc, "T-DUPLICATE"},
    {"STM_data_flip = 00\n" + kSc, "T-DUPLICATE T-NOT-0-OR-1"},
    {"STM_ATB_Id = 1" + std::string(1000, ' ') + "\r\n" + kSc, "T-DUPLICATE"},
    {"STM_ATB_Id = 1" + std::string(1000, ' ') + "x\n" + kSc, "T-DUPLICATE T-LINE-CUT"},
    {"STM_ATB_Id = 1\0\n"s + kSc, "T-DUPLICATE T-ZERO-BYTE"},
    {"{type=SC,id=1}\n{type=CPT}", ""},
    {"{type=SC,id=1}\r\n{type=CPT}", "T-PARTLY-NUMBER T-PACKED-CR"},
    {"{type=SC,id=12", "T-PACKED-END"},
    {"{type=SC,id=1}\nx = 1\nSTM_ATB_Id = 3", "T-UNKNOWN-KEY T-PACKED-REST"},
    {"{type=SC,id=1}\n" + kSc, "T-MIXED-BLOCKS"},
    {kSc + "{type=SC,id=2}\n" + kSc2, "T-MIXED-BLOCKS U-NOT-READ"},
    {"{\nname=" + std::string(122, 'n') + "\n}\n", "T-LINE-CUT"},
    {"{\nid=1\n", "U-UNCLOSED"},
    {"{\nid=1", "U-UNCLOSED"},
    {"{\nid=1\n" + kSc2, "U-UNCLOSED U-NOT-READ"},
    {"{\nid=1\n\n}\n" + kSc2, "U-BLANK-IN-BLOCK U-NOT-READ"},
    {"{\nid 1\n}\n" + kCpt, "U-NO-EQUALS"},
    {kSc + "\n" + kSc2, "U-BLANK-LINE U-NOT-READ"},
    {kPmi + "\n" + kSc, ""},
    {"{\ntype=XY\n}\n" + kSc, "U-UNKNOWN-TYPE"},
    {"{\nid=1\ntype=CPT\n}\n", "U-LATE-TYPE"},
    {"{ id=1\nid=1\n}\n", "U-OPENER-TEXT"},
    {kSc + "{ x\nid=2\n}\n", "U-NOT-READ U-OPENER-TEXT"},
    {"{\n}\n", "U-EMPTY-BLOCK U-SOURCE"},
    {kSc + "STM_ATB_Id = 5\n" + kSc2, "U-STRAY-LINE"},
    {"{\nname = x\n}\n", "U-UNKNOWN-KEY"},
    {"{\nid=1\nid=2\n}\n", "U-KEY-TWICE"},
    {"{\n#1=a\n#1=b\n}\n", "U-COUNTER-TWICE"},
    {"{\n#x=a\n}\n", "T-NOT-A-NUMBER"},
    {"{\nsuppress=2\nsw=4294967295\njobid=4294967295\n}\n", "T-NUMBER-SIGN T-NOT-0-OR-1"},
    {"{\nname=a\rb\n}\n", ""},
    {kSc + kSc, "U-DUPLICATE"},
    {kPmi + kPmi, "U-DUPLICATE"},
    {"{\ntype=PMI_CMI\nname=CMI2\n}\n", "U-SOURCE"},
    {"{\n/$\nformula=#0:10\n$/\n}\n", ""},
    {"{\n/$\nformula=10\nx\n$/\n}\n", "U-FORMULA-LINE U-FORMULA-TAG"},
    {"{\n/$\nformula=a:1234\n$/\n}\n", "U-FORMULA-TAG"},
    {"{\n/$\nformula=a:1\n\n}\n", "U-FORMULA-OPEN"},
    {"{\n/$\nformula=a:1\n}\n" + kSc, "U-UNCLOSED U-NOT-READ U-FORMULA-OPEN"},
    {"{\n/$\n", "U-FORMULA-EMPTY"},
};

/// The text of STMDECODERINFO has no limits for its lines, other than those of the blocks.
const Case kSections[] = {
    {"", ""},
    {"{\nname=" + std::string(251, 'n') + "\n}\n", "U-LINE-LENGTH"},
    {"{\nname=" + std::string(122, 'n') + "\n}\n", "U-CUT-ON-SAVE"},
    {"{\nname=" + std::string(121, 'n') + "\n}\n", ""},
};

const Case kDeviceTexts[] = {
    {"board=7\n\nSTM_ATB_Id = 1\n", ""},
    {"lonely\nSTM_ATB_Id = 9\n", "D-NO-VALUE D-OVERRIDDEN"},
};

const Case kCommons[] = {
    {ObjectFileEntryBytes("a", "/no/such/file", 1), "O-MISSING"},
    {ObjectFileEntryBytes("a", STMDCM_TEST_DATA "/full.tdf", 1), "O-CHANGED"},
    {ObjectFileEntryBytes("a", "", 1), "O-EMPTY-PATH"},
    {ObjectFileEntryBytes("a", "", 1) + ObjectFileEntryBytes("a", "", 1), "O-EMPTY-PATH O-DUPLICATE"},
    {ObjectFileEntryBytes("a", "", 1).substr(0, 9), "O-TRUNCATED"},
};

/// Bytes behind a capture without a fault.
const Case kTails[] = {
    {"x", "C-TRAILING-BYTES"},
    {"12345", "C-TORN-HEADER"},
    {SectionBytes("TRACE", 1, "abc", 5), "C-TORN-PAYLOAD"},
    {SectionBytes("Z", 1, "", -13) + SectionBytes("STMDECODERINFO", 1, ""), "C-LENGTH-ZERO C-UNREACHABLE"},
    {SectionBytes("SHORT", 1, "", -1), "C-TRAILING-BYTES C-LENGTH-SHORT"},
    {SectionBytes("LONG", 1, "", 0x8000000) + SectionBytes("DEVID", 1, ""), "C-LENGTH-LIMIT C-UNREACHABLE"},
    {SectionBytes(std::string(4096, 'n'), 1, "") + SectionBytes("TRACE", 1, ""), "C-NAME-LIMIT C-UNREACHABLE"},
    {SectionBytes("a\xff", 1, ""), "C-NAME-ODD"},
    {SectionBytes("DEVID", 1, ""), "C-SHADOWED"},
    {SectionBytes("DEVID", 2, ""), "C-OTHER-VERSION"},
    {SectionBytes("TRACE", 2, "") + SectionBytes("TRACE", 2, ""), "C-REPEATED"},
    {SectionBytes("DEVID", Retired(1), ""), "C-RETIRED"},
};

const Case kCaptures[] = {
    {"TDF2", "C-NO-COMMON C-NO-DEVID C-NO-STM"},
    {"TDF1", "F-NO-CAPTURE"},
    {CaptureParts{"", "", ""}.Bytes(), "C-EMPTY-DEVID C-EMPTY-STM"},
};

class CheckKindsTest : public testing::Test {
  protected:
    Reading Check(const std::string& name, const std::string& bytes) {
        WriteWhole(m_directory / name, bytes);
        return Take(CheckFile(m_directory / name, std::nullopt));
    }

    template <class Cases, class Bytes>
    void Expect(const std::string& name, const Cases& cases, Bytes bytes) {
        for (const Case& c : cases) {
            EXPECT_EQ(Identifiers(Check(name, bytes(c.input))), c.expected) << name << ": " << c.input.substr(0, 300);
        }
    }

    Reading Take(Reading report) {
        for (const FindingKind& kind : kFindingKinds) {
            if (report.findings.Count(kind) > 0) {
                m_met.insert(kind.id);
            }
        }
        return report;
    }

    ScratchDir m_directory;
    std::set<std::string> m_met;
};

/// A file of any size with sections of the greatest length at its beginning.
void WriteLargeCapture(const std::string& path, std::uint64_t size) {
    std::ofstream out(path, std::ios::binary);
    out << "TDF2";
    for (std::uint64_t offset = Zu::Wep::Trace::FirstSectionOffset; offset < size;
         offset += Zu::Wep::Trace::MaxSectionLength) {
        out.seekp(static_cast<std::streamoff>(offset));
        out << SectionBytes("TRACE", 1, "", Zu::Wep::Trace::MaxSectionLength - 17);
    }
    out.close();
    fs::resize_file(path, size);
}

}  // namespace

TEST_F(CheckKindsTest, EachInputGivesItsIdentifiersAndEachIdentifierHasAnInput) {
    const auto with = [](std::string CaptureParts::*part) {
        return [part](const std::string& input) {
            CaptureParts parts;
            parts.*part = input;
            return parts.Bytes();
        };
    };
    const auto withProperties = [&](const std::string& text) {
        return with(&CaptureParts::settings)(AllProperties() + text);
    };
    const auto asIs = [](const std::string& bytes) { return bytes; };
    Expect("settings.txt", kLooseTexts, asIs);
    Expect("settings.txt", kTexts, [](const std::string& text) { return AllProperties() + text; });
    Expect("section.tdf", kSections, withProperties);
    Expect("device.tdf", kDeviceTexts, with(&CaptureParts::device));
    Expect("common.tdf", kCommons, with(&CaptureParts::common));
    Expect("tail.TDF", kTails, [](const std::string& tail) { return CaptureParts{}.Bytes() + tail; });
    Expect("bytes.tdf", kCaptures, asIs);

    const std::string tooLarge = m_directory / "large.txt";
    WriteWhole(tooLarge, "STM_ATB_Id = 7\n" + AllProperties());
    fs::resize_file(tooLarge, (128 << 20) + 1);
    EXPECT_TRUE(Identifiers(Take(CheckFile(tooLarge))).starts_with("F-TOO-LARGE "));

    EXPECT_EQ(Identifiers(Check("capture.bin", CaptureParts{}.Bytes())), "F-EXTENSION");
    EXPECT_EQ(Identifiers(Take(CheckFile(m_directory.Path(), std::nullopt))), "F-UNREADABLE");
    std::string many = CaptureParts{}.Bytes();
    for (std::size_t i = 0; i < Container::kMaxSections; ++i) {
        many += SectionBytes("", 7, "");
    }
    EXPECT_EQ(Identifiers(Check("many.tdf", many)), "C-REPEATED C-TOO-MANY");
    for (const std::uint64_t over : {0U, 9U}) {
        WriteLargeCapture(m_directory / "large.tdf", Zu::Wep::Trace::MaxFileSize + over);
        EXPECT_EQ(
            Identifiers(Take(CheckFile(m_directory / "large.tdf", std::nullopt))),
            std::string(over > 0 ? "C-OVER-4GIB " : "") + "C-PAST-4GIB C-REPEATED C-NO-COMMON C-NO-DEVID C-NO-STM");
    }

    for (const FindingKind& kind : kFindingKinds) {
        EXPECT_TRUE(m_met.contains(kind.id)) << kind.id << " is produced by no input";
    }
}

TEST_F(CheckKindsTest, SamplesGiveTheirIdentifiers) {
    const Case cases[] = {
        {"empty-decoder.tdf", "C-EMPTY-STM"},
        {"empty-devid.tdf", "C-EMPTY-DEVID"},
        {"empty.tdf", "C-NO-COMMON C-NO-DEVID C-NO-STM"},
        {"full.tdf", "D-NO-VALUE D-OVERRIDDEN O-MISSING"},
        {"huge-length.tdf", "C-LENGTH-LIMIT C-UNREACHABLE C-NO-DEVID C-NO-STM"},
        {"malformed-common.tdf", "O-TRUNCATED O-MISSING"},
        {"no-devid.tdf", "C-NO-DEVID"},
        {"orphan-payload.tdf", "C-LENGTH-LIMIT C-UNREACHABLE C-NO-STM D-NO-VALUE"},
        {"packed.tdf", ""},
        {"settings-crlf.txt", ""},
        {"settings-long-line.txt", "T-NOT-SET T-NUMBER-WRAPPED T-LINE-CUT"},
        {"settings-not-a-number.txt", "T-NOT-SET T-NOT-A-NUMBER T-NUMBER-WRAPPED"},
        {"settings-packed.txt", "T-FINAL-LINE-FEED"},
        {"settings-unknown-key.txt", "T-UNKNOWN-KEY T-NOT-READ T-NOT-SET"},
        {"settings.txt", ""},
        {"shadowed.tdf", "C-SHADOWED C-OTHER-VERSION"},
        {"short-length.tdf", "C-LENGTH-SHORT C-NAME-LIMIT C-UNREACHABLE C-NO-STM T-ZERO-BYTE D-NO-VALUE"},
        {"torn-header.tdf", "C-TORN-HEADER D-NO-VALUE D-OVERRIDDEN"},
        {"torn-payload.tdf", "C-TORN-PAYLOAD D-NO-VALUE D-OVERRIDDEN U-UNCLOSED U-FORMULA-OPEN"},
        {"unterminated-common.tdf", "O-TRUNCATED"},
        {"wrong-magic.tdf", "F-NO-CAPTURE"},
        {"zero-length.tdf", "C-LENGTH-ZERO C-UNREACHABLE C-NO-COMMON C-NO-DEVID C-NO-STM"},
    };
    std::set<std::string> known;
    for (const Case& c : cases) {
        EXPECT_EQ(Identifiers(CheckFile(STMDCM_TEST_DATA "/" + c.input, std::nullopt)), c.expected) << c.input;
        known.insert(c.input);
    }
    for (const auto& entry : fs::directory_iterator(STMDCM_TEST_DATA)) {
        EXPECT_TRUE(known.contains(entry.path().filename())) << entry.path();
    }
}

TEST_F(CheckKindsTest, RepeatedFindingsAreCounted) {
    std::string bytes = CaptureParts{}.Bytes();
    for (int i = 0; i < 3000; ++i) {
        bytes += SectionBytes("TRACE", 1, "");
    }
    const Reading report = Check("many.tdf", bytes);
    EXPECT_EQ(report.findings.Count(Kind("C-REPEATED")), 2999U);
    EXPECT_EQ(report.findings.Sorted().size(), Findings::kMaxOfKind);
}

TEST_F(CheckKindsTest, PlacesNameSectionOffsetAndLine) {
    CaptureParts parts;
    parts.settings += "{\nid=1\nsw=word\n}\n";
    const Reading report = Check("place.tdf", parts.Bytes());
    const auto findings = report.findings.Sorted();
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].kind, &Kind("U-NOT-SET"));
    EXPECT_EQ(findings[0].what, "the block does not set name, jobid, probe, suppress");
    EXPECT_EQ(findings[0].place.line, 27U);
    EXPECT_EQ(findings[1].place.section, "STMDECODERINFO");
    EXPECT_EQ(findings[1].place.offset, 51U);
    EXPECT_EQ(findings[1].place.line, 29U);
    EXPECT_EQ(findings[1].effect, "reads as 0");
}

TEST_F(CheckKindsTest, TheDocumentListsTheKinds) {
    std::istringstream document(ReadWhole(STMDCM_TEST_DATA "/../../docs/check.md"));
    std::string listed;
    for (std::string line; std::getline(document, line);) {
        if (line.size() > 5 && line.starts_with("| `") && line[4] == '-') {
            listed += line + "\n";
        }
    }
    std::string expected;
    for (const FindingKind& kind : kFindingKinds) {
        expected += "| `" + std::string(kind.id) + "` | " + SeverityName(kind.severity) + " | " + kind.meaning + " |\n";
    }
    EXPECT_EQ(listed, expected);
}

}  // namespace stmdcm
