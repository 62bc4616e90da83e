// Finding program images, and recording where they are.

#include <elf.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/images/ImageUpdate.h"
#include "stmdcm/reading/Reading.h"
#include "tests/support/ScratchDir.h"
#include "tests/tool/CommandHere.h"
#include "tool/cli/ExitStatus.h"
#include "trace/dcm/CDeviceConfigManager.h"
#include "trace/dcm/DeviceConfigManager.h"
#include "trace/format/ObjectFileSection.h"

namespace stmdcm {
namespace {

using stmdcm_test::ReadWhole;
using stmdcm_test::WriteWhole;

TEST(PathMappingTest, MapsWholeNames) {
    const std::tuple<std::vector<const char*>, const char*, const char*> cases[] = {
        {{"/a/b=/n"}, "/a/b/c.out", "/n/c.out"},
        {{"/a/b=/n"}, "/a/bc/c.out", "none"},
        {{"/a/b=/n"}, "/x/a/b/c.out", "none"},
        {{"/a/b/=/n/"}, "/a/b/c.out", "/n/c.out"},
        {{"/a/b/c.out=/n/d.out"}, "/a/b/c.out", "/n/d.out"},
        {{"/a=/n"}, "/a", "/n"},
        {{"/=/n"}, "/a/c.out", "/n/a/c.out"},
        {{"/a=/"}, "/a/c.out", "/c.out"},
        {{"rel=/n"}, "rel/c.out", "/n/c.out"},
        {{"/a=/n=m"}, "/a/c.out", "/n=m/c.out"},
        {{"/a=/n", "/a/b=/m"}, "/a/b/c.out", "/m/c.out"},
        {{"/a/b=/m", "/a=/n"}, "/a/b/c.out", "/m/c.out"},
        {{"/a=/n", "/a=/m"}, "/a/c.out", "/n/c.out"},
        {{"/a=/x/../n"}, "/a/c.out", "/n/c.out"}};
    for (const auto& [texts, path, mapped] : cases) {
        std::vector<PathMapping> mappings;
        std::transform(texts.begin(), texts.end(), std::back_inserter(mappings), &PathMapping::Parse);
        EXPECT_EQ(MapPath(mappings, path).value_or("none"), mapped) << texts.front() << " " << path;
    }
    for (const char* text : {"", "=", "/a=", "=/n", "/a"}) {
        EXPECT_THROW(PathMapping::Parse(text), Failure) << text;
    }
}

struct ImagesTest : testing::Test {
    static constexpr std::int64_t kRecorded = 1700000000;

    stmdcm_test::ScratchDir m_directory;
    const std::string m_file = m_directory / "capture.tdf";

