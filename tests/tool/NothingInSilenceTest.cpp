#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "stmdcm/change/History.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/Plugin.h"
#include "stmdcm/plugin/TraceHome.h"
#include "tests/support/ScratchDir.h"
#include "tests/support/SectionList.h"
#include "tests/tool/CheckInputs.h"
#include "tests/tool/CommandHere.h"
#include "tests/tool/Damage.h"
#include "tests/tool/ToolRun.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/StmPropertyTable.h"
#include "trace/format/StmSections.h"

namespace stmdcm {

namespace fs = std::filesystem;
using stmdcm_test::ReadWhole;
using stmdcm_test::ScratchDir;
using stmdcm_test::WriteWhole;
using namespace Zu::Wep::Trace;

namespace {

/// Samples and texts, each with the name that its kind asks for, in the same order everywhere.
std::vector<CheckInput> Inputs() {
    std::vector<CheckInput> inputs = CheckInputs();
    const std::set<fs::path> samples(fs::directory_iterator(STMDCM_TEST_DATA), fs::directory_iterator());
    for (const fs::path& sample : samples) {
        inputs.push_back({sample.filename(), ReadWhole(sample), ""});
    }
    return inputs;
}

bool IsClean(const Reading& reading) {
    return reading.findings.Count(Severity::Error) == 0 && reading.findings.Count(Severity::Warning) == 0;
}

/// Errors of what the file says, not of the file or its sections.
std::vector<std::string> NotRead(const Reading& reading) {
    std::vector<std::string> sentences;
    for (const Finding& finding : reading.findings.Sorted()) {
        if (finding.kind->severity == Severity::Error && IsAboutText(*finding.kind)) {
            sentences.push_back(finding.what);
        }
    }
    return sentences;
}

/// What was found, without its place.
std::vector<std::string> Found(const Reading& reading) {
    std::vector<std::string> found;
    for (const Finding& finding : reading.findings.Sorted()) {
        found.push_back(fmt::format("{} {}", finding.kind->id, finding.what));
    }
    return found;
}

class NothingInSilenceTest : public ToolRun {
  protected:
    using Command = std::vector<std::string>;

    NothingInSilenceTest() { WriteWhole(m_good, CaptureParts{}.Bytes()); }

    std::string Path(const std::string& name) const { return m_directory / name; }

    /// Asks every command about the file, and holds its answer against that of `check`.
    void ExpectTold(const std::string& path) {
        const Reading reading = CheckFile(path);
        const bool isCapture = reading.kind == ConfigurationKind::Capture;
        const bool fits = !isCapture || (!reading.hasDeviceText && reading.configuration.objectFiles.empty());
        const std::string bytes = ReadWhole(path);
        const std::string other = Path(isCapture ? "converted.txt" : "converted.tdf");
        ExpectAnswer(reading, {"show", path});
        ExpectAnswer(reading, {"diff", path, path});
        ExpectAnswer(reading, {"convert", path, other}, fits);
        fs::remove(other);
        if (ExpectAnswer(reading, {"convert", path, other, "--force"}, fits) == 0) {
            EXPECT_EQ(Differences(reading, other), "");
        }
        fs::remove(other);
        ExpectAnswer(reading, {"apply", path, m_good, "--dry-run"});
        if (ExpectAnswer(reading, {"apply", path, m_good, "--force"}) == 0 && isCapture) {
            EXPECT_EQ(Differences(reading, m_good), "");
        }
        WriteWhole(m_good, CaptureParts{}.Bytes());
        if (ExpectAnswer(reading, {"set", path, "STM_ATB_Id=99"}) == 0) {
            EXPECT_EQ(Differences(reading, path), reading.settings->properties.atbId == 99 ? "" : "STM_ATB_Id ");
        }
        WriteWhole(path, bytes);
        if (isCapture) {
            ExpectRecovered(reading);
        }
    }

    /// Of those that ask for the sections: what ends well has told or given all that a search finds.
    void ExpectAllSections(const std::string& path) {
        const Result sections = m_tool.Run({"sections", "--json", path});
        const Result history = m_tool.Run({"history", "--json", path});
        const Result objects = m_tool.Run({"objects", "--json", path});
        const Reading reading = CheckFile(path);
        const bool isCapture = ReadWhole(path).starts_with(kTDFIdentifier);
        ExpectDocument(sections, "sections", isCapture ? Container(path).Sections().size() : 0);
        ExpectDocument(history, "configurations", isCapture ? History(Container(path)).Entries().size() : 0);
        ExpectDocument(objects, "object_files", reading.configuration.objectFiles.size());
        for (const char* name : {kCommonSectionName, kDeviceSectionName, kStmSectionName}) {
            const Result payload = m_tool.Run({"extract", path, name});
            EXPECT_EQ(payload.error.empty(), payload.status == 0);
            if (payload.status != 0) {
                continue;
            }
            const Container capture(path);
            if (const Section* const section = capture.Find(name, 1)) {  // else it was one of another version
                EXPECT_EQ(payload.out, capture.ReadPayload(*section));
                EXPECT_FALSE(capture.IsTorn(*section));
            }
        }
    }

