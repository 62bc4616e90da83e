#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "stmdcm/pins/ImageExaminer.h"
#include "stmdcm/reading/Portability.h"
#include "tests/support/ScratchDir.h"
#include "tests/tool/CheckInputs.h"

namespace stmdcm {

namespace fs = std::filesystem;
using stmdcm_test::ReadWhole;
using stmdcm_test::ScratchDir;
using stmdcm_test::WriteWhole;

namespace {

class CheckKindsTest : public testing::Test {
  protected:
    Reading Check(const std::string& name, const std::string& bytes) {
        WriteWhole(m_directory / name, bytes);
        ImageExaminer examiner;
        return Take(CheckFile(m_directory / name, std::nullopt, &examiner));
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
    for (std::uint64_t offset = Zu::Wep::Trace::kFirstSectionOffset; offset < size;
         offset += Zu::Wep::Trace::kMaxSectionLength) {
        out.seekp(static_cast<std::streamoff>(offset));
        out << MakeSection("TRACE", 1, "", Zu::Wep::Trace::kMaxSectionLength - 17);
    }
    out.close();
    fs::resize_file(path, size);
}

}  // namespace

TEST_F(CheckKindsTest, EachInputGivesItsIdentifiersAndEachIdentifierHasAnInput) {
    for (const CheckInput& input : CheckInputs()) {
        EXPECT_EQ(Identifiers(Check(input.name, input.bytes)), input.expected)
            << input.name << ": " << input.bytes.substr(0, 2000);
    }

    const std::string large = m_directory / "large.txt";
    WriteWhole(large, "STM_ATB_Id = 7\n" + AllProperties());
    for (const std::uintmax_t over : {0U, 1U}) {
        fs::resize_file(large, (128 << 20) + over);
        EXPECT_EQ(Identifiers(Take(CheckFile(large))).starts_with("F-TOO-LARGE "), over > 0);
    }

    EXPECT_EQ(Identifiers(Check("capture.bin", CaptureParts{}.Bytes())), "F-EXTENSION");
    EXPECT_EQ(Identifiers(Take(CheckFile(m_directory.Path(), std::nullopt))), "F-UNREADABLE");
    std::string many = CaptureParts{}.Bytes();
    for (std::size_t i = 3; i < Container::kMaxSections; ++i) {
        many += MakeSection("", 7, "");
    }
    const Findings repeated = Check("many.tdf", many).findings;
    EXPECT_EQ(repeated.Count(Kind("C-REPEATED")), Container::kMaxSections - 4);
    EXPECT_EQ(repeated.Sorted().size(), Findings::kMaxOfKind);
    EXPECT_EQ(Identifiers(Check("many.tdf", many + MakeSection("", 7, ""))), "C-REPEATED C-TOO-MANY");
    for (const std::uint64_t over : {0U, 9U}) {
        WriteLargeCapture(m_directory / "large.tdf", Zu::Wep::Trace::kMaxFileSize + over);
        EXPECT_EQ(
            Identifiers(Take(CheckFile(m_directory / "large.tdf", std::nullopt))),
            std::string(over > 0 ? "C-OVER-4GIB " : "") + "C-PAST-4GIB C-REPEATED C-NO-COMMON C-NO-DEVID C-NO-STM");
    }
    // A tail of zeros is space for a save.
    for (const auto& [name, canSave] : {std::pair("large.tdf", false), {"zeros.tdf", true}}) {
        const std::string file = m_directory / name;
        if (canSave) {
            WriteWhole(file, CaptureParts{}.Bytes());
            fs::resize_file(file, Zu::Wep::Trace::kMaxFileSize + 9);
        }
        const auto findings = Take(CheckFile(file, std::nullopt)).findings.Sorted();
        const auto over = std::find_if(findings.begin(), findings.end(),
                                       [](const Finding& each) { return each.kind == &Kind("C-OVER-4GIB"); });
        ASSERT_NE(over, findings.end());
        EXPECT_EQ(over->effect.find("nothing can be saved") == std::string::npos, canSave) << over->effect;
    }

    CaptureParts elsewhere{"STM_ATB_Id = 7\n", "board=7\n", ObjectFileEntryBytes("a", "/none/a", 1)};
    elsewhere.common += ObjectFileEntryBytes("b", "b", 1);
    Reading portable = Check("elsewhere.tdf", elsewhere.Bytes());
    CheckPortability(portable, [](const ObjectFile& file) { return file.name == "a"; });
    EXPECT_EQ(Identifiers(Take(std::move(portable))),
              "T-NOT-SET P-CLOCK-DEFAULT O-MISSING M-PATH M-NOT-PINNED M-SETTINGS");

    for (const FindingKind& kind : kFindingKinds) {
        EXPECT_TRUE(m_met.contains(kind.id)) << kind.id << " is produced by no input";
    }
}

TEST_F(CheckKindsTest, PlacesNameSectionOffsetAndLine) {
    CaptureParts parts;
    parts.settings += "{\nid=1\nsw=word\n#1=a\n}\n";
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
    const std::string next = document.str().substr(document.str().find("## What to do next"));
    for (const FindingKind& kind : kFindingKinds) {
        EXPECT_EQ(next.find("`" + std::string(kind.id) + "`") != std::string::npos, kind.next != nullptr) << kind.id;
    }
}

}  // namespace stmdcm
