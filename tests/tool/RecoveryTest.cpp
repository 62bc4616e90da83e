#include <gtest/gtest.h>

#include <random>
#include <set>

#include "stmdcm/Failure.h"
#include "stmdcm/recover/RecoveryCheck.h"
#include "stmdcm/recover/RecoveryPlanner.h"
#include "stmdcm/recover/RecoveryWriter.h"
#include "tests/support/ScratchDir.h"
#include "tests/support/SectionList.h"
#include "trace/format/RetiredSection.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;
using stmdcm_test::ReadWhole;
using stmdcm_test::WriteWhole;

namespace {

struct StringSink final : ByteSink {
    void Write(std::string_view added) override { bytes += added; }
    std::string bytes;
};

struct Recovered {
    RecoveryPlan plan;
    std::string bytes;

    bool HasRemark(RemarkKind kind) const {
        const auto& listed = plan.remarks.Listed();
        return std::any_of(listed.begin(), listed.end(), [&](const Remark& remark) { return remark.kind == kind; });
    }
};

class RecoveryTest : public testing::Test {
  protected:
    Recovered Recover(const std::string& damaged, const RecoveryPlanner::Offsets& splits = {}) const {
        WriteWhole(m_directory / "damaged.tdf", damaged);
        const CaptureFile file(m_directory / "damaged.tdf", CaptureFile::Identifier::Optional);
        RecoveryPlanner planner(
            file, [](std::uint64_t) {}, splits);
        Recovered result{planner.Make(), {}};
        Recovered sketch{result.plan, {}};
        Finish(file, Payloads::All, result);
        if (++m_rounds % 8 == 0) {
            Finish(file, Payloads::OfConfiguration, sketch);
            EXPECT_EQ(Sentences(sketch), Sentences(result));
        }
        ExpectConsistent(damaged, result);
        return result;
    }

    /// The sections of the result, without their offsets.
    static std::multiset<std::string> SectionsOf(const std::string& capture) {
        std::multiset<std::string> sections;
        for (const SectionInfo& section : SectionList(capture)) {
            sections.insert(BytesOf(capture, section));
        }
        return sections;
    }

    static std::string BytesOf(const std::string& capture, const SectionInfo& section) {
        return capture.substr(section.offset, section.length);
    }

    std::string Full() const { return ReadWhole(STMDCM_TEST_DATA "/full.tdf"); }

  private:
    void Finish(const CaptureFile& file, Payloads payloads, Recovered& result) const {
        StringSink sink;
        WriteRecovery(file, result.plan, payloads, sink, [](std::uint64_t) {});
        result.bytes = std::move(sink.bytes);
        WriteWhole(m_directory / "result.tdf", result.bytes);
        CheckRecovery(m_directory / "result.tdf", result.plan);
    }

    static std::string Sentences(const Recovered& result) {
        std::string sentences;
        for (const Remark& remark : result.plan.remarks.Listed()) {
            sentences += remark.sentence + '\n';
        }
        return sentences;
    }

    /// Every byte is in the result or told to be dropped, and the result is a capture that a reader passes.
    static void ExpectConsistent(const std::string& damaged, const Recovered& result) {
        EXPECT_EQ(result.bytes.size(), result.plan.ResultSize());
        const auto& remarks = result.plan.remarks.Listed();
        const bool hasNoIdentifier = !remarks.empty() && remarks.front().kind == RemarkKind::Identifier;
        const std::uint64_t begin = hasNoIdentifier ? remarks.front().length : kFirstSectionOffset;
        EXPECT_EQ(result.bytes.size() - kFirstSectionOffset + result.plan.droppedBytes, damaged.size() - begin);
        EXPECT_EQ(SectionList(result.bytes).size(), result.plan.SectionCount());
        EXPECT_FALSE(result.HasRemark(RemarkKind::Mismatch) || result.HasRemark(RemarkKind::Unreachable));
        if (result.plan.IsGood()) {
            EXPECT_EQ(result.bytes, damaged);
        }
    }

