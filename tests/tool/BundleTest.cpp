// A capture that is handed to somebody with its program images.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "stmdcm/Failure.h"
#include "stmdcm/bundle/BundleManifest.h"
#include "stmdcm/images/ImageUpdate.h"
#include "stmdcm/pins/Sha256.h"
#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/Reading.h"
#include "tests/support/KillAtSyscall.h"
#include "tests/support/ScratchDir.h"
#include "tests/tool/CheckInputs.h"
#include "tests/tool/CommandHere.h"

namespace stmdcm {
namespace {

namespace fs = std::filesystem;
using stmdcm_test::ReadWhole;
using stmdcm_test::WriteWhole;

std::map<std::string, std::string> FilesIn(const std::string& directory) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        files[entry.path()] = entry.is_regular_file() ? ReadWhole(entry.path()) : "";
    }
    return files;
}

class BundleTest : public testing::Test {
  protected:
    static constexpr std::int64_t kRecorded = 1700000000;

    BundleTest() {
        std::string common;
        for (const auto& [name, image] : {std::pair("core0", "a.out"), {"co re%1", "b\n.out"}, {"", "a.out"}}) {
            common += ObjectFileEntryBytes(name, stmdcm_test::WriteDated(m_directory / image, kRecorded), kRecorded);
        }
        WriteWhole(m_directory / "b\n.out", "");
        fs::last_write_time(m_directory / "b\n.out", fs::last_write_time(m_directory / "a.out"));
        CaptureParts parts;
        parts.common = common;
        WriteWhole(m_capture, parts.Bytes());
    }

    ToolRun::Result Run(const std::vector<std::string>& arguments) { return CommandHere().Run(arguments); }
    ToolRun::Result Bundle() { return Run({"bundle", m_capture, "-o", m_bundle}); }
    ToolRun::Result Unbundle() { return Run({"unbundle", m_bundle, "-o", m_output, "--force"}); }
    /// Puts `by` in the place of all that is `old` in the file.
    void Edit(const std::string& file, const std::string& old, const std::string& by) {
        std::string bytes = ReadWhole(m_bundle + "/" + file);
        const std::size_t at = bytes.find(old);
        ASSERT_NE(at, std::string::npos) << old;
        WriteWhole(m_bundle + "/" + file, bytes.replace(at, old.size(), by));
    }

    stmdcm_test::ScratchDir m_directory;
    const std::string m_capture = m_directory / "run.tdf";
    const std::string m_bundle = m_directory / "run.bundle";
    const std::string m_output = m_directory / "out.tdf";
};

TEST_F(BundleTest, GivesTheSameCaptureWithItsImagesWhereverItLies) {
    for (const bool isPinned : {false, true}) {
        ASSERT_TRUE(!isPinned || Run({"objects", m_capture, "--pin"}).status == 0);
        const std::string capture = ReadWhole(m_capture);
        ASSERT_EQ(Bundle().status, 0);
        EXPECT_EQ(Bundle().status, 1) << "there is one already";
        EXPECT_EQ(ReadWhole(m_capture), capture);
        EXPECT_EQ(ReadWhole(m_bundle + "/run.tdf") == capture, isPinned);
        EXPECT_EQ(FilesIn(m_bundle).size(), 3U + 1 + 2) << "one file for two images that are alike";
        const std::string moved = m_directory / "elsewhere";
        fs::rename(m_bundle, moved);
        const auto files = FilesIn(moved);
        ASSERT_EQ(Run({"unbundle", moved, "-o", m_output, "--force"}).status, 0);
        EXPECT_EQ(FilesIn(moved), files);
        ImageFinder finder({}, {});
        const ImageList list = ListImages(m_output, finder);
        ASSERT_EQ(list.answers.size(), 3U);
        for (const ImageAnswer& answer : list.answers) {
            EXPECT_STREQ(answer.recorded.DiskStateName(), "as captured");
            EXPECT_TRUE(answer.recorded.path.starts_with(moved + "/images/")) << answer.recorded.path;
        }
        EXPECT_TRUE(Compare(Read(m_capture).configuration.WithoutObjectFiles(),
                            Read(m_output).configuration.WithoutObjectFiles())
                        .empty());
        fs::remove_all(moved);
    }
}

