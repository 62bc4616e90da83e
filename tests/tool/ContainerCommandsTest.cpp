#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "source_utilities/PosixFile.h"
#include "stmdcm/reading/Reading.h"
#include "stmdcm/reading/Words.h"
#include "tests/support/ScratchDir.h"
#include "tests/tool/SectionList.h"
#include "tests/tool/TextLines.h"
#include "tests/tool/ToolRun.h"

namespace stmdcm {

using stmdcm_test::ReadWhole;
using stmdcm_test::WriteWhole;
using namespace Zu::Wep::Trace;

namespace {

constexpr bool kIsSanitized =
#if defined(__SANITIZE_ADDRESS__)
    true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
    true;
#else
    false;
#endif
#else
    false;
#endif

constexpr std::uint64_t kMemoryLimit = 64 << 20;

class ContainerCommandsTest : public ToolRun {
  protected:
    static std::string Data(const std::string& name) { return STMDCM_TEST_DATA "/" + name; }
    std::string File(const std::string& name) const { return m_directory / name; }

    /// The document, and the status in `status`.
    nlohmann::json Json(const std::string& arguments, int status = 0) const {
        const Result result = Run("--json " + arguments);
        EXPECT_EQ(result.status, status) << result.error;
        return nlohmann::json::parse(result.out);
    }

    static void ExpectSameTold(nlohmann::json plan, const nlohmann::json& document) {
        EXPECT_EQ(plan.at("written"), false);
        EXPECT_EQ(document.at("written"), true);
        for (const char* key : {"written", "output"}) {
            plan[key] = document.at(key);
        }
        EXPECT_EQ(plan, document);
    }

    stmdcm_test::ScratchDir m_directory;
};

/// 3.9 GiB with 100,000 sections that take nearly no room on the disk.
std::uint64_t MakeLargeCapture(const std::string& path) {
    constexpr std::uint64_t kLarge = 31;
    constexpr std::uint32_t kLargeLength = 0x7F00000;
    std::string small;
    for (std::uint64_t i = 0; i < 100'000 - kLarge - 3; ++i) {
        small += MakeSection("TRACE" + std::to_string(i), 1, "data");
    }
    small += MakeSection("DEVID", 1, "x=1\n") + MakeSection("DCM_COMMON", 1, "") +
             MakeSection("STMDECODERINFO", 1, "STM_ATB_Id = 1\n");
    const auto file = ZU_WEP::PosixFile::Open(path.c_str(), O_WRONLY | O_CREAT);
    std::uint64_t offset = FirstSectionOffset;
    EXPECT_TRUE(file.WriteAt(0, {TDFIdentifier}));
    for (std::uint64_t i = 0; i < kLarge; ++i, offset += kLargeLength) {
        EXPECT_TRUE(file.WriteAt(offset, {EncodeSectionStart(kLargeLength, "BULK" + std::to_string(i), 1)}));
    }
    EXPECT_TRUE(file.WriteAt(offset, {small}));
    return offset + small.size();
}

/// Limits the address space of this process's children, and its own, for as long as it lives.
class MemoryLimit {
  public:
    explicit MemoryLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_AS, &m_old);
        const rlimit limit{bytes, m_old.rlim_max};
        ::setrlimit(RLIMIT_AS, kIsSanitized ? &m_old : &limit);
    }
    ~MemoryLimit() { ::setrlimit(RLIMIT_AS, &m_old); }
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

  private:
    rlimit m_old{};
};

