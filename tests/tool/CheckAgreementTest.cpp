#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <sstream>

#include "stmdcm/change/NewCapture.h"
#include "stmdcm/plugin/HeldConfiguration.h"
#include "stmdcm/plugin/Manager.h"
#include "stmdcm/plugin/Plugin.h"
#include "stmdcm/plugin/TraceHome.h"
#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/ConfigurationReader.h"
#include "tests/support/ScratchDir.h"
#include "tests/tool/CheckInputs.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using stmdcm_test::ReadWhole;
using stmdcm_test::ScratchDir;
using stmdcm_test::WriteWhole;
using namespace Zu::Wep::Trace;
using namespace std::string_literals;

namespace {

/// What a manager holds after loading what was read: a load that fails gives up before it comes to what follows.
Configuration HeldAfterLoading(const Reading& reading) {
    Settings held;
    if (reading.loads || reading.kind == ConfigurationKind::Settings) {
        held.Read(reading.settings->Text());
    } else if (reading.hasObjectFiles && reading.hasDevice && !reading.hasSettings) {
        held.properties = reading.settings->properties;
    }
    Configuration configuration;
    Fill(configuration, held);
    return configuration;
}

/// Changes a text the way editors and accidents do.
class Mutator {
  public:
    explicit Mutator(unsigned seed) : m_random(seed) {}

    std::string Lines(const std::string& text) {
        std::vector<std::string> lines;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);) {
            lines.push_back(line);
        }
        for (std::size_t i = Below(4) + 1; i > 0 && !lines.empty(); --i) {
            Change(lines);
        }
        std::string result;
        for (const std::string& line : lines) {
            result += line + '\n';
        }
        return result.substr(0, result.size() - Below(2));
    }

    std::string Bytes(std::string bytes) {
        for (std::size_t i = Below(3) + 1; i > 0 && !bytes.empty(); --i) {
            bytes[Below(bytes.size())] = static_cast<char>(Below(256));
        }
        return bytes.substr(0, Below(3) == 0 ? Below(bytes.size() + 1) : bytes.size());
    }

  private:
    void Change(std::vector<std::string>& lines) {
        static const std::string inserts[] = {"",
                                              "{",
                                              "}",
                                              "/$",
                                              "$/",
                                              "type=CPT",
                                              "type=SC",
                                              "type=PMI_CMI",
                                              "{type=SC,id=1,/$,formula=a:7,$/}",
                                              "{type=CPT,sid=2}\r",
                                              "{ id=3",
                                              "STM_ATB_Id = 9",
                                              "STM_data_flip=no",
                                              "x",
                                              "sw=5",
                                              "formula=a:1234",
                                              "#x=1",
                                              "name=" + std::string(260, 'n'),
                                              "name=" + std::string(120, 'n') + " \t \r",
                                              "probe=" + std::string(1100, 'p'),
                                              "id=1\0x"s,
                                              "STM_ATB_Id\0= 8"s,
                                              "{type=SC,id=4\0,id=5}"s,
                                              "\0"s,
                                              " \t\r",
                                              "= 5",
                                              "STM_DTC_target_clock_hz = 1e300",
                                              "jobid=99999999999",
                                              "suppress=4294967296"};
        const std::size_t at = Below(lines.size());
        const auto place = lines.begin() + static_cast<std::ptrdiff_t>(at);
        switch (Below(5)) {
            case 0:
                lines.erase(place);
                break;
            case 1:
                std::swap(lines[at], lines[Below(lines.size())]);
                break;
            case 2:
                lines[at] = Bytes(lines[at]);
                break;
            default:
                lines.insert(place, inserts[Below(std::size(inserts))]);
                break;
        }
    }

    std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_random); }

    std::mt19937 m_random;
};

class CheckAgreementTest : public testing::Test {
  protected:
    void ExpectAgreement(const std::string& path) {
        const Reading report = CheckFile(path);
        const bool isCapture = path.ends_with(".tdf");
        Manager manager(m_plugin, "core");
        EXPECT_EQ(manager.Load(path, isCapture ? TRACE_DATA_FILE_TDF : TRACE_DATA_FILE_LOCAL), report.loads);
        Settings rewritten;  // what is cut when it is written is cut on both sides
        std::string text;
        const Configuration held = ReadConfiguration(manager);
        const Configuration expected = HeldAfterLoading(report);
        for (std::size_t i = 0; i < kStmProperties.size(); ++i) {
            EXPECT_EQ(held.properties[i].value, expected.properties[i].value) << kStmProperties[i].name;
        }
        manager.ScRecord().SaveAllRecords(text);
        manager.CptRecord().SaveAllRecords(text);
        manager.PmiRecord().SaveAllRecords(text);
        rewritten.Read(text);
        Configuration configuration;
        Fill(configuration, rewritten);
        configuration.properties = expected.properties;
        for (const Difference& difference : Compare(expected, configuration)) {
            ADD_FAILURE() << difference.Sentence(path);
        }
    }

