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
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmSections.h"
#include "trace/tdf/OpenCapture.h"
#include "trace/tdf/SectionAppender.h"
#include "trace/tdf/TDFHandler.h"

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
    ObjectFilesTest() { m_manager->RegisterEventHandler(&m_events); }

    std::string Image(const std::string& name, std::int64_t modified) {
        const std::string path = Write(name, "image");
        const timespec times[2] = {{modified, 0}, {modified, 0}};
        ::utimensat(AT_FDCWD, path.c_str(), times, 0);
        return path;
    }
    void LoadEntries(const std::vector<ObjectFileEntry>& entries, std::size_t lost = 0) {
        TDFHandler().CreateTDFFile((m_home / "o.tdf").c_str());
        std::string payload;
        for (const auto& entry : entries) {
            AppendObjectFileEntry(payload, entry);
        }
        AppendSection((m_home / "o.tdf").c_str(), kCommonSectionName, 1, payload);
        std::filesystem::resize_file(m_home / "o.tdf", std::filesystem::file_size(m_home / "o.tdf") - lost);
        EXPECT_TRUE(m_manager->LoadCommonConfiguration(m_home / "o.tdf", TRACE_DATA_FILE_TDF));
    }
    /// Name, file and time of every entry, as saving writes them.
    std::vector<std::string> Saved() {
        TDFHandler().CreateTDFFile((m_home / "s.tdf").c_str());
        EXPECT_TRUE(m_manager->SaveCommonConfiguration(m_home / "s.tdf", TRACE_DATA_FILE_TDF));
        std::vector<std::string> result;
        const std::string payload = OpenCapture(m_home / "s.tdf").Read(kCommonSection);
        ReadObjectFileEntries(payload, [&](auto name, auto file, std::int64_t timeStamp) {
            const std::string base(file.substr(file.rfind('/') + 1));
            result.push_back(std::string(name) + " " + base + " " + std::to_string(timeStamp));
        });
        return result;
    }
    using Sections = std::vector<std::pair<std::string, std::string>>;

    /// Writes a capture of `wanted`, each behind twenty others and in front of a younger one of its name. Gives the
    /// offset behind the last of them.
    static std::size_t WriteAmongOthers(const std::string& path, const Sections& wanted) {
        std::string bytes(TDFIdentifier);
        std::size_t end = 0;
        const auto append = [&bytes](const std::string& name, const std::string& payload) {
            const std::size_t length = SectionHeader::Size + name.size() + payload.size();
            bytes += EncodeSectionStart(static_cast<std::uint32_t>(length), name, 1) + payload;
        };
        for (const auto& [name, payload] : wanted) {
            for (int i = 0; i < 20; ++i) {
                append("TRACE", std::string(100, 't'));
            }
            append(name, payload);
            end = bytes.size();
            append(name, "STM_ATB_Id = 8\n");
        }
        append("BEHIND", std::string(100, 't'));
        WriteWhole(path, bytes);
        return end;
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
        std::vector<std::string> asked{test.asked, test.goesOn ? "changed " + later : ""};
        std::vector<std::string> saved{test.saved, test.goesOn ? "d later 400" : "d later 5"};
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
    const auto add = [&] {
        for (const char* name : {"u", "v", "w"}) {  // the list moves while it grows
            Find(name);
        }
    };
    const struct {
        std::function<void()> inside;
        bool goesOn;
        std::vector<std::string> saved;
    } cases[] = {{replace, false, {"r image 100", "s later 400"}},
                 {keep, true, {"c changed 200", "d later 400"}},
                 {add, true, {"c changed 200", "d later 400", "u image 100", "v image 100", "w image 100"}}};
    for (const auto& test : cases) {
        for (const ObjectFileEntry& first : {ObjectFileEntry{"c", missing, 200}, ObjectFileEntry{"c", changed, 1}}) {
            m_events.inside = test.inside;
            m_events.asked.clear();
            LoadEntries({first, {"d", later, 5}});
            std::erase_if(m_events.asked, [](const auto& question) { return question.find(" for ") != question.npos; });
            EXPECT_EQ(m_events.asked[0].substr(8), first.fileName);
            EXPECT_EQ(m_events.asked.size(), test.goesOn ? 2U : 1U);
            EXPECT_EQ(Saved(), test.saved);
        }
    }
    m_events.inside = replace;
    EXPECT_EQ(Find("x"), image);
    EXPECT_EQ(Saved(), (std::vector<std::string>{"r image 100", "s later 400", "x image 100"}));
}