    const stmdcm_test::ScratchDir m_directory{"/dev/shm"};  // in memory: there are tens of thousands of damaged files
    mutable std::size_t m_rounds = 0;
};

TEST_F(RecoveryTest, KeepsEveryWholeSectionOfEveryTruncation) {
    const std::string full = Full();
    const std::vector<SectionInfo> sections = SectionList(full);
    for (std::size_t size = 1; size < full.size() && !HasFailure(); ++size) {
        SCOPED_TRACE(size);
        const Recovered result = Recover(full.substr(0, size));
        EXPECT_FALSE(result.plan.IsGood());
        std::size_t end = kFirstSectionOffset;
        for (const SectionInfo& section : sections) {
            if (section.offset + section.length <= size) {
                EXPECT_EQ(BytesOf(result.bytes, section), BytesOf(full, section));
                end += section.length;
            }
        }
        // What was cut off is kept as far as it is there, but no part of a line.
        const std::vector<SectionInfo> kept = SectionList(result.bytes);
        if (!kept.empty() && kept.back().offset == end && IsTextSection(kept.back().name)) {
            EXPECT_TRUE(kept.back().payloadLength == 0 || result.bytes.back() == '\n');
        }
    }
}

/// Captures whose every section has a length of its own: another one would be seen.
std::vector<std::string> WholeCaptures(const std::string& full) {
    const std::string rest = MakeSection("DEVID", 1, "a=1\n") + MakeSection("DCM_COMMON", 1, "") +
                             MakeSection("TRACE1", 7, std::string(70, '\0')) +
                             MakeSection("STMDECODERINFO", 1, "STM_ATB_Id = 1\n");
    const std::string trace = MakeSection("TRACE0", 1, std::string(300, '\x11'));
    const std::string old = MakeSection("STMDECODERINFO", Retired(1), "STM_ATB_Id = 2\n");
    const std::string head(kTDFIdentifier);
    return {full, head + trace + rest + old, head + rest + trace, head + old + rest};
}

/// Calls with the input, the section whose length lies and the one that it leads to the end of, or into.
template <class Try>
void ForEachLie(const std::string& capture, const Try& attempt) {
    const std::vector<SectionInfo> sections = SectionList(capture);
    for (std::size_t i = 0; i < sections.size(); ++i) {
        for (std::size_t j = i + 1; j < sections.size(); ++j) {
            const std::uint32_t length = sections[j].length;
            for (const std::uint32_t part : {length, 1U, 5U, 12U, length / 2, length - 5, length - 1}) {
                for (const char* tail : {"", "\x05", "some bytes that are no section"}) {
                    SCOPED_TRACE(testing::Message() << i << " to " << part << " bytes into " << j << " " << tail);
                    attempt(Stating(capture, sections[i], sections[j].offset + part) + tail, i, j);
                }
            }
        }
    }
}

TEST_F(RecoveryTest, TellsEverySectionThatALengthSwallowsAndASplitGivesItBack) {
    for (const std::string& capture : WholeCaptures(Full())) {
        const std::vector<SectionInfo> sections = SectionList(capture);
        const std::multiset<std::string> all = SectionsOf(capture);
        ForEachLie(capture, [&](const std::string& input, std::size_t liar, std::size_t last) {
            const Recovered result = Recover(input);
            EXPECT_FALSE(result.plan.IsGood());
            const std::multiset<std::string> kept = SectionsOf(result.bytes);
            for (std::size_t i = liar + 1; i <= last; ++i) {
                const auto& listed = result.plan.remarks.Listed();
                const bool isTold = std::any_of(listed.begin(), listed.end(), [&](const Remark& remark) {
                    return remark.kind == RemarkKind::HiddenSection && remark.offset == sections[i].offset &&
                           remark.length == sections[i].length && remark.section == sections[i].name;
                });
                EXPECT_TRUE(isTold || kept.count(BytesOf(capture, sections[i])) > 0) << sections[i].name;
            }
            // Further splits change nothing, and the last one alone leaves the others where they were.
            const std::uint64_t first = sections[liar + 1].offset, end = sections[last].offset;
            EXPECT_EQ(SectionsOf(Recover(input, {first}).bytes), all);
            EXPECT_EQ(SectionsOf(Recover(input, {first, end}).bytes), all);
            EXPECT_EQ(SectionsOf(Recover(input, {end}).bytes).count(BytesOf(capture, sections[last])), 1U);
        });
    }
    for (const std::uint64_t offset : {5U, 0U, 1U << 30}) {
        EXPECT_THROW(Recover(Full(), {offset}), Failure);
    }
}

TEST_F(RecoveryTest, LosesNoSectionWithTheIdentifier) {
    for (const std::string& capture : WholeCaptures(Full())) {
        const std::string sections = capture.substr(kFirstSectionOffset);
        for (const std::size_t size : {0U, 4U, 1U, 2U, 3U, 5U, 8U, 11U, 12U, 13U, 16U, 17U, 40U, 255U, 256U, 5000U}) {
            for (const int filling : {0, 0xFF, 0x54, 1}) {
                SCOPED_TRACE(testing::Message() << size << " bytes of " << filling);
                const std::string input(size, static_cast<char>(filling));
                const Recovered result = Recover(input + sections);
                EXPECT_EQ(result.bytes, capture);
                EXPECT_TRUE(result.HasRemark(RemarkKind::Identifier));
                // A second fault, which breaks the chain, takes no more.
                const Recovered torn = Recover(input + sections.substr(0, sections.size() - 3));
                EXPECT_EQ(torn.plan.SectionCount(), SectionList(capture).size());
            }
        }
    }
}

TEST_F(RecoveryTest, LosesNoOtherSectionWhateverAHeaderSays) {
    const std::string full = Full();
    const std::vector<SectionInfo> sections = SectionList(full);
    for (const SectionInfo& damaged : sections) {
        for (std::size_t place = damaged.offset; place < damaged.payloadOffset; ++place) {
            for (int flip = 1; flip < 256 && !HasFailure(); ++flip) {
                SCOPED_TRACE(testing::Message() << "offset " << place << " flipped by " << flip);
                std::string input = full;
                input[place] = static_cast<char>(input[place] ^ flip);
                const Recovered result = Recover(input);
                const std::multiset<std::string> kept = SectionsOf(result.bytes);
                EXPECT_TRUE(!result.plan.IsGood() || kept.size() == sections.size());
                // Where the damage leads from header to header as if nothing was wrong, all bytes are as they were.
                for (const SectionInfo& other : sections) {
                    EXPECT_TRUE(kept.count(BytesOf(full, other)) > 0 || other.offset == damaged.offset ||
                                (result.bytes == input && !result.plan.IsGood()))
                        << other.name;
                }
            }
        }
    }
}

TEST_F(RecoveryTest, TellsWhatIsWrongAndKeepsTheRest) {
    const std::string head(kTDFIdentifier);
    const std::string trace = MakeSection("TRACE0", 1, std::string(300, '\x11'));
    const std::string device = MakeSection("DEVID", 1, "a=1\n");
    const std::string rest =
        device + MakeSection("DCM_COMMON", 1, "") + MakeSection("STMDECODERINFO", 1, "STM_ATB_Id = 1\n");
    const auto stating = [](const std::string& section, std::uint64_t length) { return Stating(section, {}, length); };
    const std::string orphan = stating(trace, SectionHeader::kSize + 6);
    const std::string embedded = MakeSection("EMBEDDED", 1, head + rest);
    const std::string torn = MakeSection("EMBEDDED", 1, head + rest + "DEV");
    const std::string holder = MakeSection("HOLDER", 1, "xyz" + device);
    const std::string retired = MakeSection("DEVID", Retired(1), "old=1\n");
    const std::string old = MakeSection("STMDECODERINFO", 1, "x = 1\n");
    // A save cut off behind a whole entry of its list: no later save may bring it in force.
    const std::string list = MakeSection("unfinished", 1, std::string("core0\0/a\0\7\0\0\0\0\0\0\0", 17));
    const std::string unfinished = stating(list, 800), text = MakeSection("STMDECODERINFO", 1, "STM_ATB_Id = 2\n");
    const std::string odd = MakeSection("\x01\x02", 1, "data");
    const struct {
        const char* what;
        std::string input;
        std::string output;
        std::optional<RemarkKind> remark;
    } cases[] = {
        {"nothing", head + trace + rest, head + trace + rest, {}},
        {"retired", head + retired + rest, head + retired + rest, {}},
        {"no name", head + MakeSection("", 1, "data") + rest, head + MakeSection("", 1, "data") + rest, {}},
        {"a capture in a section", head + embedded + rest, head + embedded + rest, RemarkKind::InnerCapture},
        {"a torn capture in a section", head + torn + rest, head + torn + rest, RemarkKind::HiddenSection},
        {"a section in a section", head + holder + rest, head + holder + rest, RemarkKind::HiddenSection},
        {"an odd name", head + odd + rest, head + odd + rest, RemarkKind::OddName},
        {"identifier", "TD\x01\x02" + trace + rest, head + trace + rest, RemarkKind::Identifier},
        {"length 0", head + stating(trace, 0) + rest, head + rest + trace, RemarkKind::LengthCorrected},
        {"length too great", head + stating(trace, 0x40000) + rest, head + rest + trace, RemarkKind::LengthCorrected},
        {"payload that no length covers", head + orphan + rest, head + rest + trace, RemarkKind::LengthCorrected},
        {"garbage between", head + trace + std::string(40, '\xEE') + rest, head + trace + rest, RemarkKind::Dropped},
        {"cut off", head + rest + trace.substr(0, 200), head + rest + stating(trace.substr(0, 200), 200),
         RemarkKind::CutShort},
        {"cut off in a line", head + rest + device.substr(0, device.size() - 1),
         head + rest + MakeSection("DEVID", 1, ""), RemarkKind::Dropped},
        {"cut off in the first line", head + device.substr(0, device.size() - 1), head + MakeSection("DEVID", 1, ""),
         RemarkKind::Empty},
        {"an unfinished save", head + rest + unfinished, head + rest, RemarkKind::Dropped},
        {"an unfinished save with a part of its text", head + device + unfinished + stating(text, 100),
         head + device + text, RemarkKind::Dropped},
        {"an unfinished save with garbage before its text", head + device + list + std::string(40, '\xEE') + text,
         head + device + text, RemarkKind::Dropped},
        {"a text that is not read", head + old + rest, head + old + rest, RemarkKind::Finding},
        {"a section missing", head + trace, head + trace, RemarkKind::Missing},
        {"no capture", "STM_ATB_Id = 12\n{\ntype=CPT\n}\n", head, RemarkKind::Identifier},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Recovered result = Recover(c.input);
        EXPECT_EQ(result.bytes, c.output);
        EXPECT_EQ(result.plan.IsGood(), !c.remark || c.remark == RemarkKind::InnerCapture);
        EXPECT_TRUE(!c.remark || result.HasRemark(*c.remark));
    }
    const std::string whole = head + rest + stating(list + text, list.size() + text.size());
    EXPECT_EQ(Recover(whole).bytes, whole);
    EXPECT_EQ(Recover(whole, {whole.size() - text.size()}).bytes, head + rest + text);
}

TEST_F(RecoveryTest, FindsHeadersAtEveryPlaceOfWhatIsReadAtOnce) {
    const std::string head(kTDFIdentifier);
    const std::string rest = MakeSection("DEVID", 1, "") + MakeSection("DCM_COMMON", 1, "");
    for (std::size_t size = (256U << 10) - 40; size < (256U << 10) + 10; ++size) {
        const std::string trace = MakeSection("TRACE0", 1, std::string(size, '\x11'));
        EXPECT_EQ(Recover(head + Stating(trace, {}, 0) + rest).bytes, head + rest + trace) << size;
    }
}

}  // namespace

}  // namespace stmdcm
