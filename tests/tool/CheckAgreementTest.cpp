#include <gtest/gtest.h>

#include <filesystem>

#include "fuzz/differential/InputMaker.h"
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

TEST_F(CheckAgreementTest, OnInputsMadeByChance) {
    const stmdcm_test::Samples samples;
    for (unsigned seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE(seed);
        stmdcm_test::InputMaker maker(seed, samples);
        ASSERT_NO_FATAL_FAILURE(ExpectAgreementOn("made.txt", maker.SettingsText()));
        ASSERT_NO_FATAL_FAILURE(ExpectAgreementOn("made.tdf", maker.Capture()));
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

}  // namespace stmdcm