TEST_F(ObjectFilesTest, ALoadOpensTheCaptureOnceAndReadsEachHeaderOnce) {
    const std::string path = m_home / "many.tdf", image = Image("image", 100);
    std::string unchanged, missing;
    AppendObjectFileEntry(unchanged, {"c", image, 100});
    AppendObjectFileEntry(missing, {"c", "/none", 1});
    for (const std::string& objectFiles : {std::string(), unchanged, missing}) {
        Sections wanted{{kCommonSectionName, objectFiles},
                        {kDeviceSectionName, "serial = 1\n"},
                        {kStmSectionName, "STM_ATB_Id = 7\n"}};
        do {
            const std::size_t end = WriteAmongOthers(path, wanted);
            int opened = 0;
            std::map<std::uint64_t, int> read;  // how often, by offset
            const auto note = [&](pid_t child, const auto& info) {
                const auto* arguments = info.entry.args;
                opened += info.entry.nr == SYS_openat && stmdcm_test::IsTextAt(child, arguments[1], path) ? 1 : 0;
                if (info.entry.nr == SYS_pread64) {
                    ++read[arguments[3]];
                }
            };
            const auto load = [&] { return Load(path) && Number("STM_ATB_Id") == 7 ? 0 : 1; };
            EXPECT_EQ(stmdcm_test::WatchSyscalls(load, note), 0);
            EXPECT_EQ(opened, 1);
            EXPECT_GE(read.size(), 65U);
            for (const auto& [offset, times] : read) {
                EXPECT_LE(times, objectFiles == missing ? 2 : 1) << "offset " << offset;  // it may be another by now
                EXPECT_LT(offset, end);
            }
        } while (std::next_permutation(wanted.begin(), wanted.end()));
    }
}

TEST_F(ObjectFilesTest, AHostMayChangeTheCaptureThatIsLoaded) {
    const std::string old = ReadWhole(Sample("full.tdf")), path = m_home / "full.tdf";
    std::string changed = old;
    changed.replace(old.rfind("STM_ATB_Id = 12"), 15, "STM_ATB_Id = 34");
    char* mapped = nullptr;  // written before the load: what is written to it later changes no time
    const struct {
        const char* what;
        std::function<void()> inside;
    } cases[] = {
        {"nothing", [] {}},
        {"rewritten", [&] { std::copy(changed.begin(), changed.end(), mapped); }},
        {"rewritten as no capture", [&] { mapped[0] = 'X'; }},
        {"longer in front", [&] { WriteWhole(path, ReadWhole(Sample("packed.tdf")) + old.substr(4)); }},
        {"cut short", [&] { std::filesystem::resize_file(path, old.rfind("STMDECODERINFO")); }},
        {"replaced", [&] { std::filesystem::rename(Write("other.tdf", changed), path); }},
        {"replaced by a directory", [&] { std::filesystem::remove(path) && ::mkdir(path.c_str(), 0700); }},
        {"removed", [&] { std::filesystem::remove(path); }},
    };
    for (const auto& test : cases) {
        for (const bool fromHandler : {true, false}) {
            std::filesystem::remove(path);
            mapped = WriteMapped(path, old);
            LoadingIdentifier identifier;
            StmDeviceConfigManager loading(&m_cpu, &identifier), fresh(&m_cpu, nullptr);
            loading.RegisterEventHandler(fromHandler ? &m_events : nullptr);
            (fromHandler ? m_events.inside : identifier.inside) = test.inside;
            TakeLog();
            const bool result = loading.LoadConfiguration(path, TRACE_DATA_FILE_TDF);
            const std::vector<std::string> log = TakeLog();
            EXPECT_EQ(result, fresh.LoadSTMConfigurationFromTDF(path)) << test.what;
            EXPECT_EQ(log, TakeLog()) << test.what;
            EXPECT_EQ(Text(loading), Text(fresh)) << test.what;
            ::munmap(mapped, old.size());
        }
    }
}

TEST_F(ObjectFilesTest, ALongListCostsWhatItsBytesCost) {
    for (const std::string& name : {std::string(), std::string(20, 'n')}) {
        for (const std::size_t count : {1'000U, 4'000U, 16'000U}) {
            std::string payload;
            for (std::size_t i = 0; i < count; ++i) {
                AppendObjectFileEntry(payload, {name, "", 0});
            }
            AppendObjectFileEntry(payload, {"last", "/last", 0});
            const std::string path = m_home / "long.tdf";
            TDFHandler().CreateTDFFile(path.c_str());
            AppendSection(path.c_str(), kCommonSectionName, 1, payload);
            m_manager = Make();
            stmdcm_test::allocatedBytes = 0;
            EXPECT_TRUE(m_manager->LoadCommonConfiguration(path, TRACE_DATA_FILE_TDF));
            EXPECT_LE(stmdcm_test::allocatedBytes, 40 * payload.size()) << count << " of " << name;
            EXPECT_EQ(Find("last"), "/last");
        }
    }
}

TEST_F(ObjectFilesTest, WithoutAHandlerAMissingFileLosesItsPath) {
    m_manager->RegisterEventHandler(nullptr);
    LoadEntries({{"c", "/none", 1}, {"d", "/none/too", 2}});
    EXPECT_EQ(Saved(), (std::vector<std::string>{"d too 2"}));
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
    const struct {
        const char *name, *file;
    } cases[] = {{"ore", "/ore"}, {"sp", "/dsp2"}, {"CORE1", ""}, {"arm", "/ctrlM"}, {"", ""}, {"video", ""}};
    for (const auto& test : cases) {
        EXPECT_EQ(Find(test.name), test.file) << test.name;  // "core1" has lost its path to the check
    }
    m_events.asked.clear();
    EXPECT_EQ(Find("x"), "none");
    EXPECT_EQ(m_events.asked, (std::vector<std::string>{"missing Application for x"}));
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
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"    E STM Device DCM: " + Sample("empty.tdf") +
                                                   ": Section size cannot be located in the file."}));
}

}  // namespace
}  // namespace Zu::Wep::Trace
