#include <fmt/format.h>

#include <cstring>
#include <limits>

#include "stmdcm/validate/Bytes.h"
#include "stmdcm/validate/Expect.h"
#include "stmdcm/validate/Questions.h"
#include "stmdcm/validate/Rules.h"
#include "stmdcm/validate/Subject.h"
#include "trace/dcm/PropertyNames.h"
#include "trace/format/StmSections.h"

namespace stmdcm::validate {

using namespace Zu::Wep::Trace;

namespace {

constexpr char kImport[] = "STM_VornLib_Import";
constexpr char kConstant[] = "CycleModeDelta";

bool IsFlag(const PropertyDescription& property) { return property.type == ConfigPropertyValue::Boolean; }

/// Names that are no properties, though near to one.
constexpr const char* kOtherNames[] = {"",
                                       "STM_ATB_ID",
                                       "stm_atb_id",
                                       "STM_ATB_Id ",
                                       "STM_ATB_I",
                                       "CTSET_EVENT_GROUP_NUM",
                                       "MReqInfo_Sel_8",
                                       "STM_ATB_Id=5",
                                       " ",
                                       "HEAD_Present_",
                                       "Instruction_Compress\n"};

/// The lines that a save writes for the properties.
std::string PropertyLines(const Subject& subject) {
    const std::string text = subject.Text();
    return text.substr(0, text.find('{'));
}

/// One property after the other is set to that number, and read.
template <class Wanted>
void SetAndRead(const Subject& subject, bool areFlags, std::int32_t number, Wanted wanted) {
    for (const PropertyDescription& property : kPropertyDescriptions) {
        if (IsFlag(property) == areFlags && property.name != std::string(kImport)) {
            const std::string asked = fmt::format("{} after SetSTMProperty with the integer {}", property.name, number);
            Expect("the result of setting " + std::string(property.name), subject.Set(property.name, number), true);
            Expect(asked, subject.Number(property.name), std::int32_t{wanted(number)});
        }
    }
}

constexpr Question kPropertyTable[] = {
    {"property.defaults", "a fresh manager has the default of each of the 26 properties", kGrammarRule,
     [](Host& host) {
         const Subject subject(host);
         for (const PropertyDescription& property : kPropertyDescriptions) {
             Expect(fmt::format("{} of a fresh manager", property.name), subject.Number(property.name),
                    property.defaultValue);
         }
     }},
    {"property.types", "GetProperty tells 2 as the type of an integer, 5 of a flag", kGrantedRule,
     [](Host& host) {
         const Subject subject(host);
         for (const PropertyDescription& property : kPropertyDescriptions) {
             ConfigPropertyValue value;
             subject->GetProperty(property.name, value);
             Expect(fmt::format("the type of {}", property.name), value.type, property.type);
         }
     }},
    {"property.text-is-the-hosts", "GetProperty leaves the value's text alone", kGrantedRule,
     [](Host& host) {
         const Subject subject(host);
         for (const PropertyDescription& property : kPropertyDescriptions) {
             ConfigPropertyValue value;
             value.text = "the host's";
             subject->GetProperty(property.name, value);
             Expect(fmt::format("the text after GetProperty of {}", property.name), value.text, "the host's");
         }
     }},
    {"property.flag-is-one-byte", "reading a flag writes the first byte of the union alone", kGrantedRule,
     [](Host& host) {
         const Subject subject(host);
         for (const PropertyDescription& property : kPropertyDescriptions) {
             ConfigPropertyValue value;
             std::memset(&value.value, 0x77, sizeof value.value);
             subject->GetProperty(property.name, value);
             unsigned char bytes[sizeof value.value];
             std::memcpy(bytes, &value.value, sizeof bytes);
             Expect(fmt::format("the union's second byte after GetProperty of {}", property.name), bytes[1],
                    static_cast<unsigned char>(IsFlag(property) ? 0x77 : 0));
         }
     }},
    {"property.unknown-is-refused", "GetProperty refuses other names and leaves the value alone", kGrantedRule,
     [](Host& host) {
         const Subject subject(host);
         for (const char* name : kOtherNames) {
             ConfigPropertyValue value;
             value.type = 42;
             value.value.integer = 43;
             Expect("GetProperty of " + InWords(name), subject->GetProperty(name, value), false);
             Expect("the type afterwards", value.type, 42);
             Expect("the value afterwards", value.value.integer, 43);
         }
     }},
    {"property.unknown-is-not-set", "SetSTMProperty refuses other names and changes nothing", kGrantedRule,
     [](Host& host) {
         const Subject subject(host);
         const std::string before = subject.Text();
         for (const char* name : kOtherNames) {
             Expect("SetSTMProperty of " + InWords(name), subject.Set(name, 5), false);
         }
         Expect("the configuration afterwards", subject.Text(), before);
     }},
    {"property.constant", "CycleModeDelta is true, a flag, can't be set and is never written", kGrammarRule,
     [](Host& host) {
         const Subject subject(host);
         Expect("setting CycleModeDelta", subject.Set(kConstant, 0), false);
         ConfigPropertyValue value;
         Expect("GetProperty of CycleModeDelta", subject->GetProperty(kConstant, value), true);
         Expect("its type", value.type, 5);
         Expect("its value", value.value.boolean, true);
         Expect("where it is in the text", subject.Text().find(kConstant), std::string::npos);
         subject.LoadText("CycleModeDelta = 0\nSTM_ATB_Id = 5\n");
         Expect("STM_ATB_Id behind a line of CycleModeDelta", subject.Number("STM_ATB_Id"), 1);
     }},
    {"property.integers", "an integer takes every value of 32 bits", kResultRule,
     [](Host& host) {
         const Subject subject(host);
         for (const std::int32_t number :
              {0, 1, -1, 256, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min(),
               host.AnyNumber(), host.AnyNumber()}) {
             SetAndRead(subject, false, number, [](std::int32_t each) { return each; });
         }
     }},
    {"property.flags", "a flag is set by any integer but 0, whatever its first byte is", kResultRule,
     [](Host& host) {
         const Subject subject(host);
         for (const std::int32_t number : {1, 0, 2, 256, -1, 0, 1 << 30, 0}) {
             SetAndRead(subject, true, number, [](std::int32_t each) { return each == 0 ? 0 : 1; });
         }
     }},
    {"property.import-by-its-boolean", "STM_VornLib_Import alone is set by the union's boolean byte", kResultRule,
     [](Host& host) {
         const Subject subject(host);
         Expect("setting it by true", subject.Set(kImport, 1), true);
         Expect("its value", subject.Number(kImport), 1);
         Expect("setting it by 256, whose first byte is 0", subject.Set(kImport, 256), true);
         Expect("its value", subject.Number(kImport), 0);
     }},
    {"property.type-is-not-looked-at", "setting takes the union's integer whatever type the value states", kResultRule,
     [](Host& host) {
         const Subject subject(host);
         for (const std::int32_t type : {0, 2, 5, 6, 7, -1, 99}) {
             ConfigPropertyValue value;
             value.type = type;
             value.text = "77";
             value.value.integer = 1000 + type;
             Expect("the result of setting", subject->SetSTMProperty("STM_ATB_Id", value), true);
             Expect(fmt::format("STM_ATB_Id set with type {}", type), subject.Number("STM_ATB_Id"), 1000 + type);
         }
     }},
    {"property.real-is-not-converted", "a real in the union counts by the integer that shares its bytes", kResultRule,
     [](Host& host) {
         const Subject subject(host);
         ConfigPropertyValue value;
         value.type = 6;
         value.value.real = 3.7;
         std::int32_t low = 0;
         std::memcpy(&low, &value.value, sizeof low);
         subject->SetSTMProperty("STM_ATB_Id", value);
         Expect("STM_ATB_Id set by the real 3.7", subject.Number("STM_ATB_Id"), low);
     }},
    {"property.value-is-the-hosts", "SetSTMProperty changes nothing of the value that it gets", kGrantedRule,
     [](Host& host) {
         const Subject subject(host);
         ConfigPropertyValue value;
         value.type = 42;
         value.text = "the host's";
         value.value.integer = 43;
         subject->SetSTMProperty("STM_ATB_Id", value);
         Expect("the value afterwards", fmt::format("{} {} {}", value.type, value.text, value.value.integer),
                "42 the host's 43");
     }},
    {"property.one-at-a-time", "setting one property leaves the 25 others alone", kGrantedRule,
     [](Host& host) {
         for (const PropertyDescription& changed : kPropertyDescriptions) {
             const Subject subject(host, changed.name);
             subject.Set(changed.name, IsFlag(changed) ? 1 - changed.defaultValue : 1000);
             for (const PropertyDescription& other : kPropertyDescriptions) {
                 if (&other != &changed) {
                     Expect(fmt::format("{} when {} was set", other.name, changed.name), subject.Number(other.name),
                            other.defaultValue);
                 }
             }
         }
     }},
    {"property.order", "the 26 are written in their order, each in its line, flags as 0 or 1", kGrammarRule,
     [](Host& host) {
         std::string expected;
         for (const PropertyDescription& property : kPropertyDescriptions) {
             expected += fmt::format("{} = {}\n", property.name, property.defaultValue);
         }
         Expect("what a fresh manager saves", PropertyLines(Subject(host)), expected);
     }},
    {"property.kept-in-settings", "a settings file keeps all 26", kGrammarRule,
     [](Host& host) {
         const std::string text = host.AnyProperties();
         const Subject subject(host);
         subject.LoadText(text);
         subject->SaveConfiguration("kept", TRACE_DATA_FILE_LIVE);
         const Subject another(host, "another");
         another->LoadConfiguration("kept", TRACE_DATA_FILE_LIVE);
         Expect("what another manager has loaded", PropertyLines(another), text);
     }},
    {"property.kept-in-a-capture", "a capture keeps all 26", kLayoutRule,
     [](Host& host) {
         const std::string text = host.AnyProperties();
         const Subject subject(host);
         subject.LoadText(text);
         const std::string capture = subject.SavedInto(BareCapture());
         Expect("the section's text", PayloadOf(capture, kStmSectionName), text);
         const Subject another(host, "another");
         Expect("loading the capture", another.LoadCapture(capture), true);
         Expect("what another manager has loaded", PropertyLines(another), text);
     }},
    {"property.kept-for-its-cpu", "the next manager of a CPU begins with what was saved for it", kLifeRule,
     [](Host& host) {
         const std::string text = host.AnyProperties();
         Subject subject(host);
         subject.LoadText(text);
         subject->SaveAllConfiguration();
         subject.End();
         Expect("what the next manager has", PropertyLines(Subject(host)), text);
         Expect("STM_STP_Version of another CPU's", Subject(host, "another").Number("STM_STP_Version"), 1);
     }},
};

}  // namespace

std::span<const Question> PropertyQuestions() { return kPropertyTable; }

}  // namespace stmdcm::validate
