// Finding program images, and recording where they are.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/images/ImageUpdate.h"
#include "tests/support/ScratchDir.h"
#include "tool/cli/ExitStatus.h"
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
    void Record(const std::string& path) {
        std::string payload;
        Zu::Wep::Trace::AppendObjectFileEntry(payload, {"core0", path, kRecorded});
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
    Record(Image("a.out") + "/b.out");
    EXPECT_STREQ(Now().DiskStateName(), "missing");
}

}  // namespace
}  // namespace stmdcm
