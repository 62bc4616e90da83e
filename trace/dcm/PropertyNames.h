#pragma once

#include <array>
#include <cstdint>

#include "trace/dcm/ConfigPropertyValue.h"

namespace Zu::Wep::Trace {

/// The names of the properties, as GetProperty and SetSTMProperty take them.
namespace PropertyNames {

inline constexpr const char* Instruction_Compress = "Instruction_Compress";
inline constexpr const char* Data_Compress = "Data_Compress";
inline constexpr const char* MReqInfo_Sel_0 = "MReqInfo_Sel_0";
inline constexpr const char* MReqInfo_Sel_1 = "MReqInfo_Sel_1";
inline constexpr const char* MReqInfo_Sel_2 = "MReqInfo_Sel_2";
inline constexpr const char* MReqInfo_Sel_3 = "MReqInfo_Sel_3";
inline constexpr const char* MReqInfo_Sel_4 = "MReqInfo_Sel_4";
inline constexpr const char* MReqInfo_Sel_5 = "MReqInfo_Sel_5";
inline constexpr const char* MReqInfo_Sel_6 = "MReqInfo_Sel_6";
inline constexpr const char* MReqInfo_Sel_7 = "MReqInfo_Sel_7";
inline constexpr const char* OCPWP_Probe_ID = "OCPWP_Probe_ID";
inline constexpr const char* STM_data_flip = "STM_data_flip";
inline constexpr const char* HEAD_Present_0 = "HEAD_Present_0";
inline constexpr const char* HEAD_Pointer_0 = "HEAD_Pointer_0";
inline constexpr const char* HEAD_Present_1 = "HEAD_Present_1";
inline constexpr const char* HEAD_Pointer_1 = "HEAD_Pointer_1";
inline constexpr const char* STM_Buffer_Wrapped = "STM_Buffer_Wrapped";
inline constexpr const char* TWP_Protocol = "TWP_Protocol";
inline constexpr const char* STM_DTC_fprocess_clock_hz = "STM_DTC_fprocess_clock_hz";
inline constexpr const char* STM_DTC_target_clock_hz = "STM_DTC_target_clock_hz";
inline constexpr const char* STM_DTC_target_pins = "STM_DTC_target_pins";
inline constexpr const char* Needs_Preprocess = "Needs_Preprocess";
inline constexpr const char* STM_STP_Version = "STM_STP_Version";
inline constexpr const char* STM_ATB_Id = "STM_ATB_Id";
inline constexpr const char* STM_VornLib_Import = "STM_VornLib_Import";
inline constexpr const char* CTSET_EVEVT_GROUP_NUM = "CTSET_EVEVT_GROUP_NUM";

}  // namespace PropertyNames

/// One property as hosts see it.
struct PropertyDescription {
    const char* name;
    std::int32_t type;  ///< ConfigPropertyValue::Integer or ConfigPropertyValue::Boolean
    const char* unit;   ///< "" for a plain number
    std::int32_t defaultValue;
};

/// Every property, in the order in which a settings text holds them (docs/settings-text.md).
inline constexpr std::array<PropertyDescription, 26> kPropertyDescriptions = {{
    {PropertyNames::Instruction_Compress, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::Data_Compress, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::MReqInfo_Sel_0, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::MReqInfo_Sel_1, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::MReqInfo_Sel_2, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::MReqInfo_Sel_3, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::MReqInfo_Sel_4, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::MReqInfo_Sel_5, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::MReqInfo_Sel_6, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::MReqInfo_Sel_7, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::OCPWP_Probe_ID, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::STM_data_flip, ConfigPropertyValue::Boolean, "", 0},
    {PropertyNames::HEAD_Present_0, ConfigPropertyValue::Boolean, "", 0},
    {PropertyNames::HEAD_Pointer_0, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::HEAD_Present_1, ConfigPropertyValue::Boolean, "", 0},
    {PropertyNames::HEAD_Pointer_1, ConfigPropertyValue::Integer, "", 0},
    {PropertyNames::STM_Buffer_Wrapped, ConfigPropertyValue::Boolean, "", 0},
    {PropertyNames::TWP_Protocol, ConfigPropertyValue::Boolean, "", 0},
    {PropertyNames::STM_DTC_fprocess_clock_hz, ConfigPropertyValue::Integer, "Hz", 1},
    {PropertyNames::STM_DTC_target_clock_hz, ConfigPropertyValue::Integer, "Hz", 1},
    {PropertyNames::STM_DTC_target_pins, ConfigPropertyValue::Integer, "pins", 4},
    {PropertyNames::Needs_Preprocess, ConfigPropertyValue::Boolean, "", 1},
    {PropertyNames::STM_STP_Version, ConfigPropertyValue::Integer, "", 1},
    {PropertyNames::STM_ATB_Id, ConfigPropertyValue::Integer, "", 1},
    {PropertyNames::STM_VornLib_Import, ConfigPropertyValue::Boolean, "", 0},
    {PropertyNames::CTSET_EVEVT_GROUP_NUM, ConfigPropertyValue::Integer, "", 0},
}};

}  // namespace Zu::Wep::Trace
