#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <sstream>

#include "source_utilities/PosixFile.h"
#include "stmdcm/reading/Reading.h"
#include "stmdcm/reading/Words.h"
#include "tests/tool/ConfigurationRun.h"
#include "tests/tool/SectionList.h"

#ifndef __has_feature
#define __has_feature(feature) 0
#endif

namespace stmdcm {

using stmdcm_test::ReadWhole;
using stmdcm_test::WriteWhole;
using testing::HasSubstr;
using namespace Zu::Wep::Trace;

namespace {

constexpr bool kIsSanitized = __has_feature(address_sanitizer);  // which takes memory of its own
constexpr rlim_t kMemoryLimit = 64 << 20;

class ContainerCommandsTest : public ConfigurationRun {
  protected:
    void TearDown() override { ExpectNothingLeft(); }

    std::string File(const std::string& name) const { return m_directory / name; }

    /// What recover tells of a new capture, in JSON and text, and the same of one that is only planned.
    Json Recover(const std::string& file, const std::string& output) const {
        std::filesystem::remove(output);
        const Json plan = RunJson("recover --plan " + file);
        EXPECT_FALSE(std::filesystem::exists(output));
        const int status = plan.at("good") ? 0 : 3;
        const std::string arguments = "recover " + file + " --force -o " + output;
        Json document = RunJson(arguments, status);
        const Result text = Run(arguments);
        EXPECT_EQ(text.status, status);
        EXPECT_EQ(text.error.empty(), status == 0) << text.error;
        EXPECT_THAT(text.out, HasSubstr(status == 0 ? "GOOD" : "DOUBTFUL"));
        for (const Json& remark : document.at("remarks")) {
            EXPECT_THAT(text.out, HasSubstr(remark.at("message").get<std::string>()));
        }
        EXPECT_EQ(std::to_string(ReadWhole(output).size()), document.at("output_size"));
        Json expected = plan;
        expected.update({{"written", true}, {"output", output}});
        EXPECT_EQ(plan.at("written"), false);
        EXPECT_EQ(expected, document);
        return document;
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
    std::uint64_t offset = kFirstSectionOffset;
    EXPECT_TRUE(file.WriteAt(0, {kTDFIdentifier}));
    for (std::uint64_t i = 0; i < kLarge; ++i, offset += kLargeLength) {
        EXPECT_TRUE(file.WriteAt(offset, {EncodeSectionStart(kLargeLength, "BULK" + std::to_string(i), 1)}));
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
        const Json document = Recover(Sample(file), File("out.tdf"));
        std::string found;
        for (const Json& remark : document.at("remarks")) {
            found += remark.at("kind").get<std::string>() + " ";
        }
        EXPECT_EQ(found, kinds);
        EXPECT_EQ(document.at("good"), *kinds == '\0');
    }
}

/// What accidents do to a capture of several sections.
std::vector<std::pair<std::string, std::string>> Damaged(const std::string& whole) {
    const std::vector<SectionInfo> sections = SectionList(whole);
    const auto bytesOf = [&](const SectionInfo& section) { return whole.substr(section.offset, section.length); };
    const auto lie = [&](const SectionInfo& section, std::uint64_t end) { return Stating(whole, section, end); };
    std::string zeroed = whole;
    zeroed.replace(whole.find("STMDECODERINFO") + 44, 100, 100, '\0');
    const std::string sectionsAlone = whole.substr(kFirstSectionOffset);
    const std::string_view behind = std::string_view(whole).substr(sections[2].offset);
    return {{"nothing", whole},
            {"identifier cut off", sectionsAlone},
            {"identifier overwritten", std::string(kFirstSectionOffset, '\0') + sectionsAlone},
            {"garbage in front", "garbage" + sectionsAlone},
            {"swallowed one", lie(sections[0], sections[1].offset + sections[1].length)},
            {"swallowed all", lie(sections[0], whole.size())},
            {"swallowed into the midst", lie(sections[1], sections.back().payloadOffset + 5)},
            {"swallowed nearly all", lie(sections[0], whole.size() - 3)},
            {"text zeroed", zeroed},
            {"cut", whole.substr(0, whole.size() - 100)},
            {"doubled", whole + sectionsAlone},
            {"swapped", std::string(kTDFIdentifier) + bytesOf(sections[1]) + bytesOf(sections[0]).append(behind)}};
}

TEST_F(ContainerCommandsTest, WhatRecoverTellsCanBeExtractedAndSplitAndGoodIsWhatCheckPasses) {
    const std::string file = File("damaged.tdf"), out = File("out.tdf");
    for (const char* sample : {"full.tdf", "shadowed.tdf", "packed.tdf"}) {
        const std::string whole = ReadWhole(Sample(sample));
        for (const auto& [what, bytes] : Damaged(whole)) {
            SCOPED_TRACE(std::string(sample) + ": " + what);
            WriteWhole(file, bytes);
            const Json document = Recover(file, out);
            EXPECT_EQ(ReadWhole(file), bytes);
            EXPECT_TRUE(!document.at("good") || CheckFile(out).findings.Count(Severity::Error) == 0);
            EXPECT_EQ(document.at("good"), what == "nothing" || what == "doubled" || what == "swapped");
            std::string first;
            for (const Json& remark : document.at("remarks")) {
                const std::string offset = remark.at("offset");
                if (remark.at("section").is_null() || remark.at("length") == "0") {
                    continue;
                }
                const Result extracted = Run("extract " + file + " --offset " + offset);
                EXPECT_EQ(extracted.status, remark.at("kind") == "cut_short" ? 3 : 0) << remark;
                const SectionHeader header = DecodeSectionHeader(bytes.data() + std::stoul(offset));
                const std::size_t begin = SectionHeader::kSize + header.nameLength;
                EXPECT_EQ(extracted.out, bytes.substr(std::stoul(offset) + begin, header.length - begin));
                if (first.empty() && remark.at("kind") == "hidden_section") {
                    first = offset;
                }
            }
            EXPECT_EQ(first.empty(), !what.starts_with("swallowed ") || what == "swallowed into the midst");
            if (!first.empty()) {
                const Json split = RunJson("recover " + file + " --force --split " + first + " -o " + out, 3);
                EXPECT_EQ(split.at("repaired_sections"), "1");
                EXPECT_EQ(split.at("remark_count"), "1") << split;
                EXPECT_EQ(ReadWhole(out).size(), whole.size());
                EXPECT_EQ(CheckFile(out).findings.Count(Severity::Error), 0U);
            }
        }
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
    EXPECT_EQ(ReadWhole(input), full);

    // Links are followed, and a full disk leaves the old file.
    WriteWhole(old, "old");
    std::filesystem::create_symlink(old, File("way.tdf"));
    const std::string overwrite = "recover " + input + " --force -o " + File("way.tdf");
    Limited(RLIMIT_FSIZE, 100, [&] { EXPECT_EQ(Run(overwrite).status, 1); });
    EXPECT_EQ(ReadWhole(old), "old");
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