    void ExpectAgreementOn(const std::string& name, const std::string& bytes) {
        WriteWhole(m_directory / name, bytes);
        ExpectAgreement(m_directory / name);
        if (HasFailure()) {
            FAIL() << name << ":\n" << bytes;
        }
    }

    TraceHome m_home;
    Plugin m_plugin{m_home, {}};
    ScratchDir m_directory;
};

}  // namespace

TEST_F(CheckAgreementTest, OnSamplesAndTheirTruncations) {
    for (const auto& entry : std::filesystem::directory_iterator(STMDCM_TEST_DATA)) {
        SCOPED_TRACE(entry.path());
        ExpectAgreement(entry.path());
        const std::string bytes = ReadWhole(entry.path());
        const std::string name = "cut" + entry.path().extension().string();
        const std::size_t step = bytes.size() / 150 + 1;
        for (std::size_t length = bytes.size() - 1; length > step; length -= step) {
            ASSERT_NO_FATAL_FAILURE(ExpectAgreementOn(name, bytes.substr(0, length)));
        }
    }
}

TEST_F(CheckAgreementTest, OnChangedTexts) {
    for (const char* sample : {"settings.txt", "settings-crlf.txt", "settings-packed.txt"}) {
        const std::string text = ReadWhole(STMDCM_TEST_DATA "/" + std::string(sample));
        for (unsigned seed = 0; seed < 150; ++seed) {
            SCOPED_TRACE(seed);
            CaptureParts parts;
            parts.settings = Mutator(seed).Lines(text);
            ASSERT_NO_FATAL_FAILURE(ExpectAgreementOn("changed.txt", parts.settings));
            parts.device = "STM_ATB_Id = 77\n" + Mutator(seed + 1000).Lines("lonely\nSTM_STP_Version = 9\n");
            ASSERT_NO_FATAL_FAILURE(ExpectAgreementOn("changed.tdf", parts.Bytes()));
        }
    }
}

TEST_F(CheckAgreementTest, OnChangedBytes) {
    for (const char* sample : {"empty-decoder.tdf", "empty-devid.tdf", "packed.tdf", "shadowed.tdf", "short-length.tdf",
                               "torn-header.tdf", "zero-length.tdf"}) {
        const std::string bytes = ReadWhole(STMDCM_TEST_DATA "/" + std::string(sample));
        for (unsigned seed = 0; seed < 80; ++seed) {
            SCOPED_TRACE(seed);
            ASSERT_NO_FATAL_FAILURE(ExpectAgreementOn("changed.tdf", Mutator(seed).Bytes(bytes)));
        }
    }
}

TEST_F(CheckAgreementTest, WhatAManagerSavesIsClean) {
    const std::string path = m_directory / "saved.tdf";
    WriteWhole(path, NewCapture({DeviceSection("board=7\n")}));
    Manager manager(m_plugin, "core");
    ASSERT_TRUE(manager.Load(STMDCM_TEST_DATA "/settings.txt", TRACE_DATA_FILE_LOCAL));
    ASSERT_TRUE(manager.Save(path, TRACE_DATA_FILE_TDF));
    EXPECT_EQ(Identifiers(CheckFile(path)), "");
    ExpectAgreement(path);
}

TEST_F(CheckAgreementTest, AValueIsCutOnSavingWhereItSays) {
    CaptureParts parts;
    parts.settings += "{\nname=" + std::string(200, 'n') + "\n}\n";
    WriteWhole(m_directory / "long.tdf", parts.Bytes());
    Manager manager(m_plugin, "core");
    ASSERT_TRUE(manager.Load(m_directory / "long.tdf", TRACE_DATA_FILE_TDF));
    std::string text;
    manager.ScRecord().SaveAllRecords(text);
    const std::string written = std::to_string(text.find('\n', text.find("name=")) - text.find("name=") - 5);
    const auto findings = CheckFile(m_directory / "long.tdf", std::nullopt).findings.Sorted();
    ASSERT_EQ(findings.size(), 2U);  // the first tells the fields that are not set
    EXPECT_NE(findings[1].effect.find("cut to " + written + " characters"), std::string::npos) << findings[1].effect;
}

}  // namespace stmdcm
