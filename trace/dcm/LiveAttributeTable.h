#pragma once

#include <array>
#include <cstdint>

#include "host/CChannelDriver.h"
#include "trace/format/StmPropertyTable.h"

namespace Zu::Wep::Trace {

/// What becomes of the property when the driver answers with a type that is not accepted.
enum class OnWrongType { Keep, KeepAndLog, SetFalse };

/// What becomes of it when the query throws.
enum class OnFailure { Keep, SetOne, SetFalse };

/// A type that is accepted, and how the text is read then.
struct AcceptedType {
    std::int32_t type = ChannelAttribute::Unset;
    ValueShape shape = ValueShape::Signed;
};

struct LiveAttribute {
    const char* name;
    const StmProperty* property;
    std::array<AcceptedType, 2> accepted;  ///< the second may be like the first
    OnWrongType onWrongType;
    OnFailure onFailure;
    const char* loggedName;
    const char* valueText = nullptr;  ///< logs the value after a query that did not throw
};

inline constexpr AcceptedType kInteger{ChannelAttribute::Integer, ValueShape::Signed};
inline constexpr AcceptedType kIntegerAsDouble{ChannelAttribute::Integer, ValueShape::Clock};
inline constexpr AcceptedType kIntegerAsFlag{ChannelAttribute::Integer, ValueShape::LongFlag};
inline constexpr AcceptedType kDouble{ChannelAttribute::Double, ValueShape::Clock};
inline constexpr AcceptedType kFlag{ChannelAttribute::Flag, ValueShape::LongFlag};

/// A clock in Hz.
constexpr LiveAttribute ClockAttribute(const char* name, const char* property, AcceptedType integer,
                                       const char* loggedName, const char* valueText) {
    return {
        name,     FindStmProperty(property), {integer, kDouble}, OnWrongType::KeepAndLog, OnFailure::SetOne, loggedName,
        valueText};
}

constexpr LiveAttribute NumberAttribute(const char* name, const char* property, const char* loggedName) {
    return {name, FindStmProperty(property), {kInteger, kInteger}, OnWrongType::Keep, OnFailure::Keep, loggedName};
}

constexpr LiveAttribute FlagAttribute(const char* name, const char* property, const char* loggedName,
                                      OnWrongType onWrongType, AcceptedType accepted = kFlag) {
    return {name, FindStmProperty(property), {accepted, accepted}, onWrongType, OnFailure::SetFalse, loggedName};
}

/// What the log says of a query that throws.
inline constexpr char kFailureText[] = "STM DCM LoadConfigurationLive: get %s failed";

/// What KeepAndLog logs. It names the trace clock, also where the device clock's type was wrong: readers of logs know
/// it so.
inline constexpr char kWrongTypeText[] =
    "STM DCM LoadConfigurationLive: get HBT720_TRACE_ATTRIBUTE_TRACE_CLOCK_FREQ received incorrect attribute type: "
    "%d. Expecting either integer or double,";

/// The attributes in the order in which they are asked for.
inline constexpr std::array kLiveAttributes = {
    ClockAttribute("Trace Clock Frequency", "STM_DTC_fprocess_clock_hz", kInteger,
                   "HBT720_TRACE_ATTRIBUTE_TRACE_CLOCK_FREQ", "m_dtc_fclock_Hz = %d"),
    ClockAttribute("Device Clock Frequency", "STM_DTC_target_clock_hz", kIntegerAsDouble,
                   "HBT720_TRACE_ATTRIBUTE_TIMING_CLOCK_FREQ", "m_dtc_targetclock_Hz = %d"),
    NumberAttribute("Trace Data Pin Size ",  // the blank belongs to the name
                    "STM_DTC_target_pins", "HBT720_TRACE_ATTRIBUTE_TRACE_DATAPINS"),
    FlagAttribute("ETB Data Flip Needed", "STM_data_flip", "ETB_STM_DATA_FLIP", OnWrongType::SetFalse),
    FlagAttribute("ETB Head Present 0", "HEAD_Present_0", "ETB_STM_HEAD_PRESENT_0", OnWrongType::SetFalse,
                  kIntegerAsFlag),
    FlagAttribute("ETB Head Present 1", "HEAD_Present_1", "ETB_STM_HEAD_PRESENT_1", OnWrongType::SetFalse,
                  kIntegerAsFlag),
    NumberAttribute("ETB Head Pointer 0", "HEAD_Pointer_0", "ETB_STM_HEAD_POINTER_0"),
    NumberAttribute("ETB Head Pointer 1", "HEAD_Pointer_1", "ETB_STM_HEAD_POINTER_1"),
    FlagAttribute("Buffer Wrapped", "STM_Buffer_Wrapped", "ETB_TRACE_BUFFER_FULL", OnWrongType::Keep),
    FlagAttribute("STM_VornLib_Import", "STM_VornLib_Import", "STM_VORNLIB_IMPORT", OnWrongType::SetFalse),
    FlagAttribute("TWP Source", "TWP_Protocol", "TWP_SOURCE", OnWrongType::Keep),
};

/// Asks `driver` for every attribute in turn; one record serves them all, so a query that sets no type is answered
/// with the type of the one before. Failures are logged and never end the load.
void LoadLiveAttributes(CChannelDriver& driver, StmProperties& properties);

}  // namespace Zu::Wep::Trace