    static void ExpectDocument(const Result& result, const char* key, std::size_t count) {
        const auto document = nlohmann::json::parse(result.out);
        EXPECT_EQ(document.contains("failure"), result.status == 1 && !document.contains(key)) << result.out;
        EXPECT_TRUE(result.status != 0 || document.at(key).size() == count) << result.out;
    }

    /// A dry run says what the run says, and leaves the file alone. Gives how many of them changed it then.
    std::size_t ExpectDryRuns(const std::string& path) {
        const std::string bytes = ReadWhole(path);
        const Command commands[] = {
            {"set", path, "STM_ATB_Id=9"},
            {"set", path, "STM_STP_Version=9", "--force"},
            {"apply", STMDCM_TEST_DATA "/full.tdf", path},
            {"apply", STMDCM_TEST_DATA "/settings-unknown-key.txt", path, "--force"},
            {"restore", path, "2"},
            {"objects", path, "--update", "--accept-changed", "--map",
             "/opt/images/app0.out=" STMDCM_TEST_DATA "/settings.txt"},
        };
        std::size_t changed = 0;
        for (Command command : commands) {
            command.emplace_back("--json");
            SCOPED_TRACE(fmt::format("{}", fmt::join(command, " ")));
            Command dry = command;
            dry.emplace_back("--dry-run");
            const Result tried = m_tool.Run(dry);
            EXPECT_EQ(ReadWhole(path), bytes);
            const Result done = m_tool.Run(command);
            EXPECT_EQ(tried.status, done.status) << tried.error << done.error;
            EXPECT_EQ(tried.error, done.error);
            static const std::regex kDiffers(R"re("(written|dry_run)": (true|false))re");
            EXPECT_EQ(std::regex_replace(tried.out, kDiffers, ""), std::regex_replace(done.out, kDiffers, ""));
            changed += ReadWhole(path) != bytes ? 1U : 0U;
            WriteWhole(path, bytes);
        }
        return changed;
    }

    /// What a host holds after loading.
    std::string Held(const std::string& path) const {
        Manager manager(m_plugin, "core");
        const bool isCapture = KindOfName(path) == ConfigurationKind::Capture;
        manager.Load(path, isCapture ? TRACE_DATA_FILE_TDF : TRACE_DATA_FILE_LOCAL);
        std::string text;
        for (const StmProperty& row : kStmProperties) {
            text += fmt::format("{}={}\n", row.name, manager.Property(row.name));
        }
        manager.ScRecord().SaveAllRecords(text);
        manager.CptRecord().SaveAllRecords(text);
        manager.PmiRecord().SaveAllRecords(text);
        return text;
    }

  private:
    /// A command that `fits` loses nothing of a file that is whole.
    int ExpectAnswer(const Reading& reading, const Command& command, bool fits = true) {
        const Result result = m_tool.Run(command);
        SCOPED_TRACE(fmt::format("{} ends {}: {}", command[0], result.status, result.error));
        const std::vector<std::string> notRead = NotRead(reading);
        ExpectDoubt(result, notRead);
        if (fits && IsClean(reading)) {
            EXPECT_EQ(result.status, 0);
            EXPECT_EQ(result.error, "");
        }
        return result.status;
    }

    /// The fields in which a file's properties and use cases are not what was read, and its program images where it has
    /// any; each with a blank behind it.
    static std::string Differences(const Reading& reading, const std::string& path) {
        Reading now = stmdcm::Read(path);
        if (reading.kind != now.kind) {
            now.configuration.objectFiles = reading.configuration.objectFiles;
        }
        std::string fields;
        for (const Difference& difference : Compare(reading.configuration, now.configuration)) {
            fields += difference.item + " ";
        }
        return fields;
    }

    /// A section that recover tells to be hidden in another can be had from the damaged file.
    void ExpectExtracted(const std::string& path) {
        const std::string bytes = ReadWhole(path);
        const auto document = nlohmann::json::parse(m_tool.Run({"recover", "--json", "--plan", path}).out);
        for (const auto& remark : document.value("remarks", nlohmann::json::array())) {
            if (remark.at("kind") == "hidden_section") {
                const std::string offset = remark.at("offset");
                const SectionHeader header = DecodeSectionHeader(bytes.data() + std::stoul(offset));
                const std::size_t begin = SectionHeader::kSize + header.nameLength;
                EXPECT_EQ(m_tool.Run({"extract", path, "--offset", offset}).out,
                          bytes.substr(std::stoul(offset) + begin, header.length - begin));
            }
        }
    }

