// Changes in a capture, in place. What stops them in the midst is the matter of tests/faults.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <numeric>
#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/change/Assignment.h"
#include "stmdcm/change/ConfigurationChange.h"
#include "stmdcm/change/History.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/PluginSession.h"
#include "tests/support/KillAtSyscall.h"
#include "tests/support/ScratchDir.h"
#include "tests/tool/SectionList.h"
#include "tests/tool/ToolRun.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"
#include "trace/format/UnfinishedSection.h"

namespace stmdcm {
namespace {

using namespace Zu::Wep::Trace;
using stmdcm_test::ReadWhole;
using stmdcm_test::WriteWhole;

/// The sections of a capture that count here; nothing for one that is not there.
using Payloads = std::vector<std::optional<std::string>>;

Payloads PayloadsOf(const std::string& path) {
    const Container capture(path);
    Payloads payloads;
    for (const char* name : {"TRACE0", kDeviceSectionName, kCommonSectionName, kStmSectionName}) {
        const Section* section = capture.Find(name, 1);
        payloads.push_back(section == nullptr ? std::nullopt : std::optional(capture.ReadPayload(*section)));
    }
    return payloads;
}

struct InPlaceTest : testing::Test {
    stmdcm_test::ScratchDir m_directory;
    const std::string m_file = m_directory / "capture.tdf";

    /// A host; one for the process: the plug-in looks for its directories only once.
    static PluginSession& Session() {
        static const TraceHome home;
        static PluginSession session(home, "");
        ::unsetenv("ZU_TRACE_LOGGING");  // It would multiply the system calls.
        return session;
    }
    static std::string Reference(const std::string& name) { return ReadWhole(STMDCM_TEST_DATA "/" + name); }

    /// 0 when it was done, 1 when it failed.
    static int Try(const std::function<void()>& work) try {
        work();
        return 0;
    } catch (const std::exception&) {
        return 1;
    }
    int Change(const std::function<void(Settings&)>& change, ConfigurationChange::Missing missing) const {
        return Try([&] { ConfigurationChange(change).InCapture(m_file, missing); });
    }
    int Set(std::int32_t id) const {
        return Change(
            [&](Settings& settings) {
                Assignment{"STM_ATB_Id", id}.ApplyTo(settings.properties);
            },
            ConfigurationChange::Missing::IsFailure);
    }
    int Apply() const {
        static const std::string text = Reference("settings.txt");
        return Change([](Settings& settings) { settings.Read(text); }, ConfigurationChange::Missing::IsMade);
    }
    int Restore(std::size_t number) const {
        return Try([&] { RestoreConfiguration(m_file, number); });
    }
    /// The STM_ATB_Id that a host gets.
    std::optional<std::int32_t> Load() const {
        Manager manager(Session().plugin, "host");
        return manager.Load(m_file, TRACE_DATA_FILE_TDF) ? std::optional(manager.Property("STM_ATB_Id")) : std::nullopt;
    }
    void ExpectThatItCanBeChanged() const {
        for (const std::int32_t value : {77, 78}) {
            EXPECT_EQ(Apply(), 0);
            EXPECT_EQ(Set(value), 0);
            EXPECT_EQ(Load(), value);
        }
    }

