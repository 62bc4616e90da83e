#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "trace/format/StmProperties.h"
#include "trace/format/ValueShape.h"

namespace Zu::Wep::Trace {

/// Which member of the value's union sets a flag.
enum class FlagSource { Integer, BooleanByte };

/// One property. Exactly one of the two member pointers is set.
struct StmProperty {
    const char* name;
    std::int32_t StmProperties::*integer;
    bool StmProperties::*flag;
    ValueShape shape;  ///< how its text becomes its value (docs/settings-text.md)
    FlagSource flagSource = FlagSource::Integer;
};

inline constexpr StmProperty IntegerProperty(const char* name, std::int32_t StmProperties::*member,
                                             ValueShape shape = ValueShape::Signed) {
    return {name, member, nullptr, shape};
}

inline constexpr StmProperty FlagProperty(const char* name, bool StmProperties::*member,
                                          ValueShape shape = ValueShape::Flag,
                                          FlagSource source = FlagSource::Integer) {
    return {name, nullptr, member, shape, source};
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
    IntegerProperty("STM_DTC_fprocess_clock_hz", &StmProperties::traceClockHz, ValueShape::Clock),
    IntegerProperty("STM_DTC_target_clock_hz", &StmProperties::targetClockHz, ValueShape::Clock),
    IntegerProperty("STM_DTC_target_pins", &StmProperties::targetPins),
    // "00" and "no" are false here and true for every other flag (docs/settings-text.md, "Grammar").
    FlagProperty("Needs_Preprocess", &StmProperties::needsPreprocess, ValueShape::NumericFlag),
    IntegerProperty("STM_STP_Version", &StmProperties::stpVersion),
    IntegerProperty("STM_ATB_Id", &StmProperties::atbId),
    // Alone among the flags hosts set it by the union's boolean byte (docs/host-guide.md).
    FlagProperty("STM_VornLib_Import", &StmProperties::vornLibImport, ValueShape::Flag, FlagSource::BooleanByte),
    IntegerProperty("CTSET_EVEVT_GROUP_NUM", &StmProperties::ctsetEventGroupNum),  // hosts know it by this spelling
};

/// The property called exactly `name`, or null.
constexpr const StmProperty* FindStmProperty(std::string_view name) {
    const auto* found = std::find_if(kStmProperties.begin(), kStmProperties.end(),
                                     [name](const StmProperty& property) { return name == property.name; });
    return found == kStmProperties.end() ? nullptr : found;
}

/// What a text reads as: flags 0 or 1, a clock outside of 64 bits 0.
std::int32_t NumberFromText(ValueShape shape, const std::string& text);

/// Sets the property called `name` from its text form; false when there is none.
bool SetFromText(StmProperties& properties, std::string_view name, std::string_view text);

/// Sets a property; a flag is true unless `number` is 0.
void SetNumber(StmProperties& properties, const StmProperty& property, std::int32_t number);

/// The property's value as the settings text shows it, flags as 0 or 1.
std::int32_t NumberOf(const StmProperties& properties, const StmProperty& property);

}  // namespace Zu::Wep::Trace