    /// The result may hold less than the file, or more.
    void ExpectRecovered(const Reading& reading) {
        const std::string recovered = Path("recovered.tdf");
        const Result result = m_tool.Run({"recover", reading.path, "-o", recovered});
        SCOPED_TRACE(fmt::format("recover ends {}: {}", result.status, result.error));
        if (result.status != 1) {
            ExpectExtracted(reading.path);
            const Reading kept = CheckFile(recovered);
            ExpectDoubt(result, NotRead(kept));
            EXPECT_TRUE(result.status == 3 || (NotRead(reading).empty() && kept.findings.Count(Severity::Error) == 0));
            EXPECT_TRUE(result.status == 0 || !IsClean(reading));
            if (result.status == 0) {
                EXPECT_EQ(Differences(reading, recovered), "");
                EXPECT_EQ(SectionList(ReadWhole(recovered)).size(), SectionList(ReadWhole(reading.path)).size());
            }
            fs::remove(recovered);
        }
    }

    static void ExpectDoubt(const Result& result, const std::vector<std::string>& notRead) {
        EXPECT_EQ(result.error.empty(), result.status == 0);
        for (const std::string& what : notRead) {
            const bool isRefused = result.status == 1 || result.status == 4;
            EXPECT_TRUE(isRefused || result.status == 3);
            EXPECT_TRUE(isRefused || result.error.find(what) != std::string::npos) << what;
        }
    }

    ScratchDir m_directory{fs::exists("/dev/shm") ? "/dev/shm" : fs::temp_directory_path().string()};
    const std::string m_good = Path("good.tdf");
    TraceHome m_home;
    Plugin m_plugin{m_home, {}};
    CommandHere m_tool;
};

}  // namespace

TEST_F(NothingInSilenceTest, EveryCommandTellsWhatIsNotRead) {
    for (const CheckInput& input : Inputs()) {
        SCOPED_TRACE(input.name + ":\n" + input.bytes);
        WriteWhole(Path(input.name), input.bytes);
        ExpectTold(Path(input.name));
    }
}

TEST_F(NothingInSilenceTest, WhateverBecomesOfAFileByDamage) {
    std::size_t changed = 0;
    for (const fs::path& sample : std::set<fs::path>(fs::directory_iterator(STMDCM_TEST_DATA), {})) {
        const std::string path = Path(sample.filename());
        for (const Damaged& damaged : Damages(ReadWhole(sample))) {
            SCOPED_TRACE(fmt::format("{}: {}", sample.filename().string(), damaged.what));
            WriteWhole(path, damaged.bytes);
            ExpectTold(path);
            ExpectAllSections(path);
            changed += ExpectDryRuns(path);
        }
    }
    EXPECT_GT(changed, 50U);
}

/// `check` is not its own judge: where a host gets something else than before, there is something to find.
TEST_F(NothingInSilenceTest, WhateverBecomesOfATextByAccident) {
    constexpr std::size_t kTried = 3, kToldOf = 72;  // of the lines, most stand in nearly all texts
    const std::tuple<const char*, std::string (*)(const std::string&), bool> places[] = {
        {"settings.txt", [](const std::string& text) { return text; }, false},
        {"section.tdf", [](const std::string& text) { return CaptureParts{text}.Bytes(); }, false},
        {"device.tdf",
         [](const std::string& text) {
             return CaptureParts{AllProperties(), text}.Bytes();
         },
         true}};
    std::size_t count = 0, different = 0;
    for (const auto& [name, bytesWith, passesOver] : places) {
        const std::string path = Path(name);
        for (const CheckInput& input : Inputs()) {
            if (KindOfName(input.name) == ConfigurationKind::Capture) {
                continue;
            }
            WriteWhole(path, bytesWith(input.bytes));
            const std::string held = Held(path);
            const std::vector<std::string> found = Found(CheckFile(path));
            for (const Damaged& accident : Accidents(input.bytes, passesOver)) {
                if (++count % kTried != 0) {
                    continue;
                }
                SCOPED_TRACE(fmt::format("{}, {}:\n{}", name, accident.what, accident.bytes));
                WriteWhole(path, bytesWith(accident.bytes));
                const std::string now = Held(path);
                if (now != held) {
                    const Reading reading = CheckFile(path);
                    EXPECT_NE(Found(reading), found);
                    const bool isLess =
                        std::count(now.begin(), now.end(), '{') < std::count(held.begin(), held.end(), '{');
                    EXPECT_TRUE(!isLess || reading.findings.Count(Severity::Error) > 0);
                    ++different;
                }
                if (count % kToldOf == 0) {
                    ExpectTold(path);
                }
            }
        }
    }
    EXPECT_GT(different, 1000U);
}

}  // namespace stmdcm
