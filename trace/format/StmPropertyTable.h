#pragma once

#include <array>
#include <string>
#include <string_view>

#include "trace/format/StmProperties.h"
#include "trace/format/ValueShape.h"

namespace Zu::Wep::Trace {

/// How a property's text becomes its value (docs/settings-text.md). No conversion rejects anything.
enum class TextConversion {
    Integer,      ///< strtol in base 10, low 32 bits
    Clock,        ///< strtod, truncated toward zero, low 32 bits
    Flag,         ///< true unless the text is exactly "0"
    NumericFlag,  ///< true when the 32-bit integer of the text is not 0
};

/// What a checker of values expects of it.
constexpr ValueShape ShapeOf(TextConversion conversion) {
    switch (conversion) {
        case TextConversion::Integer:
            return ValueShape::Signed;
        case TextConversion::Clock:
            return ValueShape::Clock;
        case TextConversion::Flag:
            return ValueShape::Flag;
        case TextConversion::NumericFlag:
            break;
    }
    return ValueShape::NumericFlag;
}

/// Which member of the value's union sets a flag.
enum class FlagSource { Integer, BooleanByte };

/// One property. Exactly one of the two member pointers is set.
struct StmProperty {
    const char* name;
    std::int32_t StmProperties::*integer;
    bool StmProperties::*flag;
    TextConversion conversion;
    FlagSource flagSource = FlagSource::Integer;
};

inline constexpr StmProperty IntegerProperty(const char* name, std::int32_t StmProperties::*member,
                                             TextConversion conversion = TextConversion::Integer) {
    return {name, member, nullptr, conversion};
}

inline constexpr StmProperty FlagProperty(const char* name, bool StmProperties::*member,
                                          TextConversion conversion = TextConversion::Flag,
                                          FlagSource source = FlagSource::Integer) {
    return {name, nullptr, member, conversion, source};
}

/// Every property, in the order in which the settings text holds them.
inline constexpr std::array kStmProperties = {
    IntegerProperty("Instruction_Compress", &StmProperties::instructionCompression),
    IntegerProperty("Data_Compress", &StmProperties::dataCompression),
    IntegerProperty("MReqInfo_Sel_0", &StmProperties::mreqInfoSel0),
    IntegerProperty("MReqInfo_Sel_1", &StmProperties::mreqInfoSel1),
    IntegerProperty("MReqInfo_Sel_2", &StmProperties::mreqInfoSel2),
    IntegerProperty("MReqInfo_Sel_3", &StmProperties::mreqInfoSel3),
    IntegerProperty("MReqInfo_Sel_4", &StmProperties::mreqInfoSel4),
    IntegerProperty("MReqInfo_Sel_5", &StmProperties::mreqInfoSel5),
    IntegerProperty("MReqInfo_Sel_6", &StmProperties::mreqInfoSel6),
    IntegerProperty("MReqInfo_Sel_7", &StmProperties::mreqInfoSel7),
    IntegerProperty("OCPWP_Probe_ID", &StmProperties::ocpwpProbeId),
    FlagProperty("STM_data_flip", &StmProperties::dataFlip),
    FlagProperty("HEAD_Present_0", &StmProperties::headPresent0),
    IntegerProperty("HEAD_Pointer_0", &StmProperties::headPointer0),
    FlagProperty("HEAD_Present_1", &StmProperties::headPresent1),
    IntegerProperty("HEAD_Pointer_1", &StmProperties::headPointer1),
    FlagProperty("STM_Buffer_Wrapped", &StmProperties::bufferWrapped),
    FlagProperty("TWP_Protocol", &StmProperties::twpProtocol),
    IntegerProperty("STM_DTC_fprocess_clock_hz", &StmProperties::traceClockHz, TextConversion::Clock),
    IntegerProperty("STM_DTC_target_clock_hz", &StmProperties::targetClockHz, TextConversion::Clock),
    IntegerProperty("STM_DTC_target_pins", &StmProperties::targetPins),
    // "00" and "no" are false here and true for every other flag (docs/settings-text.md, "Grammar").
    FlagProperty("Needs_Preprocess", &StmProperties::needsPreprocess, TextConversion::NumericFlag),
    IntegerProperty("STM_STP_Version", &StmProperties::stpVersion),
    IntegerProperty("STM_ATB_Id", &StmProperties::atbId),
    // Alone among the flags hosts set it by the union's boolean byte (docs/host-guide.md).
    FlagProperty("STM_VornLib_Import", &StmProperties::vornLibImport, TextConversion::Flag, FlagSource::BooleanByte),
    IntegerProperty("CTSET_EVEVT_GROUP_NUM", &StmProperties::ctsetEventGroupNum),  // the name is spelled so
};

/// The property called exactly `name`, or null.
const StmProperty* FindStmProperty(std::string_view name);

/// The low 32 bits of `text` read by strtol in base 10.
std::int32_t IntegerFromText(const char* text);

/// `text` read by strtod, truncated toward zero to 64 bits, of which the low 32 are kept.
std::int32_t ClockFromText(const char* text);

/// Sets `property` from its text form.
void SetFromText(StmProperties& properties, const StmProperty& property, const std::string& text);

/// The same by name; false when there is no such property.
bool SetFromText(StmProperties& properties, std::string_view name, std::string_view text);

/// The property's value as the settings text shows it, flags as 0 or 1.
std::int32_t NumberOf(const StmProperties& properties, const StmProperty& property);

}  // namespace Zu::Wep::Trace