TEST_F(ContainerCommandsTest, LargeCapturesNeedLittleMemory) {
    const std::string path = File("large.tdf");
    const std::uint64_t size = MakeLargeCapture(path);
    {
        const MemoryLimit limit(kMemoryLimit);
        EXPECT_TRUE(HasLineWith(Run("sections " + path).out, "TRACE0 .. TRACE99965", "99966 sections"));
        EXPECT_EQ(Run("sections --json " + path + " | tail -3 | grep -c STMDECODERINFO").out, "1\n");
        EXPECT_EQ(Run("extract " + path + " TRACE99965").out, "data");
    }
    const std::string copy = File("copy.tdf");
    const auto document = Json("recover " + path + " -o " + copy);
    EXPECT_EQ(document.at("whole_sections"), "100000");
    EXPECT_EQ(document.at("output_size"), std::to_string(size));
    struct stat info {};
    ASSERT_EQ(::stat(copy.c_str(), &info), 0);
    EXPECT_EQ(static_cast<std::uint64_t>(info.st_size), size);
    EXPECT_LT(info.st_blocks * 512, 64 << 20) << "holes stay holes";

    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    if (!kIsSanitized) {
        EXPECT_LT(usage.ru_maxrss * 1024, static_cast<long>(kMemoryLimit));
    }
}