TEST_F(BundleTest, RefusesWhatIsNotWhatWasBundled) {
    const std::string a = "images/1-a.out", manifest = "bundle.txt";
    const std::string other = m_directory / "other";
    const auto replace = [&](const std::string& file, auto make) {
        fs::rename(m_bundle + "/" + file, other);
        make(other, m_bundle + "/" + file);
    };
    const auto link = [](const std::string& to, const std::string& at) { fs::create_symlink(to, at); };
    const auto nothing = [](const std::string& /*to*/, const std::string& /*at*/) {};
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { Edit(manifest, a, "../other"); }, "is no file in images/"},
        {[&] { Edit(manifest, a, "images/../run.tdf"); }, "is no file in images/"},
        {[&] { Edit(manifest, a, "images/.."); }, "is no file in images/"},
        {[&] { Edit(manifest, a, "images/x%2frun"); }, "is no file in images/"},
        {[&] { Edit(manifest, a, m_directory / "a.out"); }, "is no file in images/"},
        {[&] { Edit(manifest, " run.tdf", " ../run.tdf"); }, "is no file in this directory"},
        {[&] { Edit(manifest, " run.tdf", " " + m_capture); }, "is no file in this directory"},
        {[&] { Edit(manifest, " run.tdf", " README.txt"); }, "does not end in .tdf"},
        {[&] { Edit(manifest, " run.tdf", " r%0"); }, "is no text"},
        {[&] { Edit(manifest, " run.tdf", " r%00.tdf"); }, "is no text"},
        {[&] { Edit(manifest, "capture ", "capture -"); }, "is no size"},
        {[&] { Edit(manifest, "capture ", "capture 9"); }, "another size or SHA-256"},
        {[&] { Edit(manifest, "capture ", "capture 0"); }, "line 2 is not written as"},
        {[&] { Edit(manifest, "1-a.out", "%31-a.out"); }, "line 3 is not written as"},
        {[&] { Edit(manifest, "%25", "%25%5F"); }, "line 4 is not written as"},
        {[&] { WriteWhole(m_bundle + "/" + manifest, ""); },
         "bundle.txt: this is no bundle of stmdcm: the file is emp"},
        {[&] { Edit(manifest, "core0", "core9"); }, "it has no program image \"core9\""},
        {[&] { Edit(manifest, "end\n", "end\nend\n"); }, "something stands behind the end"},
        {[&] { Edit(manifest, "bundle 1", "bundle 2"); }, "does not begin with"},
        {[&] { Edit(a, "image", "imagE"); }, "another size or SHA-256"},
        {[&] { Edit(a, "image", "image+"); }, "another size or SHA-256"},
        {[&] { Edit("run.tdf", "board", "boarD"); }, "another size or SHA-256"},
        {[&] { replace(a, link); }, "a.out: this is a link"},
        {[&] { replace("images", link); }, "images: this is a link"},
        {[&] { replace("run.tdf", link); }, "run.tdf: this is a link"},
        {[&] { replace(manifest, link); }, "bundle.txt: this is a link"},
        {[&] { replace(a, nothing); }, "the bundle is not whole"},
        {[&] { replace("run.tdf", nothing); }, "the bundle is not whole"},
        {[&] { replace(manifest, nothing); }, "the bundle is not whole"},
        {[&] {  // manifest and image agree, and the pin does not
             Edit(a, "image", "imagE");
             const std::string sum = InHexadecimal(ImageExaminer().Identify(m_bundle + "/" + a).sha256);
             const std::string old = InHexadecimal(ImageExaminer().Identify(m_directory / "a.out").sha256);
             Edit(manifest, old, sum);
             Edit(manifest, old, sum);
         },
         "this is not the image of \"core0\" that was captured"}};
    for (const auto& [damage, told] : cases) {
        fs::remove_all(m_bundle);
        fs::remove_all(other);
        ASSERT_EQ(Bundle().status, 0);
        damage();
        const ToolRun::Result result = Unbundle();
        EXPECT_EQ(result.status, 1) << told;
        EXPECT_NE(result.error.find(told), std::string::npos) << told << " / " << result.error;
        EXPECT_FALSE(fs::exists(m_output)) << told;
    }
    fs::remove_all(m_bundle);
    Bundle();
    const std::string whole = ReadWhole(m_bundle + "/" + manifest);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_THROW(BundleManifest::Parse(std::string_view(whole).substr(0, size), ""), Failure) << size;
    }
    EXPECT_EQ(BundleManifest::Parse(whole, "").Text(), whole);
}

TEST_F(BundleTest, InterruptedLeavesNothingThatLooksWhole) {
    const auto work = [&] { return static_cast<int>(Bundle().status); };
    const unsigned step = stmdcm_test::kIsSanitized ? 41 : 7;
    const auto prepare = [&] { fs::remove_all(m_bundle); };
    stmdcm_test::StopEverywhere(0, {}, work, step, prepare, [&](const stmdcm_test::ChildRun& /*run*/) {
        fs::remove(m_output);
        EXPECT_EQ(fs::exists(m_bundle), Unbundle().status == 0);
    });
    for (const auto& entry : fs::directory_iterator(m_directory.Path())) {
        EXPECT_FALSE(entry.path().filename().string().starts_with(".stmdcm-")) << "the next one removes what was left";
    }
}

}  // namespace
}  // namespace stmdcm
