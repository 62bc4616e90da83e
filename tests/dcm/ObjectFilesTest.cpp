#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

#include "host/vorn/vornError.h"
#include "source_utilities/PosixFile.h"
#include "tests/dcm/ManagerTest.h"
#include "tests/support/AllocationWatch.h"
#include "tests/support/KillAtSyscall.h"
#include "tests/support/SectionList.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"
#include "trace/tdf/OpenCapture.h"

namespace Zu::Wep::Trace {
namespace {

/// Answers by a table and notes what it was asked, behind what it does `inside` its first question.
class Answers : public CDeviceConfigEvents {
  public:
    void OnUpdateObjectFile(const std::string& file, bool timeStampChanged, std::string& newFile) override {
        if (inside) {
            std::exchange(inside, nullptr)();
        }
        asked.push_back((timeStampChanged ? "changed " : "missing ") + file);
        EXPECT_TRUE(newFile.empty());
        newFile = answers[file];
    }
    std::map<std::string, std::string> answers;
    std::vector<std::string> asked;
    std::function<void()> inside;
};

/// Does something `inside` its part of a load.
struct LoadingIdentifier : CDeviceIdentifier {
    bool SaveToFile(const std::string&, eTraceDataFileType) override { return true; }
    bool LoadFromFile(const std::string&, eTraceDataFileType) override {
        inside();
        return true;
    }
    std::function<void()> inside = [] {};
};

class ObjectFilesTest : public ManagerTest {
  protected:
    using Entries = std::vector<ObjectFileEntry>;
    using Lines = std::vector<std::string>;

    ObjectFilesTest() { m_manager->RegisterEventHandler(&m_events); }

    std::string Image(const std::string& name, std::int64_t modified) {
        return stmdcm_test::WriteDated(m_home / name, modified);
    }
    static std::string Payload(const Entries& entries) {
        std::string payload;
        for (const auto& entry : entries) {
            AppendObjectFileEntry(payload, entry);
        }
        return payload;
    }
    void LoadEntries(const Entries& entries, std::size_t lost = 0) {
        const std::string bytes = "TDF2" + stmdcm::MakeSection(kCommonSectionName, 1, Payload(entries));
        const std::string path = Write("o.tdf", bytes.substr(0, bytes.size() - lost));
        EXPECT_TRUE(m_manager->LoadCommonConfiguration(path, TRACE_DATA_FILE_TDF));
    }
    /// Name, file and time of every entry, as saving writes them.
    Lines Saved() {
        const std::string path = Write("s.tdf", "TDF2");
        EXPECT_TRUE(m_manager->SaveCommonConfiguration(path, TRACE_DATA_FILE_TDF));
        Lines result;
        const std::string payload = OpenCapture(path).Read(kCommonSection);
        ReadObjectFileEntries(payload, [&](auto name, auto file, std::int64_t timeStamp) {
            const std::string base(file.substr(file.rfind('/') + 1));
            result.push_back(std::string(name) + " " + base + " " + std::to_string(timeStamp));
        });
        return result;
    }
    /// Writes a file, and gives its bytes as they are shared with it.
    static char* WriteMapped(const std::string& path, const std::string& bytes) {
        WriteWhole(path, bytes);
        const auto file = ZU_WEP::PosixFile::Open(path.c_str(), O_RDWR);
        void* mapped = ::mmap(nullptr, bytes.size(), PROT_READ | PROT_WRITE, MAP_SHARED, file.Descriptor(), 0);
        EXPECT_NE(mapped, MAP_FAILED);
        std::copy(bytes.begin(), bytes.end(), static_cast<char*>(mapped));
        return static_cast<char*>(mapped);
    }
    std::string Find(const std::string& name) {
        std::string file = "none";
        return m_manager->GetObjectFile(name, file) ? file : "none";
    }