    /// A host's capture, to which no manager has saved.
    static std::string BareCapture() {
        const std::string path = Session().WorkingFile("bare.tdf");
        WriteWhole(path, "TDF2" + MakeSection("TRACE0", 1, "trace") +
                             MakeSection(kDeviceSectionName, kDeviceSectionVersion, "STM_ATB_Id=7\n"));
        return ReadWhole(path);
    }
};

TEST_F(InPlaceTest, ASetOpensLittleAndSyncsEachStep) {
    WriteWhole(m_file, Reference("full.tdf"));
    int opened = 0;
    int synced = 0;
    const auto note = [&](pid_t child, const auto& info) {
        opened += info.entry.nr == SYS_openat && stmdcm_test::IsTextAt(child, info.entry.args[1], m_file) ? 1 : 0;
        synced += info.entry.nr == SYS_fdatasync || info.entry.nr == SYS_fsync ? 1 : 0;
    };
    EXPECT_EQ(stmdcm_test::WatchSyscalls([&] { return Set(42); }, note), 0);
    EXPECT_GE(opened, 1);
    EXPECT_LE(opened, 12);
    EXPECT_EQ(synced, 3) << "the new section's header, its payload, and the old section's retirement";
}

TEST_F(InPlaceTest, HistoryGivesBackTheBytes) {
    WriteWhole(m_file, Reference("packed.tdf"));  // which the plug-in would write in other bytes
    const std::string original = ReadWhole(m_file);
    const Payloads first = PayloadsOf(m_file);
    ASSERT_EQ(Set(42), 0);
    ASSERT_EQ(Set(43), 0);
    const auto states = [&] {
        const Container capture(m_file);
        std::string text;
        const History history(capture);
        for (const HistoryEntry& entry : history.Entries()) {
            text += entry.name[0] + std::string(SectionUseText(entry.section.use)) + " ";
        }
        return text;
    };
    EXPECT_EQ(states(), "Dread Sretired Sretired Sread ");
    ASSERT_EQ(Restore(2), 0);
    EXPECT_EQ(PayloadsOf(m_file), first);
    EXPECT_EQ(states(), "Dread Sretired Sretired Sretired Sread ");
    const std::string restored = ReadWhole(m_file);
    EXPECT_EQ(Restore(2), 0);
    EXPECT_EQ(Restore(5), 0);
    EXPECT_EQ(Restore(6), 1);
    EXPECT_EQ(ReadWhole(m_file), restored) << "there was nothing to restore";

    // But for one bit of a version the old bytes are all there.
    EXPECT_EQ(std::transform_reduce(original.begin(), original.end(), restored.begin(), 0, std::plus<>(),
                                    std::not_equal_to<>()),
              1);
}

TEST_F(InPlaceTest, MendsWhatASaveOrALossOfPowerHasLeftAtTheEnd) {
    const std::string bare = BareCapture(), common = MakeSection(kCommonSectionName, 1, "");
    std::string unfinished = common + MakeSection(kStmSectionName, 1, "STM_ATB_Id = 5\n");
    unfinished.replace(12, kUnfinishedName.size(), kUnfinishedName);
    for (const std::string& left : {unfinished, unfinished.substr(0, 30), std::string(9, '\0'), std::string(5000, '\0'),
                                    std::string("xy"), MakeSection("TRACE1", 1, "torn").substr(0, 20)}) {
        WriteWhole(m_file, bare + left);
        ExpectThatItCanBeChanged();
    }
}

TEST_F(InPlaceTest, RefusesWhatCouldNotBeFoundOrWouldNotFit) {
    const std::string last = Reference("full.tdf");
    const auto sized = [&](std::uint64_t size) {
        WriteWhole(m_file, last);
        const auto file = ZU_WEP::PosixFile::Open(m_file.c_str(), O_WRONLY);
        for (std::uint64_t offset = last.size(); offset < size;) {  // sections that end at `size`
            const auto length = static_cast<std::uint32_t>(std::min<std::uint64_t>(size - offset, kMaxSectionLength));
            EXPECT_TRUE(file.WriteAt(offset, {EncodeSectionStart(length, "", 1)}));
            offset += length;
        }
        EXPECT_TRUE(file.Truncate(size));
    };
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"broken", [&] { WriteWhole(m_file, Reference("orphan-payload.tdf")); }},
        {"torn", [&] { WriteWhole(m_file, Reference("torn-payload.tdf")); }},
        {"length that lies", [&] { WriteWhole(m_file, Reference("short-length.tdf")); }},
        {"4 GiB", [&] { sized(kMaxFileSize - 100); }},
        {"size limit", [&] { WriteWhole(m_file, last); }},
    };
    for (const auto& [what, make] : cases) {
        SCOPED_TRACE(what);
        const bool isLimited = std::string(what) == "size limit";
        make();
        const std::uintmax_t size = std::filesystem::file_size(m_file);
        const std::string before = size < 1'000'000 ? ReadWhole(m_file) : "";
        EXPECT_EQ(stmdcm_test::RunInChild([&] {
                      const rlimit limit{size + 100, size + 100};
                      return isLimited && ::setrlimit(RLIMIT_FSIZE, &limit) != 0 ? 2 : Set(42);
                  }),
                  1);
        EXPECT_EQ(std::filesystem::file_size(m_file), size);
        EXPECT_TRUE(before.empty() || ReadWhole(m_file) == before);
    }
}

using TwoUsersTest = ToolRun;

TEST_F(TwoUsersTest, LoseNothingOfEachOther) {
    for (const std::string name : {"full.tdf", "settings.txt"}) {
        const std::string file = (Temporary() / name).string();
        std::filesystem::copy_file(STMDCM_TEST_DATA "/" + name, file);
        std::string command;
        for (int i = 0; i < 8; ++i) {
            command += "set " + file + " MReqInfo_Sel_" + std::to_string(i) + "=" + std::to_string(i + 1) +
                       " >/dev/null & " STMDCM_TOOL " ";
        }
        Run(command + "--version; wait #");
        const std::string shown = Run("show --changed " + file).out;
        for (int i = 0; i < 8; ++i) {
            EXPECT_NE(shown.find("MReqInfo_Sel_" + std::to_string(i)), std::string::npos) << shown;
        }
    }
}

TEST_F(TwoUsersTest, AreToldThatTheyWait) {
    const std::string file = (Temporary() / "full.tdf").string();
    std::filesystem::copy_file(STMDCM_TEST_DATA "/full.tdf", file);
    const Result result =
        Shell("sh -c 'flock " + file + " sleep 2 & sleep 0.5; " STMDCM_TOOL " set " + file + " STM_ATB_Id=42'");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "stmdcm: " + file + ": another program changes the file; waiting until it is done\n");
}

}  // namespace
}  // namespace stmdcm
