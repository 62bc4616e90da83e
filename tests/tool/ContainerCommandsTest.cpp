#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <sstream>
#include <utility>

#include "source_utilities/PosixFile.h"
#include "stmdcm/reading/Words.h"
#include "tests/support/SectionList.h"
#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {

using stmdcm_test::ReadWhole;
using stmdcm_test::WriteWhole;
using testing::HasSubstr;
using namespace Zu::Wep::Trace;

namespace {

constexpr bool kIsSanitized = STMDCM_IS_SANITIZED;  // which takes memory of its own
constexpr rlim_t kMemoryLimit = 64 << 20;
constexpr std::uint32_t kBulkLength = 0x7F00000;

class ContainerCommandsTest : public ConfigurationRun {
  protected:
    void TearDown() override { ExpectNothingLeft(); }

    std::string File(const std::string& name) const { return m_directory / name; }

    stmdcm_test::ScratchDir m_directory;
};

/// 3.9 GiB with 100,000 sections that take nearly no room on the disk.
std::uint64_t MakeLargeCapture(const std::string& path) {
    constexpr std::uint64_t kLarge = 31;
    std::string small;
    for (std::uint64_t i = 0; i < 100'000 - kLarge - 3; ++i) {
        small += MakeSection("TRACE" + std::to_string(i), 1, "data");
    }
    small += MakeSection("DEVID", 1, "x=1\n") + MakeSection("DCM_COMMON", 1, "") +
             MakeSection("STMDECODERINFO", 1, "STM_ATB_Id = 1\n");
    const auto file = ZU_WEP::PosixFile::Open(path.c_str(), O_WRONLY | O_CREAT);
    std::uint64_t offset = kFirstSectionOffset;
    EXPECT_TRUE(file.WriteAt(0, {kTDFIdentifier}));
    for (std::uint64_t i = 0; i < kLarge; ++i, offset += kBulkLength) {
        EXPECT_TRUE(file.WriteAt(offset, {EncodeSectionStart(kBulkLength, "BULK" + std::to_string(i), 1)}));
    }
    EXPECT_TRUE(file.WriteAt(offset, {small}));
    return offset + small.size();
}

/// Runs `work` with so much less allowed to this process and its children.
void Limited(__rlimit_resource resource, rlim_t most, const std::function<void()>& work) {
    rlimit old{};
    ::getrlimit(resource, &old);
    const rlimit limit{most, old.rlim_max};
    ::setrlimit(resource, &limit);
    work();
    ::setrlimit(resource, &old);
}

TEST_F(ContainerCommandsTest, LargeCapturesNeedLittleMemory) {
    const std::string path = File("large.tdf");
    const std::uint64_t size = MakeLargeCapture(path);
    Limited(RLIMIT_AS, kIsSanitized ? RLIM_INFINITY : kMemoryLimit, [&] {
        EXPECT_TRUE(HasLineWith(Run("sections " + path).out, "TRACE0 .. TRACE99965", "99966 sections"));
        EXPECT_EQ(Run("sections --json " + path + " | tail -3 | grep -c STMDECODERINFO").out, "1\n");
        EXPECT_EQ(Run("extract " + path + " TRACE99965").out, "data");
    });
    const std::string hole = File("hole.tdf");
    WriteWhole(hole, "TDF2" + MakeSection("HOLE", 1, "", kBulkLength));
    std::filesystem::resize_file(hole, std::filesystem::file_size(hole) + kBulkLength);
    EXPECT_EQ(Run("extract " + hole + " HOLE -o " + File("out")).status, 0);
    EXPECT_EQ(std::filesystem::file_size(File("out")), kBulkLength);
    const std::string copy = File("copy.tdf");
    const Json document = RunJson("recover " + path + " -o " + copy, 0);
    EXPECT_EQ(document.at("whole_sections"), "100000");
    EXPECT_EQ(document.at("output_size"), std::to_string(size));
    struct stat info {};
    ASSERT_EQ(::stat(copy.c_str(), &info), 0);
    EXPECT_EQ(static_cast<std::uint64_t>(info.st_size), size);
    EXPECT_LT(info.st_blocks * 512, 64 << 20) << "holes stay holes";
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    EXPECT_TRUE(kIsSanitized || usage.ru_maxrss * 1024 < static_cast<long>(kMemoryLimit)) << usage.ru_maxrss;
}

TEST_F(ContainerCommandsTest, SectionsSayTheSameInTextAndJson) {
    const struct {
        const char* file;
        const char* uses;
        const char* ending;
    } cases[] = {
        {"full.tdf", "read read read read ", ""},
        {"shadowed.tdf", "read read read read shadowed shadowed ", ""},
        {"huge-length.tdf", "read unreachable ", "offset 26: section length over 128 MiB"},
        {"orphan-payload.tdf", "read read ", "660 bytes from offset 125"},
        {"torn-header.tdf", "read read read read ", "8 bytes from offset 833"},
        {"zero-length.tdf", "read ", "offset 4: section length 0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const Result text = Run("sections --picture " + Sample(c.file));
        EXPECT_EQ(text.status, 0);
        EXPECT_THAT(text.out, HasSubstr(c.ending));
        const Json document = RunJson("sections " + Sample(c.file), 0);
        EXPECT_EQ(document.at("whole"), *c.ending == '\0');
        std::string uses;
        for (const Json& section : document.at("sections")) {
            uses += section.at("use").get<std::string>() + " ";
        }
        EXPECT_EQ(uses, c.uses);
        ExpectShown(text.out, document.at("sections"), "offset", "name");
    }
}

TEST_F(ContainerCommandsTest, ExtractGivesThePayloadByteForByte) {
    const std::string full = ReadWhole(Sample("full.tdf")), out = File("out");
    const SectionInfo trace = SectionList(full).front();
    const std::string payload = full.substr(trace.payloadOffset, trace.payloadLength);
    EXPECT_EQ(Run("extract " + Sample("full.tdf") + " TRACE0").out, payload);
    EXPECT_EQ(Run("extract " + Sample("full.tdf") + " TRACE0 -o -").out, payload);
    EXPECT_EQ(Run("extract " + Sample("full.tdf") + " TRACE0 -o " + out).status, 0);
    const std::tuple<std::string, int, std::size_t, const char*> cases[] = {
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
    for (const auto& [arguments, status, size, sentence] : cases) {
        ExpectTold("extract " + Sample(arguments), {{"", status, sentence}});
        EXPECT_EQ(Run("extract " + Sample(arguments)).out.size(), size) << arguments;
    }
    EXPECT_EQ(ReadWhole(out), payload);
}

TEST_F(ContainerCommandsTest, RecoverTellsWhatIsWrongWithEachSample) {
    const std::pair<const char*, const char*> cases[] = {
        {"full.tdf", ""},
        {"shadowed.tdf", ""},
        {"torn-payload.tdf", "cut_short dropped finding finding "},
        {"orphan-payload.tdf", "length_corrected "},
        {"torn-header.tdf", "dropped "},
        {"malformed-common.tdf", "finding "},
        {"no-devid.tdf", "missing not_loadable "},
        {"empty-devid.tdf", "empty not_loadable "},
        {"empty-decoder.tdf", "empty not_loadable "},
    };
    for (const auto& [file, kinds] : cases) {
        SCOPED_TRACE(file);
        const bool isGood = *kinds == '\0';
        const std::string arguments = "recover --force " + Sample(file) + " -o " + File("out.tdf");
        Json plan = RunJson("recover --plan " + Sample(file));
        EXPECT_FALSE(std::exchange(plan["written"], true));
        plan["output"] = File("out.tdf");
        const Json document = RunJson(arguments, isGood ? 0 : 3);
        EXPECT_EQ(document, plan);
        EXPECT_EQ(document.at("good"), isGood);
        EXPECT_EQ(document.at("output_size"), std::to_string(ReadWhole(File("out.tdf")).size()));
        const Result text = Run(arguments);
        EXPECT_THAT(text.out, HasSubstr(isGood ? "GOOD" : "DOUBTFUL"));
        EXPECT_EQ(text.error.empty(), isGood) << text.error;
        std::string found;
        for (const Json& remark : document.at("remarks")) {
            EXPECT_THAT(text.out, HasSubstr(remark.at("message").get<std::string>()));
            found += remark.at("kind").get<std::string>() + " ";
        }
        EXPECT_EQ(found, kinds);
    }
    ExpectTold("recover --force -o " + File("5.tdf") + " --split 5 ", {{Sample("full.tdf"), 1, "at offset 5"}});
}

TEST_F(ContainerCommandsTest, RecoverAsksForTheNameBeforeAnythingElse) {
    for (const char* name : {"out.bin", "out", "out.tdf.gz", "tdf"}) {
        for (const char* option : {"", " --plan", " --force"}) {
            ExpectTold("recover " + File("none.tdf") + option, {{" -o " + File(name), 2, "to end in .tdf"}});
        }
    }
    EXPECT_EQ(Run("recover " + Sample("full.tdf")).status, 2);
    EXPECT_TRUE(std::filesystem::is_empty(m_directory.Path()));
    EXPECT_EQ(Run("recover " + Sample("full.tdf") + " -o " + File("OUT.TDF")).status, 0);
}

TEST_F(ContainerCommandsTest, RecoverPutsSectionsThatNoReaderPassesLast) {
    const std::string path = File("long.tdf");
    const std::string rest = ReadWhole(Sample("full.tdf")).substr(kFirstSectionOffset);
    const std::uint32_t length = kMaxSectionLength + 1;
    {
        const auto file = ZU_WEP::PosixFile::Open(path.c_str(), O_WRONLY | O_CREAT);
        ASSERT_TRUE(file.WriteAt(0, {kTDFIdentifier, EncodeSectionStart(length, "LONG", 1)}));
        ASSERT_TRUE(file.WriteAt(kFirstSectionOffset + length, {rest}));
    }
    const std::string out = File("out.tdf");
    const Json document = RunJson("recover " + path + " -o " + out, 3);
    EXPECT_EQ(document.at("remarks")[0].at("kind"), "over_limit");
    EXPECT_EQ(document.at("whole_sections"), "5");
    const auto file = ZU_WEP::PosixFile::Open(out.c_str(), O_RDONLY);
    std::string kept(kFirstSectionOffset + rest.size(), '\0');
    ASSERT_EQ(file.ReadAt(0, kept.data(), kept.size()), kept.size());
    EXPECT_EQ(kept, std::string(kTDFIdentifier) + rest);
}

TEST_F(ContainerCommandsTest, NoNameCommandsTheTerminalAndNoneIsLost) {
    const std::string name = "\x1b]0;x\x07\x9b\xc2\x9b\xff" + std::string(4000, 'n');
    const std::string file = File("\x1b[2J\x9b" + std::string(150, 'f') + ".tdf");
    WriteWhole(file, ReadWhole(Sample("full.tdf")) + MakeSection(name, 1, "x"));
    const std::string settings = File("\xff.txt");
    WriteWhole(settings, ReadWhole(Sample("settings.txt")) + "\x1b[2J\x9b = 1\n");
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
    const Json bytes = RunJson("sections " + quoted, 0).at("bytes");
    const auto hexadecimal = [](const std::string& text) {
        return fmt::format("{:02x}", fmt::join(std::vector<unsigned char>(text.begin(), text.end()), ""));
    };
    EXPECT_EQ(bytes, Json({{"/sections/4/name", hexadecimal(name)}, {"/file", hexadecimal(file)}}));
    EXPECT_EQ(RunJson("show " + quoted, 0).at("bytes").size(), 1U);
}

TEST_F(ContainerCommandsTest, SayWhatIsWrong) {
    const std::string full = Sample("full.tdf"), out = File("out.tdf");
    ExpectTold("", {{"recover -o - " + full, 2, "end in .tdf"},
                    {"restore " + full + " -1", 2, "\"-1\" is no whole number"},
                    {"extract --json " + full + " TRACE0", 2, "extract has no JSON"},
                    {"completion --json bash", 2, "completion has no JSON"}});
    EXPECT_THAT(Shell("env TMPDIR=/no/such " STMDCM_TOOL " demo").error,
                HasSubstr("/no/such: this is no directory for temporary files: No such file or directory; set TMPDIR"));
    WriteWhole(File("empty"), "");
    WriteWhole(File("secret"), "TDF2");
    ::chmod(File("secret").c_str(), 0);
    ASSERT_EQ(::mkfifo(File("pipe").c_str(), 0600), 0);
    ExpectTold("", {{"show --plugin " + File("pipe") + " " + full, 1, "pipe: this is not a regular file"},
                    {"live --cpu x --scenario " + File("pipe"), 1, "pipe: there is no such file; name a scenario"}});
    std::vector<std::pair<std::string, const char*>> files = {{File("none"), ": there is no such file"},
                                                              {m_directory.Path(), ": this is a directory"},
                                                              {File("empty"), ": the file is empty"},
                                                              {File("pipe"), ": this is not a regular file"},
                                                              {Sample("settings.txt"), ": "}};
    if (::geteuid() != 0) {
        files.emplace_back(File("secret"), ": no permission");
    }
    for (const auto& [file, sentence] : files) {
        for (const std::string& line :
             {"sections " + file, "extract " + file + " DEVID", "recover " + file + " -o " + out}) {
            ExpectTold(line, {{"", 1, file + sentence}});
            EXPECT_EQ(Run(line).out, "") << line;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(out));
}

TEST_F(ContainerCommandsTest, AnOutputIsNeverAnInputAndNeverHalf) {
    const std::string input = File("in.tdf"), old = File("old.tdf"), full = ReadWhole(Sample("full.tdf"));
    WriteWhole(input, full);
    std::filesystem::create_symlink(input, File("link.tdf"));
    std::filesystem::create_hard_link(input, File("hard.tdf"));
    for (const char* name : {"in.tdf", "link.tdf", "hard.tdf", "./in.tdf"}) {
        ExpectTold("recover " + input + " --force -o ", {{File(name), 1, "this is the input"}});
    }
    const std::string redirected = "sh -c '" STMDCM_TOOL " ";
    for (const std::string& arguments :
         {"extract " + input + " TRACE0", "show --json " + File("hard.tdf"), "recover --plan " + input,
          "diff " + Sample("full.tdf") + " " + File("link.tdf"), "apply " + input + " " + File("none.tdf")}) {
        for (const std::string& to : {" 1<>" + input, " >>" + input}) {
            SCOPED_TRACE(arguments + to);
            const Result result = Shell(redirected + arguments + to + "'");
            EXPECT_EQ(result.status, 1);
            EXPECT_THAT(result.error, HasSubstr(".tdf: this is standard output, too; "));
            EXPECT_EQ(ReadWhole(input), full);
        }
    }
    EXPECT_EQ(ReadWhole(input), full);

    // Links are followed, and a full disk leaves the old file.
    WriteWhole(old, "old");
    std::filesystem::create_symlink(old, File("way.tdf"));
    const std::string overwrite = "recover " + input + " --force -o " + File("way.tdf");
    Limited(RLIMIT_FSIZE, 100, [&] { EXPECT_EQ(Run(overwrite).status, 1); });
    EXPECT_EQ(ReadWhole(old), "old");
    // Past the file-size limit the user's file is named, also where zeros make it so long.
    const std::string zeros = File("zeros.tdf"), made = File("made.tdf");
    WriteWhole(zeros, full + MakeSection("HOST", 1, std::string(1 << 20, '\0')));
    Limited(RLIMIT_FSIZE, 1 << 19, [&] {
        for (const auto& [arguments, named] : {std::pair("recover --plan " + zeros, Temporary().string()),
                                               {"recover " + zeros + " -o " + made, made},
                                               {"extract " + zeros + " HOST -o " + made, made}}) {
            const Result result = Run(arguments);
            EXPECT_EQ(result.status, 1) << arguments;
            EXPECT_THAT(result.error, testing::MatchesRegex("stmdcm: " + named + ": .*: File too large\n"));
        }
    });
    ExpectNothingLeft();
    std::filesystem::remove(zeros);
    EXPECT_EQ(Run(overwrite).status, 0);
    EXPECT_EQ(ReadWhole(old), full);
    EXPECT_TRUE(std::filesystem::is_symlink(File("way.tdf")));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_directory.Path()), {}), 5) << "no temporary file";
}

constexpr char kNote[] = "user.note";
constexpr char kAcl[] = "system.posix_acl_access";
/// An attribute's bytes: the owner and user 1001 may read, nobody else anything.
const std::string kReaderAcl(
    "\2\0\0\0\1\0\6\0\377\377\377\377\2\0\4\0\351\3\0\0\4\0\0\0\377\377\377\377\20\0\4\0"
    "\377\377\377\377\40\0\0\0\377\377\377\377",
    44);

/// What it has beside its content.
std::string Having(const std::string& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    std::string text = fmt::format("{}:{} {:o}", info.st_uid, info.st_gid, info.st_mode & 07777);
    for (const char* name : {kNote, kAcl}) {
        char value[100];
        const ssize_t size = ::getxattr(path.c_str(), name, value, sizeof value);
        text += fmt::format(" {:?}", size < 0 ? "none" : std::string_view(value, static_cast<std::size_t>(size)));
    }
    return text;
}

TEST_F(ContainerCommandsTest, WhatTakesAFilesPlaceHasItsOwnerModeAndAttributes) {
    const std::string full = Sample("full.tdf"), live = "live --cpu Core_0/Cluster --scenario " STMDCM_TEST_DATA
                                                        "/../../sim/scenarios/example.json";
    const std::pair<const char*, std::string> commands[] = {
        {"settings.txt", "set FILE STM_ATB_Id=42"},
        {"full.tdf", "set FILE STM_ATB_Id=42"},
        {"full.tdf", "apply --force " + Sample("settings-unknown-key.txt") + " FILE"},
        {"shadowed.tdf", "restore FILE 3"},
        {"full.tdf", "objects FILE --update --accept-changed --map /opt/images/app0.out=" + full},
        {"settings-crlf.txt", "convert --force " + full + " FILE"},
        {"full.tdf", "recover --force " + Sample("shadowed.tdf") + " -o FILE"},
        {"settings.txt", "extract --force " + full + " DEVID -o FILE"},
        {"settings.txt", live + " --force --save FILE"}};
    for (auto [name, command] : commands) {
        SCOPED_TRACE(command);
        const std::string file = File(name);
        WriteWhole(file, ReadWhole(Sample(name)));
        ::chmod(file.c_str(), 0640);
        ::setxattr(file.c_str(), kNote, "mine", 4, 0);
        ::setxattr(file.c_str(), kAcl, kReaderAcl.data(), kReaderAcl.size(), 0);
        if (::geteuid() == 0) {
            ::chown(file.c_str(), 4711, 4712);
        }
        const std::string before = Having(file);
        command.replace(command.find("FILE"), 4, file);
        const Result result = Run(command);
        EXPECT_TRUE(result.status == 0 || result.status == 3) << result.error;
        EXPECT_NE(ReadWhole(file), ReadWhole(Sample(name))) << result.out;
        EXPECT_EQ(Having(file), before);
    }
}

TEST_F(ContainerCommandsTest, NobodyGetsMoreRightsThanHeHad) {
    const std::string input = File("in.tdf"), output = File("out.tdf"), recover = "recover " + input + " -o " + output;
    WriteWhole(input, ReadWhole(Sample("full.tdf")));
    for (const unsigned mode : {0600U, 0640U, 0664U, 0400U}) {
        ::chmod(input.c_str(), mode);
        std::filesystem::remove(output);
        EXPECT_EQ(Run(recover).status, 0);
        EXPECT_EQ(Having(output), Having(input));
        ::chmod(output.c_str(), 0777);
        EXPECT_EQ(Run(recover + " --force").status, 0);
        EXPECT_EQ(Having(output), Having(input));
    }
    if (::geteuid() != 0) {
        return;  // nobody can make a file of another user
    }
    ::chmod(input.c_str(), 0644);
    ::chmod(m_directory.Path().c_str(), 0777);
    ::chmod(output.c_str(), 04764);
    const Result other = Shell("setpriv --reuid 65534 --regid 65534 --clear-groups " STMDCM_TOOL " extract " + input +
                               " DEVID --force -o " + output);
    EXPECT_EQ(other.status, 3);
    EXPECT_THAT(other.error, HasSubstr(output + ": the owner of the file that was there could not be kept"));
    EXPECT_THAT(Having(output), HasSubstr("65534:65534 744 "));
}

}  // namespace

}  // namespace stmdcm