    Answers m_events;
};

TEST_F(ObjectFilesTest, EntryBytes) {
    std::string payload;
    AppendObjectFileEntry(payload, {"core0", "/x/a.out", 1700000000});
    EXPECT_EQ(payload, std::string("core0\0/x/a.out\0\x00\xF1\x53\x65\0\0\0\0", 23));
    for (std::size_t length = 0; length < payload.size(); ++length) {  // after one whole entry, any part of another
        int count = 0;
        const auto take = [&count](auto /*name*/, auto /*fileName*/, std::int64_t /*timeStamp*/) { ++count; };
        EXPECT_EQ(ReadObjectFileEntries(payload + payload.substr(0, length), take), length == 0);
        EXPECT_EQ(count, 1);
    }
}

TEST_F(ObjectFilesTest, AsksAtMostOnceAndStopsWithoutAnAnswer) {
    const std::string same = Image("same", 100), changed = Image("changed", 200), other = Image("other", 300);
    const std::string later = Image("later", 400);
    m_events.answers[later] = later;
    const std::string askChanged = "changed " + changed, askMissing = "missing /none";
    const struct {
        const char* what;
        ObjectFileEntry entry;
        std::string answer, asked, saved;
        bool goesOn;
    } cases[] = {
        {"unchanged", {"c", same, 100}, "", "", "c same 100", true},
        {"confirmed", {"c", changed, 1}, changed, askChanged, "c changed 200", true},
        {"replaced: the stamp of the first file", {"c", changed, 1}, other, askChanged, "c other 200", true},
        {"no answer", {"c", changed, 1}, "", askChanged, "c changed 1", false},
        {"found with the same stamp", {"c", "/none", 100}, same, askMissing, "c same 100", true},
        {"found with another stamp", {"c", "/none", 1}, same, askMissing, "c same 1", false},
        {"missing for good", {"c", "/none", 1}, "", askMissing, "", false},
    };
    for (const auto& test : cases) {
        m_events.answers[test.entry.fileName] = test.answer;
        m_events.asked.clear();
        LoadEntries({test.entry, {"d", later, 5}});
        Lines asked{test.asked, test.goesOn ? "changed " + later : ""};
        Lines saved{test.saved, test.goesOn ? "d later 400" : "d later 5"};
        std::erase(asked, "");
        std::erase(saved, "");
        EXPECT_EQ(m_events.asked, asked) << test.what;
        EXPECT_EQ(Saved(), saved) << test.what;
    }
}

TEST_F(ObjectFilesTest, AHandlerMayCallTheManager) {
    const std::string image = Image("image", 100), changed = Image("changed", 200), later = Image("later", 400);
    const std::string missing = m_home / "missing";
    m_events.answers = {{missing, changed}, {changed, changed}, {later, later}};
    for (const char* name : {"u", "v", "w", "x"}) {
        m_events.answers[std::string("Application for ") + name] = image;
    }
    const auto replace = [&] { LoadEntries({{"r", image, 100}, {"s", later, 400}}); };
    const auto keep = [&] { LoadEntries({}); };
    const auto add = [&] { Find("u"), Find("v"), Find("w"); };  // the list moves while it grows
    const std::tuple<std::function<void()>, bool, Lines> cases[] = {
        {replace, false, {"r image 100", "s later 400"}},
        {keep, true, {"c changed 200", "d later 400"}},
        {add, true, {"c changed 200", "d later 400", "u image 100", "v image 100", "w image 100"}}};
    for (const auto& [inside, goesOn, saved] : cases) {
        for (const ObjectFileEntry& first : Entries{{"c", missing, 200}, {"c", changed, 1}}) {
            m_events.inside = inside;
            m_events.asked.clear();
            LoadEntries({first, {"d", later, 5}});
            std::erase_if(m_events.asked, [](const auto& question) { return question.find(" for ") != question.npos; });
            EXPECT_EQ(m_events.asked[0].substr(8), first.fileName);
            EXPECT_EQ(m_events.asked.size(), goesOn ? 2U : 1U);
            EXPECT_EQ(Saved(), saved);
        }
    }
    m_events.inside = replace;
    EXPECT_EQ(Find("x"), image);
    EXPECT_EQ(Saved(), (Lines{"r image 100", "s later 400", "x image 100"}));
}

TEST_F(ObjectFilesTest, ALoadOpensTheCaptureOnceAndReadsEachHeaderOnce) {
    const std::string image = Image("image", 100), missing = Payload({{"c", "/none", 1}});
    const auto section = [](const char* name, const std::string& payload) {
        std::string bytes;
        for (int i = 0; i < 20; ++i) {
            bytes += stmdcm::MakeSection("TRACE", 1, std::string(100, 't'));
        }
        return bytes + stmdcm::MakeSection(name, 1, payload);
    };
    for (const std::string& objectFiles : {std::string(), Payload({{"c", image, 100}}), missing}) {
        std::vector<std::string> wanted{section(kCommonSectionName, objectFiles),
                                        section(kDeviceSectionName, "serial = 1\n"),
                                        section(kStmSectionName, "STM_ATB_Id = 7\n")};
        std::sort(wanted.begin(), wanted.end());
        do {
            const std::string bytes = "TDF2" + wanted[0] + wanted[1] + wanted[2];
            const std::string path = Write("many.tdf", bytes + section("BEHIND", ""));
            int opened = 0;
            std::map<std::uint64_t, int> read;  // how often, by offset
            const auto note = [&](pid_t child, const auto& info) {
                const auto& [nr, arguments] = info.entry;
                opened += nr == SYS_openat && stmdcm_test::IsTextAt(child, arguments[1], path) ? 1 : 0;
                if (nr == SYS_pread64) {
                    ++read[arguments[3]];
                }
            };
            const auto load = [&] { return Load(path) && Number("STM_ATB_Id") == 7 ? 0 : 1; };
            EXPECT_EQ(stmdcm_test::WatchSyscalls(load, note), 0);
            EXPECT_EQ(opened, 1);
            EXPECT_GE(read.size(), 5U);
            EXPECT_LE(read.size(), 10U);  // of 83 sections
            for (const auto& [offset, times] : read) {
                EXPECT_LE(times, objectFiles == missing ? 2 : 1) << "offset " << offset;  // it may be another by now
            }
        } while (std::next_permutation(wanted.begin(), wanted.end()));
    }
}

TEST_F(ObjectFilesTest, AHostMayChangeTheCaptureThatIsLoaded) {
    const std::string old = ReadWhole(Sample("full.tdf")), path = m_home / "full.tdf";
    std::string changed = old;
    changed.replace(old.rfind("STM_ATB_Id = 12"), 15, "STM_ATB_Id = 34");
    char* mapped = nullptr;  // written before the load: what is written to it later changes no time
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"nothing", [] {}},
        {"rewritten", [&] { std::copy(changed.begin(), changed.end(), mapped); }},
        {"rewritten as no capture", [&] { mapped[0] = 'X'; }},
        {"longer in front", [&] { WriteWhole(path, ReadWhole(Sample("packed.tdf")) + old.substr(4)); }},
        {"cut short", [&] { std::filesystem::resize_file(path, old.rfind("STMDECODERINFO")); }},
        {"replaced", [&] { std::filesystem::rename(Write("other.tdf", changed), path); }},
        {"replaced by a directory", [&] { std::filesystem::remove(path) && ::mkdir(path.c_str(), 0700); }},
        {"removed", [&] { std::filesystem::remove(path); }},
    };
    for (const auto& [what, inside] : cases) {
        for (const bool fromHandler : {true, false}) {
            SCOPED_TRACE(what);
            std::filesystem::remove(path);
            mapped = WriteMapped(path, old);
            LoadingIdentifier identifier;
            StmDeviceConfigManager loading(&m_cpu, &identifier), fresh(&m_cpu, nullptr);
            loading.RegisterEventHandler(fromHandler ? &m_events : nullptr);
            (fromHandler ? m_events.inside : identifier.inside) = inside;
            TakeLog();
            const bool result = loading.LoadConfiguration(path, TRACE_DATA_FILE_TDF);
            const Lines log = TakeLog();
            EXPECT_EQ(result, fresh.LoadSTMConfigurationFromTDF(path));
            EXPECT_EQ(log, TakeLog());
            EXPECT_EQ(Text(loading), Text(fresh));
            ::munmap(mapped, old.size());
        }
    }
}