    std::string Image(const std::string& name, std::int64_t modified = kRecorded) {
        const std::string path = m_directory / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        return stmdcm_test::WriteDated(path, modified);
    }
    /// A capture with one image, recorded at that path.
    void Record(const std::string& path, std::int64_t recorded = kRecorded) {
        std::string payload;
        Zu::Wep::Trace::AppendObjectFileEntry(payload, {"core0", path, recorded});
        WriteWhole(m_file, ReadWhole(STMDCM_TEST_DATA "/full.tdf"));
        CaptureEditor(m_file).Replace({{"DCM_COMMON", 1, payload}});
    }
    ImageList Update(bool acceptChanged, const std::string& mapping = "/old=/none") {
        ImageFinder finder({PathMapping::Parse(mapping)}, {m_directory / "search"});
        return UpdateImages(m_file, finder, acceptChanged);
    }
    ObjectFile Now() {
        ImageFinder finder({}, {});
        return ListImages(m_file, finder).answers.front().recorded;
    }
};

TEST_F(ImagesTest, RecordsNoImageOfAnotherTimeUnlessTold) {
    std::filesystem::create_directory(m_directory / "search");
    const std::string exact = Image("moved/a.out");
    const std::string changed = Image("moved/b.out", kRecorded + 5);
    const std::string mapping = "/old=" + m_directory.Path() + "/moved";

    Record("/old/a.out");
    EXPECT_EQ(StatusOf(Update(false, mapping)), ExitStatus::Done);
    EXPECT_EQ(Now().path, exact);
    EXPECT_STREQ(Now().DiskStateName(), "same time, not proven");
    const std::string written = ReadWhole(m_file);
    EXPECT_FALSE(Update(false, mapping).isWritten);
    EXPECT_EQ(ReadWhole(m_file), written);

    Record("/old/b.out");
    EXPECT_EQ(StatusOf(Update(false, mapping)), ExitStatus::Failed);
    EXPECT_EQ(Now().path, "/old/b.out");
    EXPECT_EQ(StatusOf(Update(true, mapping)), ExitStatus::Done);
    EXPECT_EQ(Now().path, changed);
    EXPECT_EQ(Now().recorded, kRecorded + 5);
}

TEST_F(ImagesTest, SearchesAndDoesNotGuess) {
    const std::string other = Image("search/x/a.out", kRecorded + 1);
    std::filesystem::create_directory_symlink(m_directory.Path(), m_directory / "search/loop");
    std::filesystem::create_symlink(other, m_directory / "search/x/b.out");
    Image("outside/b.out");
    Record("/old/b.out");
    EXPECT_EQ(StatusOf(Update(true)), ExitStatus::Failed) << "links are not followed";

    Record("/old/a.out");
    EXPECT_FALSE(Update(false).isWritten) << "it has another time";
    const std::string second = Image("search/y/a.out", kRecorded + 2);
    const ImageList unsure = Update(true);
    EXPECT_FALSE(unsure.isWritten);
    EXPECT_EQ(unsure.answers.front().candidates, (std::vector{other, second}));

    const std::string exact = Image("search/z/a.out");
    EXPECT_EQ(StatusOf(Update(false)), ExitStatus::Done);
    EXPECT_EQ(Now().path, exact);

    // A changed file at the recorded place gives way to one with the recorded time alone.
    Record(Image("here/a.out", kRecorded + 9));
    EXPECT_TRUE(Update(false).isWritten);
    EXPECT_EQ(Now().path, exact);
    std::filesystem::remove(exact);
    Record(m_directory / "here/a.out");
    EXPECT_FALSE(Update(false).isWritten);
}

TEST_F(ImagesTest, CallsNothingMissingThatCantBeLookedAt) {
    std::filesystem::create_directory(m_directory / "search");
    std::filesystem::create_symlink("loop", m_directory / "loop");
    for (const auto& [path, cause] : {std::pair(m_directory / "loop/a.out", "Too many levels of symbolic links"),
                                      std::pair("/" + std::string(300, 'n'), "File name too long")}) {
        Record(path);
        const ImageList list = Update(true);
        EXPECT_EQ(StatusOf(list), ExitStatus::Failed);
        EXPECT_STREQ(list.answers.front().found.DiskStateName(), "unknown");
        ASSERT_EQ(list.doubts.size(), 1U);
        EXPECT_TRUE(list.doubts.front().ends_with(std::string("can't be looked at: ") + cause)) << list.doubts.front();
    }
    const std::string pipe = m_directory / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& place : {pipe, m_directory / "search", std::string("/dev/null")}) {
        struct stat info {};
        ASSERT_EQ(::stat(place.c_str(), &info), 0);
        Record(place, info.st_mtime);
        const ImageList list = Update(true);
        EXPECT_EQ(StatusOf(list), ExitStatus::Failed) << place;
        EXPECT_STREQ(list.answers.front().found.DiskStateName(), "unknown");
        ASSERT_EQ(list.doubts.size(), 1U);
        EXPECT_TRUE(list.doubts.front().ends_with("no regular file, so no program image")) << list.doubts.front();
    }
    Record(Image("a.out") + "/b.out");
    EXPECT_STREQ(Now().DiskStateName(), "missing");
}

/// An image for a target of 32 bits, with a build-id where there is one.
std::string Elf(const std::string& buildId, const std::string& code) {
    Elf32_Ehdr header{};
    std::copy_n(ELFMAG, SELFMAG, header.e_ident);
    header.e_ident[EI_CLASS] = ELFCLASS32;
    header.e_ident[EI_DATA] = ELFDATA2LSB;
    header.e_version = header.e_ident[EI_VERSION] = EV_CURRENT;
    header.e_type = ET_EXEC;
    header.e_phoff = header.e_ehsize = sizeof header;
    header.e_phentsize = sizeof(Elf32_Phdr);
    header.e_phnum = buildId.empty() ? 0 : 1;
    const Elf32_Nhdr note{sizeof ELF_NOTE_GNU, static_cast<Elf32_Word>(buildId.size()), NT_GNU_BUILD_ID};
    const std::uint32_t size = sizeof note + sizeof ELF_NOTE_GNU + note.n_descsz;
    const Elf32_Phdr segment{PT_NOTE, sizeof header + sizeof segment, 0, 0, size, size, PF_R, 4};
    std::string bytes;
    const auto add = [&](const auto& part) { bytes.append(reinterpret_cast<const char*>(&part), sizeof part); };
    add(header);
    add(segment);
    add(note);
    return bytes.append(ELF_NOTE_GNU, sizeof ELF_NOTE_GNU) + buildId + code;
}

struct PinsTest : ImagesTest {
    PinsTest() { std::filesystem::create_directory(m_directory / "search"); }