TEST_F(ContainerCommandsTest, SectionsSayTheSameInTextAndJson) {
    const struct {
        const char* file;
        std::vector<std::string> uses;
        const char* ending;
    } cases[] = {
        {"full.tdf", {"read", "read", "read", "read"}, ""},
        {"shadowed.tdf", {"read", "read", "read", "read", "shadowed", "shadowed"}, ""},
        {"huge-length.tdf", {"read", "unreachable"}, "offset 26: section length over 128 MiB"},
        {"orphan-payload.tdf", {"read", "read"}, "660 bytes from offset 125"},
        {"torn-header.tdf", {"read", "read", "read", "read"}, "8 bytes from offset 833"},
        {"zero-length.tdf", {"read"}, "offset 4: section length 0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const Result text = Run("sections --picture " + Data(c.file));
        EXPECT_EQ(text.status, 0);
        EXPECT_NE(text.out.find(c.ending), std::string::npos) << text.out;
        const auto document = Json("sections " + Data(c.file));
        EXPECT_EQ(document.at("whole"), *c.ending == '\0');
        ASSERT_EQ(document.at("sections").size(), c.uses.size());
        for (std::size_t i = 0; i < c.uses.size(); ++i) {
            const auto& section = document.at("sections")[i];
            EXPECT_EQ(section.at("use"), c.uses[i]);
            EXPECT_TRUE(HasLineWith(text.out, section.at("offset").get<std::string>() + "  ", section.at("name")))
                << text.out;
        }
    }
}

TEST_F(ContainerCommandsTest, ExtractGivesThePayloadByteForByte) {
    const std::string full = ReadWhole(Data("full.tdf"));
    const SectionInfo trace = SectionList(full).front();
    const std::string payload = full.substr(trace.payloadOffset, trace.payloadLength);
    EXPECT_EQ(Run("extract " + Data("full.tdf") + " TRACE0").out, payload);
    const std::string out = File("out");
    EXPECT_EQ(Run("extract " + Data("full.tdf") + " TRACE0 -o -").out, payload);
    EXPECT_EQ(Run("extract " + Data("full.tdf") + " TRACE0 -o " + out).status, 0);
    EXPECT_EQ(ReadWhole(out), payload);

    const struct {
        std::string arguments;
        int status;
        std::size_t size;
        const char* sentence;
    } cases[] = {
        {"shadowed.tdf STMDECODERINFO --version 2", 0, 16, ""},
        {"shadowed.tdf STMDECODERINFO --offset 1211", 0, 535, ""},
        {"shadowed.tdf STMDECODERINFO", 2, 0, "name one with --version"},
        {"shadowed.tdf DEVID --offset 650", 1, 0, "the section at offset 650 is STMDECODERINFO"},
        {"shadowed.tdf DEVID --offset 651", 1, 0, "no section begins at offset 651"},
        {"huge-length.tdf DEVID", 1, 0, "there is one that is unreachable, get it with --offset 26"},
        {"torn-payload.tdf STMDECODERINFO", 3, 672, "672 of 712 bytes are there"},
        {"short-length.tdf DEVID", 3, 590, "does not even cover its header"},
        {"full.tdf DEVID -o " + out, 1, 0, "use --force"},
        {"full.tdf NONE", 1, 0, "no section NONE"},
        {"full.tdf NONE --offset -1", 2, 0, "--offset: \"-1\" is no whole number"},
        {"full.tdf", 2, 0, "needs a SECTION, or --offset"},
        {"full.tdf --offset 0", 1, 0, "no section begins at offset 0"},
        {"shadowed.tdf --offset 1211", 0, 535, ""},
        {"shadowed.tdf --offset 1211 --version 2", 1, 0, "is STMDECODERINFO, version 1"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const Result result = Run("extract " + Data(c.arguments));
        EXPECT_EQ(result.status, c.status);
        EXPECT_EQ(result.out.size(), c.size);
        EXPECT_NE(result.error.find(c.sentence), std::string::npos) << result.error;
    }
    EXPECT_EQ(ReadWhole(out), payload);
}

TEST_F(ContainerCommandsTest, RecoverTellsTheSameInTextAndJson) {
    const struct {
        const char* file;
        int status;
        std::vector<std::string> remarks;
    } cases[] = {
        {"full.tdf", 0, {}},
        {"shadowed.tdf", 0, {}},
        {"torn-payload.tdf", 3, {"cut_short", "dropped", "finding", "finding"}},
        {"orphan-payload.tdf", 3, {"length_corrected"}},
        {"torn-header.tdf", 3, {"dropped"}},
        {"malformed-common.tdf", 3, {"finding"}},
        {"no-devid.tdf", 3, {"missing", "not_loadable"}},
        {"empty-devid.tdf", 3, {"empty", "not_loadable"}},
        {"empty-decoder.tdf", 3, {"empty", "not_loadable"}},
    };
    const std::string out = File("out.tdf");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string arguments = "recover " + Data(c.file) + " --force -o " + out;
        const auto plan = Json("recover --plan " + Data(c.file), c.status);
        EXPECT_FALSE(std::filesystem::exists(out));
        const auto document = Json(arguments, c.status);
        ExpectSameTold(plan, document);
        const Result text = Run(arguments);
        EXPECT_EQ(text.status, c.status);
        EXPECT_EQ(document.at("good"), c.status == 0);
        EXPECT_NE(text.out.find(c.status == 0 ? "GOOD" : "DOUBTFUL"), std::string::npos);
        ASSERT_EQ(document.at("remarks").size(), c.remarks.size());
        for (std::size_t i = 0; i < c.remarks.size(); ++i) {
            EXPECT_EQ(document.at("remarks")[i].at("kind"), c.remarks[i]);
            EXPECT_NE(text.out.find(document.at("remarks")[i].at("message")), std::string::npos) << text.out;
        }
        EXPECT_EQ(std::to_string(ReadWhole(out).size()), document.at("output_size").get<std::string>());
        EXPECT_EQ(text.error.empty(), c.status == 0) << text.error;
        std::filesystem::remove(out);
    }
    ExpectNothingLeft();
}

/// What accidents do to a capture of several sections.
std::vector<std::pair<std::string, std::string>> Damaged(const std::string& whole) {
    const std::vector<SectionInfo> sections = SectionList(whole);
    const auto bytesOf = [&](const SectionInfo& section) { return whole.substr(section.offset, section.length); };
    const auto lie = [&](const SectionInfo& section, std::uint64_t end) {
        std::string bytes = whole;
        return bytes.replace(section.offset, SectionHeader::LengthSize,
                             EncodeSectionLength(static_cast<std::uint32_t>(end - section.offset)));
    };
    const auto text = std::find_if(sections.begin(), sections.end(),
                                   [](const SectionInfo& section) { return section.name == "STMDECODERINFO"; });
    std::string zeroed = whole;
    zeroed.replace(text->payloadOffset + 30, 100, 100, '\0');
    const std::string sectionsAlone = whole.substr(FirstSectionOffset);
    const std::string_view behind = std::string_view(whole).substr(sections[2].offset);
    return {{"nothing", whole},
            {"identifier cut off", sectionsAlone},
            {"identifier overwritten", std::string(FirstSectionOffset, '\0') + sectionsAlone},
            {"garbage in front", "garbage" + sectionsAlone},
            {"swallowed one", lie(sections[0], sections[1].offset + sections[1].length)},
            {"swallowed all", lie(sections[0], whole.size())},
            {"swallowed into the midst", lie(sections[1], sections.back().payloadOffset + 5)},
            {"swallowed nearly all", lie(sections[0], whole.size() - 3)},
            {"text zeroed", zeroed},
            {"cut", whole.substr(0, whole.size() - 100)},
            {"doubled", whole + sectionsAlone},
            {"swapped", std::string(TDFIdentifier) + bytesOf(sections[1]) + bytesOf(sections[0]).append(behind)}};
}

TEST_F(ContainerCommandsTest, WhatRecoverTellsCanBeExtractedAndSplitAndGoodIsWhatCheckPasses) {
    const std::string file = File("damaged.tdf");
    const std::string out = File("out.tdf");
    for (const char* sample : {"full.tdf", "shadowed.tdf", "packed.tdf"}) {
        const std::string whole = ReadWhole(Data(sample));
        for (const auto& [what, bytes] : Damaged(whole)) {
            SCOPED_TRACE(std::string(sample) + ": " + what);
            WriteWhole(file, bytes);
            const auto plan = nlohmann::json::parse(Run("--json recover --plan " + file).out);
            const auto document = Json("recover " + file + " --force -o " + out, plan.at("good") ? 0 : 3);
            ExpectSameTold(plan, document);
            EXPECT_EQ(ReadWhole(file), bytes);
            EXPECT_TRUE(!plan.at("good") || CheckFile(out).findings.Count(Severity::Error) == 0);
            EXPECT_EQ(plan.at("good"), what == "nothing" || what == "doubled" || what == "swapped");
            std::string first;
            for (const auto& remark : plan.at("remarks")) {
                const std::string offset = remark.at("offset");
                if (remark.at("section").is_null() || remark.at("length") == "0") {
                    continue;
                }
                const Result extracted = Run("extract " + file + " --offset " + offset);
                EXPECT_EQ(extracted.status, remark.at("kind") == "cut_short" ? 3 : 0) << remark;
                const SectionHeader header = DecodeSectionHeader(bytes.data() + std::stoul(offset));
                const std::size_t begin = SectionHeader::Size + header.nameLength;
                EXPECT_EQ(extracted.out, bytes.substr(std::stoul(offset) + begin, header.length - begin));
                if (first.empty() && remark.at("kind") == "hidden_section") {
                    first = offset;
                }
            }
            EXPECT_EQ(first.empty(), !what.starts_with("swallowed ") || what == "swallowed into the midst");
            if (!first.empty()) {
                const auto split = Json("recover " + file + " --force --split " + first + " -o " + out, 3);
                EXPECT_EQ(split.at("repaired_sections"), "1");
                EXPECT_EQ(split.at("remark_count"), "1") << split;
                EXPECT_EQ(ReadWhole(out).size(), whole.size());
                EXPECT_EQ(CheckFile(out).findings.Count(Severity::Error), 0U);
            }
        }
    }
    EXPECT_EQ(Run("recover " + Data("full.tdf") + " --split 5 --force -o " + out).status, 1);
    ExpectNothingLeft();
}

TEST_F(ContainerCommandsTest, RecoverAsksForTheNameBeforeAnythingElse) {
    for (const char* name : {"out.bin", "out", "out.tdf.gz", "tdf"}) {
        for (const char* option : {"", " --plan", " --force"}) {
            const Result result = Run("recover " + File("none.tdf") + option + " -o " + File(name));
            EXPECT_EQ(result.status, 2) << name;
            EXPECT_NE(result.error.find("to end in .tdf"), std::string::npos) << result.error;
        }
    }
    EXPECT_EQ(Run("recover " + Data("full.tdf")).status, 2);
    EXPECT_TRUE(std::filesystem::is_empty(m_directory.Path()));
    EXPECT_EQ(Run("recover " + Data("full.tdf") + " -o " + File("OUT.TDF")).status, 0);
}

TEST_F(ContainerCommandsTest, RecoverPutsSectionsThatNoReaderPassesLast) {
    const std::string path = File("long.tdf");
    const std::string rest = ReadWhole(Data("full.tdf")).substr(FirstSectionOffset);
    const std::uint32_t length = MaxSectionLength + 1;
    {
        const auto file = ZU_WEP::PosixFile::Open(path.c_str(), O_WRONLY | O_CREAT);
        ASSERT_TRUE(file.WriteAt(0, {TDFIdentifier, EncodeSectionStart(length, "LONG", 1)}));
        ASSERT_TRUE(file.WriteAt(FirstSectionOffset + length, {rest}));
    }
    const std::string out = File("out.tdf");
    const auto document = Json("recover " + path + " -o " + out, 3);
    EXPECT_EQ(document.at("remarks")[0].at("kind"), "over_limit");
    EXPECT_EQ(document.at("whole_sections"), "5");
    const auto file = ZU_WEP::PosixFile::Open(out.c_str(), O_RDONLY);
    std::string kept(FirstSectionOffset + rest.size(), '\0');
    ASSERT_EQ(file.ReadAt(0, kept.data(), kept.size()), kept.size());
    EXPECT_EQ(kept, std::string(TDFIdentifier) + rest);
}

TEST_F(ContainerCommandsTest, NoNameCommandsTheTerminalAndNoneIsLost) {
    const std::string name = "\x1b]0;x\x07\x9b\xc2\x9b\xff" + std::string(4000, 'n');
    const std::string file = File("\x1b[2J\x9b" + std::string(150, 'f') + ".tdf");
    WriteWhole(file, ReadWhole(Data("full.tdf")) + MakeSection(name, 1, "x"));
    const std::string settings = File("\xff.txt");
    WriteWhole(settings, ReadWhole(Data("settings.txt")) + "\x1b[2J\x9b = 1\n");
    const std::string quoted = "'" + file + "'";
    for (const std::string& arguments :
         {"show " + quoted, "check " + quoted + " '" + settings + "'", "sections --all --picture " + quoted,
          "extract " + quoted + " '" + name + "2'", "recover --force -o " + quoted + "2.tdf " + quoted,
          "set " + quoted + " STM_ATB_Id=42", "set '" + settings + "' STM_ATB_Id=42", "history " + quoted,
          "restore " + quoted + " 2", "restore " + quoted + " 99", "objects --search '" + file + "' " + quoted,
          "diff " + quoted + " '" + settings + "'", "convert " + quoted + " " + quoted + ".txt",
          "apply --force '" + settings + "' " + quoted, "show '" + file + "2' 'a\x1b'", std::string("'\x1b\x9b'")}) {
        SCOPED_TRACE(Escaped(arguments));
        const Result result = Run(arguments);
        for (const std::string& text : {result.out, result.error}) {
            std::istringstream in(text);
            for (std::string line; std::getline(in, line);) {
                EXPECT_EQ(Escaped(line), line);
                EXPECT_EQ(line.find(std::string(kMaxColumns + 1, 'n')), std::string::npos);
                EXPECT_EQ(line.find(std::string(kMaxColumns + 1, 'f')), std::string::npos);
            }
        }
    }
    const auto document = Json("sections '" + file + "'");
    for (const auto& [pointer, expected] :
         {std::pair(std::string("/sections/4/name"), name), std::pair(std::string("/file"), file)}) {
        std::string hexadecimal;
        for (const char c : expected) {
            hexadecimal += fmt::format("{:02x}", static_cast<unsigned char>(c));
        }
        EXPECT_EQ(document.at("bytes").at(pointer), hexadecimal);
    }
    EXPECT_EQ(Json("show '" + file + "'").at("bytes").size(), 1U);
}

TEST_F(ContainerCommandsTest, SayWhatIsWrongWithARequest) {
    const std::string full = Data("full.tdf");
    const struct {
        std::string line;
        int status;
        const char* sentence;
    } cases[] = {
        {STMDCM_TOOL " recover -o - " + full, 2, "end in .tdf"},
        {STMDCM_TOOL " restore " + full + " -1", 2, "\"-1\" is no whole number"},
        {STMDCM_TOOL " extract --json " + full + " TRACE0", 2, "extract has no JSON"},
        {STMDCM_TOOL " completion --json bash", 2, "completion has no JSON"},
        {"env TMPDIR=/no/such " STMDCM_TOOL " demo", 1,
         "/no/such: this is no directory for temporary files; set TMPDIR"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const Result result = Shell(c.line);
        EXPECT_EQ(result.status, c.status);
        EXPECT_NE(result.error.find(c.sentence), std::string::npos) << result.error;
    }
    EXPECT_FALSE(std::filesystem::exists("-"));
}

TEST_F(ContainerCommandsTest, SayWhatIsWrongWithAFile) {
    WriteWhole(File("empty"), "");
    WriteWhole(File("secret"), "TDF2");
    ::chmod(File("secret").c_str(), 0);
    ASSERT_EQ(::mkfifo(File("pipe").c_str(), 0600), 0);
    std::vector<std::pair<std::string, const char*>> files = {
        {File("none"), "there is no such file"}, {m_directory.Path(), "this is a directory"},
        {File("empty"), "the file is empty"},    {File("pipe"), "not a regular file"},
        {Data("settings.txt"), "no "},
    };
    if (::geteuid() != 0) {
        files.emplace_back(File("secret"), "no permission");
    }
    const std::string out = File("out.tdf");
    for (const auto& [file, sentence] : files) {
        for (const std::string& arguments :
             {"sections " + file, "extract " + file + " DEVID", "recover " + file + " -o " + out}) {
            SCOPED_TRACE(arguments);
            const Result result = Run(arguments);
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.out, "");
            EXPECT_NE(result.error.find(file), std::string::npos) << result.error;
            EXPECT_NE(result.error.find(sentence), std::string::npos) << result.error;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(out));
}

TEST_F(ContainerCommandsTest, AnOutputIsNeverAnInputAndNeverHalf) {
    const std::string input = File("in.tdf");
    const std::string full = ReadWhole(Data("full.tdf"));
    WriteWhole(input, full);
    std::filesystem::create_symlink(input, File("link.tdf"));
    std::filesystem::create_hard_link(input, File("hard.tdf"));
    for (const std::string& name : {input, File("link.tdf"), File("hard.tdf"), File(".") + "/in.tdf"}) {
        const Result result = Run("recover " + input + " --force -o " + name);
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.error.find("this is the input"), std::string::npos) << result.error;
    }
    EXPECT_EQ(ReadWhole(input), full);

    // The mode stays, links are followed, and a full disk leaves the old file.
    const std::string old = File("old.tdf");
    WriteWhole(old, "old");
    ::chmod(old.c_str(), 0640);
    std::filesystem::create_symlink(old, File("way.tdf"));
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{100, limit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(Run("recover " + input + " --force -o " + File("way.tdf")).status, 1);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(ReadWhole(old), "old");
    EXPECT_EQ(Run("recover " + input + " --force -o " + File("way.tdf")).status, 0);
    EXPECT_EQ(ReadWhole(old), full);
    EXPECT_EQ(std::filesystem::status(old).permissions(), std::filesystem::perms(0640));
    EXPECT_TRUE(std::filesystem::is_symlink(File("way.tdf")));
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(m_directory.Path())) {
        ++count;
    }
    EXPECT_EQ(count, 5U) << "no temporary file is left";
}

}  // namespace

}  // namespace stmdcm