TEST_F(ObjectFilesTest, ALongListCostsWhatItsBytesCost) {
    for (const std::size_t length : {0U, 20U}) {
        for (const std::size_t count : {1'000U, 16'000U}) {
            Entries entries(count, {std::string(length, 'n'), "", 0});
            entries.push_back({"last", "/last", 0});
            const std::string payload = Payload(entries);
            const std::string path = Write("long.tdf", "TDF2" + stmdcm::MakeSection(kCommonSectionName, 1, payload));
            m_manager = Make();
            stmdcm_test::allocatedBytes = 0;
            EXPECT_TRUE(m_manager->LoadCommonConfiguration(path, TRACE_DATA_FILE_TDF));
            EXPECT_LE(stmdcm_test::allocatedBytes, 40 * payload.size()) << count << " of " << length;
            EXPECT_EQ(Find("last"), "/last");
        }
    }
}

TEST_F(ObjectFilesTest, WithoutAHandlerAMissingFileLosesItsPath) {
    m_manager->RegisterEventHandler(nullptr);
    LoadEntries({{"c", "/none", 1}, {"d", "/none/too", 2}});
    EXPECT_EQ(Saved(), Lines{"d too 2"});
    LoadEntries({});  // an empty section keeps the list
    EXPECT_EQ(Find("d"), "/none/too");
    EXPECT_EQ(Find("GOLD"), "/none/too");  // its last letter, in any case, is good enough
    LoadEntries({{"e", "/e", 1}}, 13);     // one whose 13 bytes are cut off the file is not empty: it replaces the list
    EXPECT_EQ(Find("d"), "none");
}

