#include <map>

#include "tests/sim/LiveTest.h"

namespace Zu::Wep::Trace {
namespace {

/// What becomes of the property for each kind of answer, in the order of `kAnswers`: K kept, I the text as an integer,
/// D as a double, B as a flag, 0 or 1.
struct Row {
    const char *attribute, *property, *outcomes, *failureName;
};
constexpr Row kRows[] = {
    {"Trace Clock Frequency", "STM_DTC_fprocess_clock_hz", "KIDK1", "HBT720_TRACE_ATTRIBUTE_TRACE_CLOCK_FREQ"},
    {"Device Clock Frequency", "STM_DTC_target_clock_hz", "KDDK1", "HBT720_TRACE_ATTRIBUTE_TIMING_CLOCK_FREQ"},
    {"Trace Data Pin Size ", "STM_DTC_target_pins", "KIKKK", "HBT720_TRACE_ATTRIBUTE_TRACE_DATAPINS"},
    {"ETB Data Flip Needed", "STM_data_flip", "B0000", "ETB_STM_DATA_FLIP"},
    {"ETB Head Present 0", "HEAD_Present_0", "0B000", "ETB_STM_HEAD_PRESENT_0"},
    {"ETB Head Present 1", "HEAD_Present_1", "0B000", "ETB_STM_HEAD_PRESENT_1"},
    {"ETB Head Pointer 0", "HEAD_Pointer_0", "KIKKK", "ETB_STM_HEAD_POINTER_0"},
    {"ETB Head Pointer 1", "HEAD_Pointer_1", "KIKKK", "ETB_STM_HEAD_POINTER_1"},
    {"Buffer Wrapped", "STM_Buffer_Wrapped", "BKKK0", "ETB_TRACE_BUFFER_FULL"},
    {"STM_VornLib_Import", "STM_VornLib_Import", "B0000", "STM_VORNLIB_IMPORT"},
    {"TWP Source", "TWP_Protocol", "BKKK0", "TWP_SOURCE"},
};
constexpr const char* kAnswers[] = {R"("type": "flag")", R"("type": "integer")", R"("type": "double")", R"("type": -3)",
                                    R"("fails": {"with": "int"})"};
constexpr int kTypes[] = {0, 2, 6, -3};
constexpr std::size_t kThrows = 4;

struct AnswerText {
    const char* text;
    int integer, real, flag, before;
};
constexpr AnswerText kTexts[] = {{"1234.5e-1", 1234, 123, 1, 0}, {"0", 0, 0, 0, 1}, {"-12.9", -12, -12, 1, 0}};

int Expected(char outcome, const AnswerText& text) {
    const std::map<char, int> values{{'K', text.before}, {'I', text.integer}, {'D', text.real}, {'B', text.flag}};
    return values.contains(outcome) ? values.at(outcome) : outcome - '0';
}
std::string WrongType(int type) {  // the device clock's too
    return " W    STM DCM LoadConfigurationLive: get HBT720_TRACE_ATTRIBUTE_TRACE_CLOCK_FREQ received incorrect "
           "attribute type: " +
           std::to_string(type) + ". Expecting either integer or double,";
}

using AttributeTable = LiveTest;

TEST_F(AttributeTable, EveryAnswerToEveryAttribute) {
    for (std::size_t answer = 0; answer <= kThrows; ++answer) {
        for (const AnswerText& text : kTexts) {
            std::string attributes;
            for (const Row& row : kRows) {
                attributes += (attributes.empty() ? "\"" : ",\"") + std::string(row.attribute) + "\": {" +
                              kAnswers[answer] + ", \"text\": \"" + text.text + "\"}";
                m_live->ExtractValue(row.property, std::to_string(text.before));
            }
            m_live->SaveAllConfiguration();
            PlayAttributes(attributes);
            Renew();
            EXPECT_TRUE(m_live->LoadConfigurationLive());
            Lines log = kConnected;
            for (const Row& row : kRows) {
                const char outcome = row.outcomes[answer];
                EXPECT_EQ(Get(row.property), Expected(outcome, text)) << row.attribute << kAnswers[answer];
                if (answer == kThrows) {
                    log.push_back(std::string("    E STM DCM LoadConfigurationLive: get ") + row.failureName +
                                  " failed");
                } else if (&row < kRows + 2) {
                    if (outcome == 'K') {
                        log.push_back(WrongType(kTypes[answer]));
                    }
                    log.push_back(&row == kRows ? "M     m_dtc_fclock_Hz = " : "M     m_dtc_targetclock_Hz = ");
                    log.back() += std::to_string(Expected(outcome, text));
                }
            }
            EXPECT_EQ(TakeLiveLog(), log);
        }
    }
}

TEST_F(AttributeTable, AQueryThatSetsNoTypeHasTheTypeOfTheOneBefore) {
    PlayAttributes(R"("Trace Clock Frequency": {"text": "5"},
                      "Device Clock Frequency": {"type": "integer", "text": "7"},
                      "Trace Data Pin Size ": {"text": "9"},
                      "ETB Data Flip Needed": {"type": "flag", "text": "1", "fails": {"with": "nothing"}},
                      "ETB Head Present 0": {},
                      "ETB Head Pointer 0": {"text": "11"})");
    EXPECT_TRUE(m_live->LoadConfigurationLive());
    EXPECT_EQ(TakeLiveLog().at(3), WrongType(7));
    EXPECT_EQ(Get("STM_DTC_fprocess_clock_hz"), 1);
    EXPECT_EQ(Get("STM_DTC_target_pins"), 9);
    EXPECT_EQ(Get("STM_data_flip"), 0);
    EXPECT_EQ(Get("HEAD_Present_0"), 1);  // its text too is that of the query before
    EXPECT_EQ(Get("HEAD_Pointer_0"), 11);
}

}  // namespace
}  // namespace Zu::Wep::Trace
