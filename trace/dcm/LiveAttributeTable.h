#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "host/CChannelDriver.h"
#include "trace/format/StmProperties.h"

namespace Zu::Wep::Trace {

/// How a live attribute's text becomes its property's value.
enum class LiveConversion {
    Integer,  ///< strtol in base 10, low 32 bits
    Double,   ///< strtod, truncated toward zero
    Flag      ///< strtol in base 10, true when not 0
};

/// What becomes of the property when the driver answers with a type that is not accepted.
enum class OnWrongType { Keep, KeepAndLog, SetFalse };

/// What becomes of it when the query throws.
enum class OnFailure { Keep, SetOne, SetFalse };

/// A type that is accepted, and what it means.
struct AcceptedType {
    std::int32_t type = ChannelAttribute::Unset;
    LiveConversion conversion = LiveConversion::Integer;
};

/// One attribute of the live target. Exactly one of the two member pointers is set.
struct LiveAttribute {
    const char* name;
    std::int32_t StmProperties::*integer;
    bool StmProperties::*flag;
    std::array<AcceptedType, 2> accepted;  ///< the second may be like the first
    OnWrongType onWrongType;
    OnFailure onFailure;
    const char* failureText;
    const char* valueText = nullptr;  ///< logs the value after a query that did not throw
};

inline constexpr AcceptedType kInteger{ChannelAttribute::Integer, LiveConversion::Integer};
inline constexpr AcceptedType kIntegerAsDouble{ChannelAttribute::Integer, LiveConversion::Double};
inline constexpr AcceptedType kIntegerAsFlag{ChannelAttribute::Integer, LiveConversion::Flag};
inline constexpr AcceptedType kDouble{ChannelAttribute::Double, LiveConversion::Double};
inline constexpr AcceptedType kFlag{ChannelAttribute::Flag, LiveConversion::Flag};

/// What KeepAndLog logs. It names the trace clock, also where the device clock's type was wrong: readers of logs know
/// it so.
inline constexpr char kWrongTypeText[] =
    "STM DCM LoadConfigurationLive: get HBT720_TRACE_ATTRIBUTE_TRACE_CLOCK_FREQ received incorrect attribute type: "
    "%d. Expecting either integer or double,";

/// The attributes in the order in which they are asked for. Which of them fall back and which keep their value
/// follows no rule: every row is as it has to be.
inline constexpr std::array kLiveAttributes = {
    LiveAttribute{"Trace Clock Frequency",
                  &StmProperties::traceClockHz,
                  nullptr,
                  {kDouble, kInteger},
                  OnWrongType::KeepAndLog,
                  OnFailure::SetOne,
                  "STM DCM LoadConfigurationLive: get HBT720_TRACE_ATTRIBUTE_TRACE_CLOCK_FREQ failed",
                  "m_dtc_fclock_Hz = %d"},
    LiveAttribute{"Device Clock Frequency",
                  &StmProperties::targetClockHz,
                  nullptr,
                  {kIntegerAsDouble, kDouble},
                  OnWrongType::KeepAndLog,
                  OnFailure::SetOne,
                  "STM DCM LoadConfigurationLive: get HBT720_TRACE_ATTRIBUTE_TIMING_CLOCK_FREQ failed",
                  "m_dtc_targetclock_Hz = %d"},
    LiveAttribute{"Trace Data Pin Size ",  // the blank belongs to the name
                  &StmProperties::targetPins,
                  nullptr,
                  {kInteger, kInteger},
                  OnWrongType::Keep,
                  OnFailure::Keep,
                  "STM DCM LoadConfigurationLive: get HBT720_TRACE_ATTRIBUTE_TRACE_DATAPINS failed"},
    LiveAttribute{"ETB Data Flip Needed",
                  nullptr,
                  &StmProperties::dataFlip,
                  {kFlag, kFlag},
                  OnWrongType::SetFalse,
                  OnFailure::SetFalse,
                  "STM DCM LoadConfigurationLive: get ETB_STM_DATA_FLIP failed"},
    LiveAttribute{"ETB Head Present 0",
                  nullptr,
                  &StmProperties::headPresent0,
                  {kIntegerAsFlag, kIntegerAsFlag},
                  OnWrongType::SetFalse,
                  OnFailure::SetFalse,
                  "STM DCM LoadConfigurationLive: get ETB_STM_HEAD_PRESENT_0 failed"},
    LiveAttribute{"ETB Head Present 1",
                  nullptr,
                  &StmProperties::headPresent1,
                  {kIntegerAsFlag, kIntegerAsFlag},
                  OnWrongType::SetFalse,
                  OnFailure::SetFalse,
                  "STM DCM LoadConfigurationLive: get ETB_STM_HEAD_PRESENT_1 failed"},
    LiveAttribute{"ETB Head Pointer 0",
                  &StmProperties::headPointer0,
                  nullptr,
                  {kInteger, kInteger},
                  OnWrongType::Keep,
                  OnFailure::Keep,
                  "STM DCM LoadConfigurationLive: get ETB_STM_HEAD_POINTER_0 failed"},
    LiveAttribute{"ETB Head Pointer 1",
                  &StmProperties::headPointer1,
                  nullptr,
                  {kInteger, kInteger},
                  OnWrongType::Keep,
                  OnFailure::Keep,
                  "STM DCM LoadConfigurationLive: get ETB_STM_HEAD_POINTER_1 failed"},
    LiveAttribute{"Buffer Wrapped",
                  nullptr,
                  &StmProperties::bufferWrapped,
                  {kFlag, kFlag},
                  OnWrongType::Keep,
                  OnFailure::SetFalse,
                  "STM DCM LoadConfigurationLive: get ETB_TRACE_BUFFER_FULL failed"},
    LiveAttribute{"STM_VornLib_Import",
                  nullptr,
                  &StmProperties::vornLibImport,
                  {kFlag, kFlag},
                  OnWrongType::SetFalse,
                  OnFailure::SetFalse,
                  "STM DCM LoadConfigurationLive: get STM_VORNLIB_IMPORT failed"},
    LiveAttribute{"TWP Source",
                  nullptr,
                  &StmProperties::twpProtocol,
                  {kFlag, kFlag},
                  OnWrongType::Keep,
                  OnFailure::SetFalse,
                  "STM DCM LoadConfigurationLive: get TWP_SOURCE failed"},
};

/// Asks `driver` for every attribute in turn; one record serves them all, so a query that sets no type is answered
/// with the type of the one before. Failures are logged and never end the load.
void LoadLiveAttributes(CChannelDriver& driver, StmProperties& properties);

}  // namespace Zu::Wep::Trace