TEST_F(ObjectFilesTest, ThreeMatchRulesThenThePrompt) {
    const std::string image = Image("image", 100);
    for (const char* name : {"core1", "dsp2", "ctrlM"}) {
        m_events.answers[std::string("/") + name] = "";
    }
    LoadEntries({{"core1", "/core1", 1}, {"dsp2", "/dsp2", 1}, {"ctrlM", "/ctrlM", 1}, {"ore", "/ore", 1}});
    for (const auto& [name, file] :
         {std::pair("ore", "/ore"), {"sp", "/dsp2"}, {"CORE1", ""}, {"arm", "/ctrlM"}, {"", ""}, {"video", ""}}) {
        EXPECT_EQ(Find(name), file) << name;  // "core1" has lost its path to the check
    }
    m_events.asked.clear();
    EXPECT_EQ(Find("x"), "none");
    EXPECT_EQ(m_events.asked, Lines{"missing Application for x"});
    m_events.answers["Application for x"] = image;
    EXPECT_EQ(Find("x"), image);
    EXPECT_EQ(Saved().back(), "x image 100");
}

TEST_F(ObjectFilesTest, OtherFilesAreRefused) {
    EXPECT_FALSE(m_manager->SaveCommonConfiguration(Write("t.txt", "TDF2"), TRACE_DATA_FILE_TDF));
    EXPECT_FALSE(m_manager->SaveCommonConfiguration(Copy("full.tdf"), TRACE_DATA_FILE_LOCAL));
    EXPECT_FALSE(m_manager->LoadCommonConfiguration(Copy("full.tdf"), TRACE_DATA_FILE_LIVE));
    EXPECT_THROW(m_manager->LoadCommonConfiguration(Sample("empty.tdf"), TRACE_DATA_FILE_TDF), Vorn::vornErrorIF);
    TakeLog();
    EXPECT_FALSE(Load(Sample("empty.tdf")));
    EXPECT_EQ(TakeLog(),
              Lines{"    E STM Device DCM: " + Sample("empty.tdf") + ": Section size cannot be located in the file."});
}

}  // namespace
}  // namespace Zu::Wep::Trace
