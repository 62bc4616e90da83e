// Many captures in one run: as each alone, in order, and whatever stops it.

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <random>
#include <set>
#include <thread>

#include "source_utilities/PosixFile.h"
#include "stmdcm/pins/ImageExaminer.h"
#include "stmdcm/reading/Reading.h"
#include "tests/support/KillAtSyscall.h"
#include "tests/tool/ConfigurationRun.h"

namespace stmdcm {
namespace {

class ManyTest : public ConfigurationRun {
  protected:
    /// A process that runs the tool by a shell; what it says goes into the files "out" and "err".
    pid_t Start(const std::string& arguments) const {
        const std::string line = "exec " STMDCM_TOOL " " + arguments + " >" + Path("out") + " 2>" + Path("err");
        return stmdcm_test::StartChild([&] { return ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr); });
    }
    static int End(pid_t child, int number) {
        ::kill(child, number);
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
};

TEST_F(ManyTest, EachIsAsItWouldBeAloneAndInTheOrderOfTheFiles) {
    const std::string base = Sample("full.tdf");
    std::vector<std::string> files;
    for (int i = 0; i < 5; ++i) {
        for (const char* name : {"full.tdf", "packed.tdf", "wrong-magic.tdf", "shadowed.tdf", "torn-payload.tdf"}) {
            files.push_back(Write(std::to_string(i) + name, Content(Sample(name))));
        }
    }
    files.push_back("/none.tdf");
    std::string named, lines, zeros;
    for (const std::string& file : files) {
        named += " " + file;
        lines += file + "\n\n";
        zeros += file + '\0';
    }
    const std::string fromLines = " --files-from - <" + Write("lines", lines.substr(0, lines.size() - 2));
    for (const std::string& command :
         {std::string("show"), std::string("check"), "diff " + base, std::string("history"), std::string("objects"),
          std::string("restore $ 2 --dry-run"), std::string("set $ STM_ATB_Id=9 --dry-run"),
          "apply " + base + " $ --dry-run"}) {
        SCOPED_TRACE(command);
        const auto with = [&](const std::string& words, const std::string& more) {
            const std::size_t place = command.find(" $");
            return "--json " +
                   (place == std::string::npos ? command + words : std::string(command).replace(place, 2, words)) +
                   more;
        };
        const Result whole = Run(with(named, ""));
        std::istringstream in(whole.out);
        for (const std::string& file : files) {
            std::string line;
            ASSERT_TRUE(std::getline(in, line));
            const Result alone = Run(with(" " + file, ""));
            EXPECT_EQ(Json::parse(line), Json::parse(alone.out)) << file;
            EXPECT_THAT(whole.error, testing::HasSubstr(alone.error));
        }
        EXPECT_THAT(whole.error, testing::HasSubstr("\nstmdcm: 26 files: "));
        for (const std::string& more : {std::string(" -j 3"), std::string(" -j 0"), fromLines, fromLines + " -j 2",
                                        " -0 --files-from " + Write("zeros", zeros) + " -j 30"}) {
            const Result same = Run(with(more.find("-from") == std::string::npos ? named : "", more));
            EXPECT_EQ(same.status, whole.status) << more;
            EXPECT_TRUE(same.out == whole.out && same.error == whole.error) << more << same.error;
        }
    }
}

TEST_F(ManyTest, TellsAtTheEndWhatBecameOfThem) {
    const std::string a = Copy("full.tdf"), b = Copy("packed.tdf"), both = " " + a + " " + b + " ";
    std::filesystem::create_directory(Path("of"));
    ExpectTold("",
               {{"show" + both, 0, ""},
                {"set" + both + "STM_ATB_Id=7", 0, "2 files: 1 changed, 1 as asked already\n"},
                {"set" + both + "STM_ATB_Id=8 --dry-run", 0, "2 files: 2 would be changed\n"},
                {"set" + both + "/none STM_ATB_Id=300", 1, "3 files: 2 changed, 2 with doubts, 1 failed\n"},
                {"set --files-from " + Write("list", a) + " STM_ATB_Id=300", 0, "1 file: 1 as asked already\n"},
                {"diff " + a + both, 1, "2 files: 1 equal, 1 different\n"},
                {"diff " + a + " " + a + " /none", 4, "2 files: 1 equal, 1 failed\n"},
                {"check --severity error" + both, 0, "2 files: nothing found\n"},
                {"objects " + Sample("malformed-common.tdf") + " " + Sample("unterminated-common.tdf"), 1,
                 "2 files: 1 with images that are not there, 1 with a list that ends within an image, 2 with doubts"},
                {"objects --pin --accept-changed --map /opt/images/app0.out=/dev/null" + both, 1,
                 "full.tdf: the program image /dev/null of \"core0\": this is no regular file"},
                {"show --files-from /dev/null", 0, "0 files: no file was named\n"},
                {"set --files-from /dev/null STM_ATB_Id=7", 0, "0 files: no capture was named\n"},
                {"show --files-from - <&-", 1, "-: the list of files can't be read: Bad file descriptor"},
                {"show --files-from /none", 1, "/none: the list of files can't be opened: No such file"},
                {"show --files-from " + Path("of"), 1, "can't be read: Is a directory"},
                {"set" + both + "STM_ATB_Id=9 --files-from " + Path("of"), 1,
                 "2 files: 2 changed; the list of files could not be read to its end\n"},
                {"show --files-from " + Write("zero", a + '\0' + b), 1, "use -0"},
                {"show --files-from " + Write("long", std::string(9000, 'x')), 1, "longer than 4096 bytes"},
                {"show -0" + both, 2, "-0"},
                {"show --get STM_Atb" + both, 2, "there is no property \"STM_Atb\""},
                {"show --get STM_ATB_Id --changed" + both, 2, "--get"}});
    const std::string mixed = a + "\n" + std::string(200'000, 'x') + "\na" + '\0' + "b\n" + Path("of") + "\n" + b;
    for (const char* jobs : {" -j 1", " -j 2", " -j 30"}) {
        const std::string command = "set STM_ATB_Id=1" + std::to_string(jobs[4] - '0') + " --files-from ";
        const std::vector<Json> told = RunLines(command + Write("mixed", mixed) + jobs, 1);
        ASSERT_EQ(told.size(), 5U);
        EXPECT_TRUE(told[0].at("written") && told[4].at("written"));
        EXPECT_EQ(told[1].at("failure").at("file"), std::string(60, 'x') + "...");
        EXPECT_EQ(told[2].at("failure").at("file"), std::string("a\0b", 3));
    }
    std::string none;
    for (int i = 0; i < 26; ++i) {
        none += "/none" + std::to_string(i) + "\n";
    }
    const Result failing = Run("show --files-from " + Write("none", none));
    EXPECT_THAT(failing.error, testing::HasSubstr("failed: /none0: there is no such file"));
    EXPECT_THAT(failing.error, testing::HasSubstr("stmdcm: failed: 6 more\nstmdcm: 26 files: 26 failed\n"));
}

TEST_F(ManyTest, ComesAsTheListDoesAndSaysHowFarItCame) {
    for (const char* jobs : {"1", "2"}) {
        const std::string list = Path("list"), file = Copy("full.tdf"), out = Path("out");
        ::mkfifo(list.c_str(), 0600);
        const pid_t child = Start("set --progress STM_ATB_Id=43 --files-from " + list + " -j " + jobs);
        std::ofstream names(list);
        names << file << "\n" << file << "\n" << std::flush;
        for (int i = 0; i < 500 && Content(out).find("nothing to change") == std::string::npos; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_THAT(Content(out), testing::HasSubstr("nothing to change")) << "the list has not ended yet";
        EXPECT_EQ(End(child, SIGINT), 128 + SIGINT);
        EXPECT_THAT(Content(Path("err")),
                    testing::HasSubstr("stmdcm: interrupted; 2 of the files done; each of the others"));
        std::filesystem::remove(list);
    }
}

TEST_F(ManyTest, ProcessesAskAnImageOnceAmongThemAll) {
    const std::string image = Write("image", std::string(1 << 20, 'x'));
    const ImageIdentity identity = ImageExaminer().Identify(image);
    const auto hashed = ZU_WEP::PosixFile::Open(Path("hashed").c_str(), O_WRONLY | O_CREAT | O_APPEND);
    ImageExaminer examiner([&](const std::string&, std::uint64_t done, std::uint64_t size) {
        EXPECT_TRUE(done < size || hashed.Write("x"));
    });
    examiner.ShareAmongForked();
    std::vector<pid_t> children(4);
    for (pid_t& child : children) {
        child = stmdcm_test::StartChild([&] { return examiner.Identify(image) == identity ? 0 : 1; });
    }
    for (const pid_t child : children) {
        EXPECT_EQ(stmdcm_test::WaitForChild(child), 0);
    }
    EXPECT_EQ(Content(Path("hashed")), "x");
}

/// One of two processes waits for a capture's lock, and the other is ahead.
TEST_F(ManyTest, NothingThatWasChangedStaysUntoldWhoeverIsKilled) {
    const auto wait = [](const auto& isReached) {
        for (int i = 0; i < 500 && !isReached(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    };
    const std::string original = Content(Sample("full.tdf"));
    for (const int number : {SIGKILL, SIGTERM, SIGINT}) {
        const std::string a = Write("a.tdf", original), b = Write("b.tdf", original), c = Write("c.tdf", original);
        const std::string d = Write("d.tdf", original), done = ": changed\n", out = Path("out");
        auto lock = ZU_WEP::PosixFile::Open(b.c_str(), O_RDWR);
        ::flock(lock.Descriptor(), LOCK_EX);
        const pid_t child = Start("set -j 2 " + a + " " + b + " " + c + " " + d + " STM_ATB_Id=43");
        wait([&] { return Content(c) != original; });
        std::ifstream children("/proc/" + std::to_string(child) + "/task/" + std::to_string(child) + "/children");
        pid_t worker = 0;
        children >> worker >> worker;
        ASSERT_GT(worker, 1) << Content(Path("err"));
        ::kill(number == SIGINT ? child : worker, number);
        wait([&] { return number != SIGKILL || Content(d) != original; });
        lock.Close();
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status), number == SIGKILL   ? 1
                                                                                 : number == SIGTERM ? 0
                                                                                                     : -SIGINT);
        std::size_t place = 0;
        for (const std::string& file : {a, b, c, d}) {
            const bool isTold = (number != SIGKILL || file != b) && (number != SIGINT || file != d);
            EXPECT_EQ(Content(file) != original, isTold) << file;
            place = isTold ? Content(out).find(file + done, place) : place;
            EXPECT_NE(place, std::string::npos) << file;
        }
        EXPECT_THAT(Content(Path("err")),
                    testing::HasSubstr(number == SIGKILL   ? b + ": the process that worked on it has ended too early "
                                                                 "(signal 9); it is as it was or as it is to be\n"
                                       : number == SIGTERM ? "4 files: 4 changed\n"
                                                           : "interrupted; 3 of 4 files done"));
    }
}

/// What is only read is read once more, so nothing is lost with the process.
TEST_F(ManyTest, WhatIsReadIsToldWhoeverIsKilled) {
    std::string names;
    for (int i = 0; i < 3000; ++i) {
        names += Sample(i % 7 == 0 ? "torn-payload.tdf" : "packed.tdf") + "\n";
    }
    const std::string command = "check --json --files-from " + Write("names", names) + " -j 2";
    const Result alone = Run(command);
    for (int kill = 0; kill < 5; ++kill) {
        const pid_t child = Start(command);
        std::this_thread::sleep_for(std::chrono::milliseconds(10 + 10 * kill));
        std::ifstream children("/proc/" + std::to_string(child) + "/task/" + std::to_string(child) + "/children");
        if (pid_t worker = 0; children >> worker) {
            ::kill(worker, SIGKILL);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(WEXITSTATUS(status), alone.status);
        EXPECT_EQ(Content(Path("out")) == alone.out, true) << kill;
        EXPECT_EQ(Content(Path("err")), alone.error);
    }
}

TEST_F(ManyTest, GivesBareValuesALineAFile) {
    const std::string files = " " + Sample("full.tdf") + " /none " + Sample("settings.txt") + " " +
                              Sample("empty.tdf") + " " + Sample("no-devid.tdf");
    EXPECT_EQ(Run("show --get STM_DTC_target_clock_hz,STM_data_flip --get STM_ATB_Id" + files).out,
              "1000000000 1 12\n\n1000000000 1 12\n\n1000000000 1 12\n");
    EXPECT_EQ(Run("show --get STM_ATB_Id " + Sample("full.tdf")).out, "12\n");
    const Json shown = RunLines("show --get STM_ATB_Id,STM_data_flip" + files, 1).at(0).at("configuration");
    EXPECT_EQ(shown.at("properties").at(0).at("value"), 12);
    EXPECT_EQ(shown.at("properties").size(), 2U);
    EXPECT_TRUE(shown.at("use_cases").is_null());
}

/// Each capture is old or new, and the same command again does the rest.
TEST_F(ManyTest, IsFinishedByTheSameCommandWhereverItWasKilled) {
    constexpr int kCaptures = 1000, kKills = 20;
    const std::string original = Content(Sample("packed.tdf"));
    std::string names;
    std::vector<std::string> files;
    for (int i = 0; i < kCaptures; ++i) {
        files.push_back(Write("c" + std::to_string(i) + ".tdf", original));
        names += files.back() + "\n";
    }
    const std::string command = " STM_ATB_Id=42 --files-from " + Write("names", names) + " -j ";
    std::set<std::string> seen;  // whole files
    std::mt19937 random(1);
    for (int kill = 0; kill < kKills; ++kill) {
        const pid_t child = Start("set" + command + (kill % 2 == 0 ? "1" : "2"));
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 100));
        End(child, kill % 3 == 0 ? SIGINT : SIGKILL);
        for (const std::string& file : files) {
            if (seen.insert(Content(file)).second) {
                const std::int32_t id = Read(file).settings->properties.atbId;
                EXPECT_TRUE(id == 7 || id == 42) << file << " " << id;
            }
        }
    }
    EXPECT_EQ(Run("set" + command + "2").status, 0);
    EXPECT_EQ(Run("set" + command + "1").error, "stmdcm: 1000 files: 1000 as asked already\n");
}

}  // namespace
}  // namespace stmdcm
