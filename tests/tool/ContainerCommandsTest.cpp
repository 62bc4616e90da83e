#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "source_utilities/PosixFile.h"
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
    small +=
        MakeSection("DEVID", 1, "x=1\n") + MakeSection("DCM_COMMON", 1, "") + MakeSection("STMDECODERINFO", 1, "STM_ATB_Id = 1\n");
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
        const auto document = Json(arguments, c.status);
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
    }
    ExpectNothingLeft();
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
        {STMDCM_TOOL " recover -o - " + full, 2, "this is standard output"},
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
    const std::string out = File("out");
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
    std::filesystem::create_symlink(input, File("link"));
    std::filesystem::create_hard_link(input, File("hard"));
    for (const std::string& name : {input, File("link"), File("hard"), File(".") + "/in.tdf"}) {
        const Result result = Run("recover " + input + " --force -o " + name);
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.error.find("this is the input"), std::string::npos) << result.error;
    }
    EXPECT_EQ(ReadWhole(input), full);

    // The mode stays, links are followed, and a full disk leaves the old file.
    const std::string old = File("old");
    WriteWhole(old, "old");
    ::chmod(old.c_str(), 0640);
    std::filesystem::create_symlink(old, File("way"));
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{100, limit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(Run("recover " + input + " --force -o " + File("way")).status, 1);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(ReadWhole(old), "old");
    EXPECT_EQ(Run("recover " + input + " --force -o " + File("way")).status, 0);
    EXPECT_EQ(ReadWhole(old), full);
    EXPECT_EQ(std::filesystem::status(old).permissions(), std::filesystem::perms(0640));
    EXPECT_TRUE(std::filesystem::is_symlink(File("way")));
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(m_directory.Path())) {
        ++count;
    }
    EXPECT_EQ(count, 5U) << "no temporary file is left";
}

}  // namespace

}  // namespace stmdcm
