#include "tests/dcm/ManagerTest.h"

namespace Zu::Wep::Trace {
namespace {

using PropertyTest = ManagerTest;

TEST_F(PropertyTest, FreshManagerWritesTheDefaultsInOrder) {
    const std::string expected =
        "Instruction_Compress = 0\nData_Compress = 0\nMReqInfo_Sel_0 = 0\nMReqInfo_Sel_1 = 0\nMReqInfo_Sel_2 = 0\n"
        "MReqInfo_Sel_3 = 0\nMReqInfo_Sel_4 = 0\nMReqInfo_Sel_5 = 0\nMReqInfo_Sel_6 = 0\nMReqInfo_Sel_7 = 0\n"
        "OCPWP_Probe_ID = 0\nSTM_data_flip = 0\nHEAD_Present_0 = 0\nHEAD_Pointer_0 = 0\nHEAD_Present_1 = 0\n"
        "HEAD_Pointer_1 = 0\nSTM_Buffer_Wrapped = 0\nTWP_Protocol = 0\nSTM_DTC_fprocess_clock_hz = 1\n"
        "STM_DTC_target_clock_hz = 1\nSTM_DTC_target_pins = 4\nNeeds_Preprocess = 1\nSTM_STP_Version = 1\n"
        "STM_ATB_Id = 1\nSTM_VornLib_Import = 0\nCTSET_EVEVT_GROUP_NUM = 0\n";
    std::string text = "kept:";
    m_manager->OutputParametersToBuffer(text);
    EXPECT_EQ(text, "kept:" + expected);
}

TEST_F(PropertyTest, UnknownNamesAreLoggedAndChangeNothing) {
    ConfigPropertyValue value;
    value.type = 42;
    EXPECT_FALSE(m_manager->GetProperty("stm_atb_id", value));
    EXPECT_FALSE(m_manager->GetProperty("", value));
    EXPECT_EQ(value.type, 42);
    EXPECT_FALSE(m_manager->SetSTMProperty("CycleModeDelta", value) || m_manager->SetSTMProperty("", value));
    EXPECT_EQ(Number("CycleModeDelta"), 1);
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"    E STM Local DCM: GetProperty failed Proerty Name = stm_atb_id.",
                                                   "    E STM Local DCM: GetProperty failed Proerty Name = ."}));
}

TEST_F(PropertyTest, TextBecomesValueByFourRules) {
    const std::tuple<const char*, const char*, int> cases[] = {
        {"STM_data_flip", "00", 1},
        {"STM_data_flip", "no", 1},
        {"HEAD_Present_1", "0", 0},
        {"STM_VornLib_Import", "0x0", 1},
        {"Needs_Preprocess", "00", 0},
        {"Needs_Preprocess", "no", 0},
        {"Needs_Preprocess", "4294967296", 0},
        {"Needs_Preprocess", "-1", 1},
        {"STM_DTC_target_clock_hz", "2.5e8", 250000000},
        {"STM_DTC_target_clock_hz", "-2.9", -2},
        {"STM_DTC_fprocess_clock_hz", "4294967297.5", 1},
        {"STM_DTC_fprocess_clock_hz", "1e300", 0},
        {"STM_DTC_fprocess_clock_hz", "nan", 0},
        {"STM_ATB_Id", "1e3", 1},
        {"STM_ATB_Id", "0x1F", 0},
        {"STM_ATB_Id", "99999999999", 1215752191},
        {"HEAD_Pointer_0", "99999999999999999999", -1},
        {"MReqInfo_Sel_3", "+7x", 7},
    };
    for (const auto& [name, text, value] : cases) {
        EXPECT_TRUE(m_manager->ExtractValue(name, text));
        EXPECT_EQ(Number(name), value) << name << " from " << text;
    }
    TakeLog();
    EXPECT_FALSE(m_manager->ExtractValue("CycleModeDelta", "1"));
    EXPECT_EQ(TakeLog(),
              (std::vector<std::string>{"M     STM Device DCM: ExtractValue: name=\"CycleModeDelta\", value=\"1\"",
                                        "    E STM Device DCM: extracting fail: name = CycleModeDelta, value = 1"}));
}

}  // namespace
}  // namespace Zu::Wep::Trace
