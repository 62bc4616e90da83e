#include <fmt/format.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"

namespace stmdcm::validate {

using namespace Zu::Wep::Trace;

namespace {

const std::string kBlock = "{\ntype=PMI_CMI\nname=PMI\nsw=3\n}";
const std::string kPacked = "{type=PMI_CMI,name=PMI,sw=3}";

/// What a settings file comes to for a fresh manager.
struct Reading {
    std::string text;
    bool result;
    std::int32_t id;            ///< STM_ATB_Id, 1 by default
    unsigned int monitors = 0;  ///< PMI/CMI use cases
};

void ExpectReadings(Host& host, const std::vector<Reading>& readings) {
    for (const Reading& reading : readings) {
        const Subject subject(host);
        const std::string text = InWords(reading.text);
        Expect("the result of loading " + text, subject.LoadText(reading.text), reading.result);
        Expect("STM_ATB_Id after loading " + text, subject.Number(kAtbId), reading.id);
        Expect("the number of PMI/CMI use cases after loading " + text, subject.Pmi().GetNumUsecases(),
               reading.monitors);
    }
}

struct Conversion {
    const char* text;
    std::int32_t number;
};

void ExpectConversions(Host& host, const std::vector<const char*>& properties,
                       const std::vector<Conversion>& conversions) {
    const Subject subject(host);
    for (const char* property : properties) {
        for (const auto& [text, number] : conversions) {
            subject.LoadText(fmt::format("{} = {}", property, text));
            Expect(fmt::format("{} from the text {}", property, text), subject.Number(property), number);
        }
    }
}

/// Loading that file gives false, at once, and changes nothing.
void ExpectNothingRead(Host& host, const std::string& path) {
    const Subject subject(host);
    subject.LoadText(std::string("STM_ATB_Id = 5\n") + kUsecaseBlocks);
    const std::string before = subject.Text();
    Expect("the result of loading it", subject->LoadConfiguration(path, TRACE_DATA_FILE_LOCAL), false);
    Expect("the configuration afterwards", subject.Text(), before);
}

const Question kTextTable[] = {
    {"text.integers", "the text of an integer counts as strtol reads it, its low 32 bits", kGrammarRule,
     [](Host& host) {
         ExpectConversions(host, {kAtbId, "HEAD_Pointer_0", "MReqInfo_Sel_3"},
                           {{"12", 12},
                            {"12abc", 12},
                            {"word", 0},
                            {"1e3", 1},
                            {"0x1F", 0},
                            {"+7x", 7},
                            {"-3", -3},
                            {"99999999999", 1215752191},
                            {"4294967295", -1},
                            {"99999999999999999999", -1}});
     }},
    {"text.clocks", "the text of a clock counts as strtod reads it, cut toward zero, its low 32 bits", kGrammarRule,
     [](Host& host) {
         ExpectConversions(host, {"STM_DTC_fprocess_clock_hz", "STM_DTC_target_clock_hz"},
                           {{"2.5e8", 250000000},
                            {"-2.9", -2},
                            {"4294967297.5", 1},
                            {"1e300", 0},
                            {"nan", 0},
                            {"0x10", 16},
                            {"word", 0}});
     }},
    {"text.flags", "the text of a flag is true unless it is exactly 0", kGrammarRule,
     [](Host& host) {
         ExpectConversions(host,
                           {"STM_data_flip", "HEAD_Present_0", "HEAD_Present_1", "STM_Buffer_Wrapped", "TWP_Protocol",
                            "STM_VornLib_Import"},
                           {{"1", 1}, {"0", 0}, {"00", 1}, {"no", 1}, {"0x0", 1}, {"-0", 1}, {"0", 0}});
     }},
    {"text.numeric-flag", "the text of Needs_Preprocess alone is true unless it is a number that is 0", kGrammarRule,
     [](Host& host) {
         ExpectConversions(host, {"Needs_Preprocess"},
                           {{"00", 0}, {"1", 1}, {"no", 0}, {"-1", 1}, {"4294967296", 0}, {"2x", 1}});
     }},
    {"text.separators", "blanks, tabs, CR and = in any number part name and value, and the rest is ignored",
     kReadingRule,
     [](Host& host) {
         ExpectReadings(host, {{" \t= STM_ATB_Id == 5 = 6 junk", true, 5},
                               {"STM_ATB_Id\t5", true, 5},
                               {"STM_ATB_Id=5\r", true, 5},
                               {"STM_ATB_Id = 5\r\n" + kBlock, true, 5, 1}});
     }},
    {"text.final-line-feed", "a text of properties that ends with a line feed gives false, with all of it applied",
     kResultRule,
     [](Host& host) {
         ExpectReadings(host, {{"STM_ATB_Id = 5\n", false, 5}, {kPacked + "\n", false, 1, 1}});
     }},
    {"text.no-final-line-feed", "the same text without the line feed gives true", kReadingRule,
     [](Host& host) {
         ExpectReadings(host, {{"STM_ATB_Id = 5", true, 5}, {kPacked, true, 1, 1}});
     }},
    {"text.ends-with-a-block", "a text that ends with a block gives true, whatever ends its last line", kReadingRule,
     [](Host& host) {
         ExpectReadings(host, {{"STM_ATB_Id=5\n" + kBlock + "\n", true, 5, 1}, {kBlock, true, 1, 1}});
     }},
    {"text.empty", "an empty file gives false and changes no property", kReadingRule,
     [](Host& host) {
         ExpectReadings(host, {{"", false, 1}});
     }},
    {"text.unknown-name", "an unknown name ends the properties; what came before stays, blocks are read", kReadingRule,
     [](Host& host) {
         ExpectReadings(host, {{"colour = 3\nSTM_ATB_Id=5\n" + kBlock, false, 1, 1},
                               {"STM_ATB_Id=5\ncolour = 3\n" + kBlock, false, 5, 1},
                               {"stm_atb_id = 5\n", false, 1}});
     }},
    {"text.no-value", "a line without a value ends the properties", kReadingRule,
     [](Host& host) {
         ExpectReadings(host, {{"HEAD_Present_0\nSTM_ATB_Id=5\n" + kBlock, false, 1, 1},
                               {"STM_ATB_Id=5\nHEAD_Present_0 =\n" + kBlock, false, 5, 1}});
     }},
    {"text.blank-line", "a blank line ends the properties, two end the search for blocks, too", kReadingRule,
     [](Host& host) {
         ExpectReadings(host,
                        {{"STM_ATB_Id=5\n\n" + kBlock, false, 5, 1}, {"STM_ATB_Id=5\n\n\n" + kBlock, false, 5, 0}});
     }},
    {"text.behind-a-block", "properties behind a block are not read", kReadingRule,
     [](Host& host) {
         ExpectReadings(host, {{kBlock + "\nSTM_ATB_Id=5", true, 1, 1}});
     }},
    {"text.one-line-blocks", "use cases of one line stand among properties, and other blocks are not read then",
     kReadingRule,
     [](Host& host) {
         ExpectReadings(host, {{kPacked + "\nSTM_ATB_Id=5\n" + kPacked, true, 5, 2},
                               {kPacked + "\n" + kBlock, true, 1, 1},
                               {kBlock + "\n" + kPacked, true, 1, 1}});
     }},
    {"text.one-line-block-and-cr", "a CR behind a use case of one line is cut in place of its brace",
     "docs/use-case-blocks.md, \"Packed form\"",
     [](Host& host) {
         const Subject subject(host);
         subject.LoadText("{type=PMI_CMI,sw=4,name=CMI0}\r\n");
         Expect("the name", subject.Pmi().GetNumUsecases() == 1, true);
         ExpectPart("what is saved", subject.Text(), "name=CMI0}\n");
     }},
    {"text.long-line", "a line has 999 characters, blanks at its end not counted; a longer one is cut and gives false",
     kReadingRule,
     [](Host& host) {
         const std::string line = "STM_ATB_Id=5 " + std::string(986, 'x');
         ExpectReadings(host, {{line, true, 5}, {line + "  \t\r", true, 5}});
         ExpectReadings(host, {{line + "x", false, 5}, {line + line + "\nSTM_ATB_Id=6", false, 6}});
     }},
    {"text.long-block-line", "a line of a block has 126 characters in a file; a longer one is cut and gives false",
     kReadingRule,
     [](Host& host) {
         const auto block = [](std::size_t length) {
             return "{\r\ntype=PMI_CMI\r\nname=" + std::string(length, 'n') + "\r\n}";
         };
         ExpectReadings(host, {{block(121), true, 1, 1}, {block(122), false, 1, 1}, {block(300), false, 1, 1}});
     }},
    {"text.zero-byte", "a zero byte ends the line that it is in", kReadingRule,
     [](Host& host) {
         const std::string zero(1, '\0');
         ExpectReadings(host, {{"STM_ATB_Id=5" + zero + "6 7\nSTM_STP_Version=2", true, 5},
                               {"STM_ATB_Id" + zero + "=5\n" + kBlock, false, 1, 1}});
     }},
    {"text.replaces-use-cases", "loading empties the three records, and sets no property that the text does not name",
     kReadingRule,
     [](Host& host) {
         const Subject subject(host);
         subject.LoadText(std::string("STM_STP_Version=2\n") + kUsecaseBlocks);
         Expect("the number of SC use cases", subject.Sc().GetNumUsecases(), 2U);
         subject.LoadText("STM_ATB_Id=5");
         Expect("the number of use cases after a text without any",
                subject.Sc().GetNumUsecases() + subject.Cpt().GetNumUsecases() + subject.Pmi().GetNumUsecases(), 0U);
         Expect("STM_STP_Version, which it does not name", subject.Number("STM_STP_Version"), 2);
     }},
    {"text.there-and-back", "what is saved is the text that was loaded, use cases of all kinds included", kGrammarRule,
     [](Host& host) {
         const std::string text = host.AnyProperties() + kUsecaseBlocks;
         const Subject subject(host);
         Expect("the result of loading it", subject.LoadText(text), true);
         Expect("what is saved", subject.Text(), text);
     }},
    {"text.any-bytes", "no text, however random, ends the host, and the manager works afterwards", kReadingRule,
     [](Host& host) {
         using namespace std::string_literals;
         const std::string letters = "STM_ATB_Id=5\n{}\r\t #$/=,\0type=SC\xff"s;
         const Subject subject(host);
         for (int round = 0; round < 60; ++round) {
             std::string text = host.AnyProperties() + kUsecaseBlocks;
             for (std::uint32_t change = host.Chance(12); change > 0; --change) {
                 const std::size_t place = host.Chance(static_cast<std::uint32_t>(text.size()));
                 text.replace(place, host.Chance(9),
                              letters.substr(host.Chance(static_cast<std::uint32_t>(letters.size())), host.Chance(20)));
             }
             subject.LoadText(text);
             Expect("loading what it then saves", subject.LoadText(subject.Text() + kUsecaseBlocks), true);
         }
     }},
    {"text.missing-file", "a file that is missing gives false and changes nothing", kResultRule,
     [](Host& host) { ExpectNothingRead(host, host.Path("none.txt")); }},
    {"text.directory", "a directory in the file's place gives false and changes nothing", kReadingRule,
     [](Host& host) { ExpectNothingRead(host, host.Path("tmp")); }},
    {"text.pipe", "a pipe that nobody writes to is not waited for", kReadingRule,
     [](Host& host) {
         const std::string pipe = host.Path("pipe");
         ::mkfifo(pipe.c_str(), 0600);
         Expect("the result of loading it", Subject(host)->LoadConfiguration(pipe, TRACE_DATA_FILE_LOCAL), false);
     }},
    {"text.filled-pipe", "a pipe is read as far as it is filled, though somebody has it open for writing", kResultRule,
     [](Host& host) {
         const std::string pipe = host.Path("pipe");
         ::mkfifo(pipe.c_str(), 0600);
         std::fstream other(pipe);
         other << "STM_ATB_Id = 5\n" << std::flush;
         const Subject subject(host);
         Expect("the result of loading it", subject->LoadConfiguration(pipe, TRACE_DATA_FILE_LOCAL), false);
         Expect("STM_ATB_Id, which it holds", subject.Number(kAtbId), 5);
     }},
    {"text.without-end", "of what has no end 128 MiB are read, and the result is false", kReadingRule,
     [](Host& host) {
         Expect("the result of loading /dev/zero", Subject(host)->LoadConfiguration("/dev/zero", TRACE_DATA_FILE_LOCAL),
                false);
     }},
    {"text.link-to-itself", "a link that leads to itself gives false and changes nothing", kResultRule,
     [](Host& host) {
         std::filesystem::create_symlink(host.Path("loop"), host.Path("loop"));
         ExpectNothingRead(host, host.Path("loop"));
     }},
};

}  // namespace

std::span<const Question> TextQuestions() { return kTextTable; }

}  // namespace stmdcm::validate