    std::string Put(const std::string& name, const std::string& bytes, std::int64_t modified = kRecorded) {
        const std::string path = Image(name);
        WriteWhole(path, bytes);
        const timespec times[] = {{modified, 0}, {modified, 0}};
        EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        return path;
    }
    ImageList Pin(bool acceptChanged = false) {
        ImageFinder finder({}, {});
        return UpdateImages(m_file, finder, acceptChanged, ChangeMode::Write, {false, true});
    }
};

TEST_F(PinsTest, TellsTheImageThatWasCapturedFromAllOthers) {
    for (const std::string id : {"", "0123", "01234567890123456789"}) {
        const std::string image = Put("a.out", Elf(id, "code"));
        Record(image);
        ASSERT_EQ(StatusOf(Pin()), ExitStatus::Done);
        const std::string pinned = ReadWhole(m_file);
        EXPECT_FALSE(Pin().isWritten);
        EXPECT_EQ(ReadWhole(m_file), pinned);
        EXPECT_EQ(Container(m_file).ReadPayload(*Container(m_file).Find("IMAGE_PINS", 1)).size(), 6 + 45 + id.size());
        const std::tuple<std::string, std::int64_t, const char*> cases[] = {
            {Elf(id, "code"), kRecorded, "as captured"},
            {Elf(id, "code"), kRecorded + 1, "as captured"},
            {Elf(id, "Code"), kRecorded, id.empty() ? "another image" : "same build-id, other content"},
            {Elf(id, "code+"), kRecorded, id.empty() ? "another image" : "same build-id, other content"},
            {Elf(id + "x", "code"), kRecorded, "another image"},
            {Elf(id.empty() ? "" : "x" + id.substr(1), "code"), kRecorded,
             id.empty() ? "as captured" : "another image"}};
        for (const auto& [bytes, modified, state] : cases) {
            Put("a.out", bytes, modified);
            EXPECT_STREQ(Now().DiskStateName(), state) << id << " " << modified;
            const bool isOther = state != std::string_view("as captured");
            EXPECT_EQ(StatusOf(Pin()), isOther ? ExitStatus::Failed : ExitStatus::Done);
            EXPECT_EQ(ReadWhole(m_file), pinned) << "pinned what was not captured";
        }
        Put("a.out", Elf(id, "new"));
        EXPECT_TRUE(Pin(true).isWritten);
        EXPECT_STREQ(Now().DiskStateName(), "as captured");
        EXPECT_EQ(CheckFile(m_file).findings.Count(Kind("C-RETIRED")), 2U) << "DCM_COMMON and the first pins";
    }
}

TEST_F(PinsTest, SearchFindsTheImageUnderAnyNameAndTime) {
    for (const std::string id : {"", "01234567890123456789"}) {
        const std::string image = Put("a.out", Elf(id, "code"));
        Record(image);
        Pin();
        std::filesystem::remove(image);
        Put("search/a.out", Elf(id, "Code"));
        EXPECT_EQ(StatusOf(Update(true)), ExitStatus::Failed) << "it has name, time and size";
        const std::string stripped = Put("search/b.out", Elf(id, "c"));
        const ImageList unsure = Update(false);
        const auto told = [](const std::string& doubt) {
            return doubt.find("but another content") != std::string::npos;
        };
        EXPECT_EQ(std::count_if(unsure.doubts.begin(), unsure.doubts.end(), told), id.empty() ? 0 : 2);
        EXPECT_EQ(unsure.answers.front().candidates.size(), id.empty() ? 0U : 2U);
        Put("search/y/other.elf", Elf(id, "code"), 5);
        const std::string first = Put("search/x/renamed.elf", Elf(id, "code"), 7);
        const ImageList found = Update(false);
        EXPECT_EQ(std::count_if(found.doubts.begin(), found.doubts.end(), told), id.empty() ? 0 : 2);
        EXPECT_EQ(StatusOf(found), id.empty() ? ExitStatus::Done : ExitStatus::Doubtful);
        EXPECT_EQ(std::tuple(Now().path, Now().recorded), std::tuple(first, 7));
        EXPECT_STREQ(Now().DiskStateName(), "as captured");
        std::filesystem::remove_all(m_directory / "search/x");
        std::filesystem::remove_all(m_directory / "search/y");
    }
}

TEST_F(PinsTest, OneThatCantBeReadCostsItselfAlone) {
    const std::string image = Put("a.out", "code");
    const std::string large = Put("b.out", "data");
    std::string payload;
    for (const std::string& path : {image, large}) {
        Zu::Wep::Trace::AppendObjectFileEntry(payload, {path, path, kRecorded});
    }
    Record("");
    CaptureEditor(m_file).Replace({{"DCM_COMMON", 1, payload}});
    ImageFinder finder({}, {}, [&](const std::string& path, std::uint64_t /*done*/, std::uint64_t /*size*/) {
        if (path == large) {
            Put("b.out", std::string(1U << 20, 'x'), kRecorded + 1);  // while it is hashed
        }
    });
    Put("b.out", std::string(1U << 20, 'd'));
    const ImageList list = UpdateImages(m_file, finder, false, ChangeMode::Write, {false, true});
    EXPECT_EQ(StatusOf(list), ExitStatus::Doubtful);
    EXPECT_EQ(std::tuple(list.unresolved, list.doubts.size()), std::tuple(1U, 1U));
    EXPECT_NE(PinList::Of(Container(m_file)).Find(image, 0), nullptr);
    EXPECT_EQ(PinList::Of(Container(m_file)).Find(large, 0), nullptr);
}

TEST_F(PinsTest, TornOnesAreMendedAndThoseOfAnotherVersionTold) {
    Record(Put("a.out", "code"));
    Pin();
    const std::string whole = Container(m_file).ReadPayload(*Container(m_file).Find("IMAGE_PINS", 1));
    CaptureEditor(m_file).Replace({{"IMAGE_PINS", 1, whole + "core1"}});
    EXPECT_TRUE(Pin().isWritten);
    EXPECT_EQ(StatusOf(Pin()), ExitStatus::Done);
    CaptureEditor(m_file).Replace({{"IMAGE_PINS", 2, whole}});
    const ImageList list = Pin();
    EXPECT_EQ(std::tuple(list.isWritten, StatusOf(list)), std::tuple(false, ExitStatus::Doubtful));
    EXPECT_NE(list.doubts.front().find("has version 2, not 1"), std::string::npos) << list.doubts.front();
}

TEST_F(PinsTest, StayWhereACaptureIsChangedAndAreNothingToThePlugin) {
    const std::string plain = m_directory / "plain.tdf";
    const std::string recovered = m_directory / "recovered.tdf";
    Record(Put("a.out", Elf("0123", "code")));
    WriteWhole(plain, ReadWhole(m_file));
    Pin();
    ::setenv("HOME", m_directory.Path().c_str(), 1);
    const std::size_t size = ReadWhole(m_file).size();
    ASSERT_GT(size, ReadWhole(plain).size());

    for (const std::string& file : {plain, m_file}) {
        char name[] = "CPU";
        Zu::Wep::Trace::CPUInfo cpu{name, 0, 0, 0};
        auto* manager = static_cast<Zu::Wep::Trace::CDeviceConfigManager*>(CreateDeviceConfigManager(&cpu, nullptr));
        EXPECT_TRUE(manager->LoadConfiguration(file, Zu::Wep::Trace::TRACE_DATA_FILE_TDF));
        EXPECT_TRUE(manager->SaveConfiguration(file, Zu::Wep::Trace::TRACE_DATA_FILE_TDF));
        DestroyDeviceConfigManager(manager);
    }
    const std::size_t plainSize = size - (ReadWhole(m_file).size() - ReadWhole(plain).size());
    EXPECT_EQ(ReadWhole(m_file).substr(size), ReadWhole(plain).substr(plainSize));

    const std::vector<std::vector<std::string>> changes = {{"set", m_file, "STM_ATB_Id=42"},
                                                           {"apply", plain, m_file},
                                                           {"restore", m_file, "2"},
                                                           {"undo", m_file},
                                                           {"history", "--prune", "0", m_file, "-o", recovered},
                                                           {"recover", m_file, "-o", recovered, "--force"},
                                                           {"objects", m_file, "--update"}};
    for (const auto& arguments : changes) {
        const ToolRun::Result result = CommandHere().Run(arguments);
        EXPECT_TRUE(result.status == 0 || result.status == 3) << arguments.front() << result.error;
        const bool isCopy = std::find(arguments.begin(), arguments.end(), recovered) != arguments.end();
        EXPECT_EQ(Read(isCopy ? recovered : m_file).pins, 1U) << arguments.front();
    }
    const ToolRun::Result lost = CommandHere().Run({"convert", m_file, m_directory / "settings.txt"});
    EXPECT_EQ(lost.status, 3);
    EXPECT_NE(lost.error.find("settings have no pins: those of 1 program image"), std::string::npos) << lost.error;
}

}  // namespace
}  // namespace stmdcm
