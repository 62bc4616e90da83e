#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "tests/usecase/Records.h"
#include "trace/format/BlockLines.h"

namespace Zu::Wep::Trace {
namespace {

TEST(BlockText, FaultsEndTheBlockOrTheScan) {
    const std::string good = "{\nid=1\n}\n";
    const std::string name = "name=" + std::string(250, 'x');  // The longest line that is read.
    const std::tuple<const char*, std::string, std::array<unsigned, 3>> cases[] = {
        {"empty block", "{\n}\n", {1, 1, 1}},
        {"types", good + "{\ntype=CPT\n}\n{\ntype=PMI_CMI\n}\n{\ntype=SC\n}\n", {2, 1, 1}},
        {"type of another kind", "{\ntype=CMI\n}\n{\ntypeX=SC\n}\n{\n type=SC\n}\n", {1, 0, 0}},
        {"type later in the block", "{\ntype=CPT\ntype=SC\n}\n", {0, 1, 0}},
        {"end of input in a block", good + "{\nid=2\n", {1, 0, 0}},
        {"blank line between blocks", good + "\n" + good, {1, 0, 0}},
        {"blank line in a block", "{\nid=1\n\n}\n" + good, {0, 0, 0}},
        {"blank line in a skipped block", "{\ntype=CPT\ncr=1\n\n" + good, {1, 0, 0}},
        {"no equals sign", good + "{\nid\n}\n" + good, {1, 0, 0}},
        {"longest line", "{\n" + name + "\n}\n", {1, 0, 0}},
        {"line too long", good + "{\n" + name + "x\n}\n" + good, {1, 0, 0}},
        {"line too long in a formula", good + "{\n/$\nunit=u\n" + name + "x\n$/\n}\n", {1, 0, 0}},
        {"CPT line too long", "{\ntype=CPT\n" + name + "x\n}\n{\ntype=CPT\n}\n", {0, 0, 0}},
        {"text behind the first brace", "{ x\nid=1\n}\n", {1, 0, 0}},
        {"text behind a brace, searching", "{\ntype=PMI_CMI\n}\na\n{ x\nid=1\n}\n" + good, {2, 0, 1}},
        {"text behind a brace, behind a block", good + "{ x\nid=1\n}\n" + good, {2, 0, 0}},
        {"text behind a brace, behind a rejected line", "{\ntype=CPT\n{ x\nid=1\n}\n" + good, {1, 0, 0}},
        {"text behind a brace, behind a blank line", "a\n\n{ x\nid=1\n}\n" + good, {1, 0, 0}},
        {"rubbish around blocks", "a\n}\n=\n" + good + "$/\n" + good, {2, 0, 0}},
        {"formula closed by a brace", good + "{\n/$\n}\n" + good, {1, 0, 0}},
        {"formula opened at the end", good + "{\n/$\n", {2, 0, 0}},
        {"formula left open", "{\n/$\nname=f\n}\n" + good, {0, 0, 0}},
        {"formula run on into the next block", "{\n/$\n=\n}\n" + good + "$/\n}\n", {1, 0, 0}},
        {"zero byte ends a line's text", std::string("{\nid=1\n}\0}\n", 11) + good, {2, 0, 0}},
    };
    for (const auto& [what, text, counts] : cases) {
        const Records records(text);
        EXPECT_EQ(records.Counts(), counts) << what;
    }
}

TEST(BlockText, ValuesAreTakenLeniently) {
    const std::pair<const char*, const char*> cases[] = {
        {"suppress=7", "suppress=1"},
        {"suppress=4294967296", "suppress=1"},  // Its low 32 bits are 0.
        {"sw= +12z", "sw=12"},
        {"sw=4294967295", "sw=-1"},
        {"id=99999999999", "id=1215752191"},
        {"name=a=b ", "name=a=b"},
        {"name = x", "name="},
        {"#12=abc", "#12=abc"},
        {"#x=abc", "#0=abc"},
        {"sid=3", "id=0"},
        {"suppress=x", "suppress=0"}};
    for (const auto& [read, written] : cases) {
        const Records records(std::string("{\n") + read + "\n}\n");
        EXPECT_NE(Export(records.sc).find(std::string("\n") + written + "\n"), std::string::npos) << read;
    }
}

TEST(BlockText, TheTagNumberFollowsTheFirstColon) {
    const std::pair<const char*, unsigned> cases[] = {{"X:12/Y", 12}, {"a:12345", 123}, {"12345", 123}, {"", 0},
                                                      {"1:2:3", 2},   {"9:", 0},        {"a:-1", ~0U}};
    for (const auto& [formula, tag] : cases) {
        Records records(std::string("{\n/$\nformula=") + formula + "\n}\n$/\n}\n");  // The first "}" is skipped.
        EXPECT_EQ(records.sc.GetUsecase(0)->GetFormula(0)->tagNumber, tag) << formula;
    }
}

TEST(BlockText, LineReaderStaysInItsBuffer) {
    std::istringstream in(std::string(300, 'x') + "\n \t\r\nlast");
    std::string line(257, '!');
    EXPECT_TRUE(myfgets(line.data(), 255, in));
    EXPECT_EQ(line, std::string(255, 'x') + '\0' + '!');
    EXPECT_FALSE(myfgets(line.data(), 255, in));
    EXPECT_TRUE(myfgets(line.data(), 255, in));
    EXPECT_FALSE(myfgets(line.data(), 255, in));
    EXPECT_STREQ(line.c_str(), "last");  // Untouched at the end of the input.
}

/// Reads a line in either way, and gives it with the stream's state and position.
std::string Next(std::istringstream& in, bool asBlockLine) {
    std::string line;
    std::string_view next;
    try {
        asBlockLine ? BlockLines(UsecaseKind::Sc, in).Next(next) : bool{std::getline(in, line)};
    } catch (const std::ios_base::failure&) {
        line = "thrown";
        next = {};
    }
    return line + std::string(next) + ' ' + std::to_string(in.rdstate()) + ' ' +
           std::to_string(in.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in));
}

// Hosts hand in their own streams and go on reading them.
TEST(BlockText, LineReaderLeavesLineAndStreamAsGetlineDoes) {
    using Stream = std::ios_base;
    for (const char* text : {"", "\n", "a", "a\n", "a\n\nb", "a\nb\nc\nd\ne"}) {
        for (const auto state : {Stream::goodbit, Stream::eofbit, Stream::failbit, Stream::badbit}) {
            for (const auto thrown : {Stream::goodbit, Stream::eofbit, Stream::failbit}) {
                std::istringstream ours(text), other(text);
                for (std::istringstream* in : {&ours, &other}) {
                    in->setstate(state);
                    in->exceptions((state & thrown) != 0 ? Stream::goodbit : thrown);
                }
                for (int i = 0; i < 4; ++i) {
                    EXPECT_EQ(Next(ours, true), Next(other, false)) << text << " from " << state << ", " << thrown;
                }
            }
        }
    }
}

/// What is left of a text that was written: LF as blanks, cut to its line, without what a reader strips from the end.
std::string ReadBack(const std::string& key, std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    text.resize(std::min(text.size(), 125 - key.size()));
    return text.erase(text.find_last_not_of(" \t\r") + 1);
}

// Whatever a host puts into a text field, the block stays one block of lines that fit, and reads back as written.
TEST(BlockText, NoTextBreaksOutOfItsLine) {
    const std::string x90(90, 'x'), x121(121, 'x'), x5000(5000, 'x'), blanks(90, ' ');
    for (const std::string& text :
         {std::string("}\n{\ntype=CPT\r\n}"), std::string("\n\n\n"), std::string("$/\r}"), std::string("\ra\r\rb \tc"),
          std::string("a \r\t"), std::string("="), x121, x5000, x90 + blanks + "tail"}) {
        UsecaseInfo usecase;
        usecase.SetModuleName(text.c_str());
        usecase.SetProbeName(text.c_str());
        const _CounterLineInfo counter{4294967295U, text};
        usecase.AddCounter(&counter);
        usecase.AddFormula(text.c_str(), text.c_str(), text.c_str(), 1);
        Records records;
        records.sc.AddUsecase(&usecase);
        const std::string written = records.Text();
        std::istringstream lines(written);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size() + 1, 127U);
        }
        Records again(written);
        ASSERT_EQ(again.Counts(), (std::array<unsigned, 3>{1, 0, 0})) << text;
        UsecaseInfoIF* sc = again.sc.GetUsecase(0);
        EXPECT_EQ(sc->GetModuleName(), ReadBack("name", text));
        EXPECT_EQ(sc->GetProbeName(), ReadBack("probe", text));
        EXPECT_EQ(sc->GetCounterInfo(0)->text, ReadBack("#-1", text));
        EXPECT_EQ(sc->GetFormula(0)->formula, ReadBack("formula", text));
    }
}

}  // namespace
}  // namespace Zu::Wep::Trace
