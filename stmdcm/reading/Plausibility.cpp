#include "stmdcm/reading/Plausibility.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/Words.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::int32_t kTracePortWidths[] = {1, 2, 4, 8, 16, 32};
constexpr std::int32_t kLastStpVersion = 2;
constexpr std::int32_t kLastAtbId = 0x6F;

consteval std::size_t At(std::string_view name) {
    for (std::size_t i = 0; i < kStmProperties.size(); ++i) {
        if (name == kStmProperties[i].name) {
            return i;
        }
    }
    throw std::logic_error("no such property");
}

struct Rule {
    const FindingKind* kind;
    std::size_t property;
    std::size_t flag;  ///< that goes with it; the property itself where none does
    bool (*isDoubtful)(std::int32_t value, std::int32_t flag);
    const char* why;
    const char* effect;
};

constexpr bool IsNoClock(std::int32_t hertz, std::int32_t /*flag*/) { return hertz <= 0; }
constexpr bool IsDefaultClock(std::int32_t hertz, std::int32_t /*flag*/) {
    return hertz == StmProperties{}.targetClockHz;
}
constexpr bool IsNoPort(std::int32_t pins, std::int32_t /*flag*/) {
    return std::find(std::begin(kTracePortWidths), std::end(kTracePortWidths), pins) == std::end(kTracePortWidths);
}
constexpr bool IsNoStpVersion(std::int32_t version, std::int32_t /*flag*/) {
    return version < 1 || version > kLastStpVersion;
}
constexpr bool IsNoAtbId(std::int32_t id, std::int32_t /*flag*/) { return id < 1 || id > kLastAtbId; }
constexpr bool IsUnannounced(std::int32_t pointer, std::int32_t isPresent) { return pointer != 0 && isPresent == 0; }

constexpr char kNoClock[] = "no clock runs at this rate";
constexpr char kNoTimes[] = "kept as it is; times can't be computed with it";
constexpr char kNeverSet[] = "this is the default, so it seems that nobody has set it";
constexpr char kWrongTimes[] = "kept as it is; times are computed with it";
constexpr char kNoFlag[] = "the flag that it is present is not set";
constexpr char kNotUsed[] = "kept as it is; by the flag a decoder does not use it";

constexpr std::size_t kTraceClock = At("STM_DTC_fprocess_clock_hz");
constexpr std::size_t kTargetClock = At("STM_DTC_target_clock_hz");
constexpr std::size_t kPins = At("STM_DTC_target_pins");
constexpr std::size_t kStpVersion = At("STM_STP_Version");
constexpr std::size_t kAtbId = At("STM_ATB_Id");

/// Reasons and sources stand in docs/check.md, "Values".
constexpr Rule kRules[] = {
    {&Kind("P-CLOCK"), kTraceClock, kTraceClock, IsNoClock, kNoClock, kNoTimes},
    {&Kind("P-CLOCK"), kTargetClock, kTargetClock, IsNoClock, kNoClock, kNoTimes},
    {&Kind("P-CLOCK-DEFAULT"), kTraceClock, kTraceClock, IsDefaultClock, kNeverSet, kWrongTimes},
    {&Kind("P-CLOCK-DEFAULT"), kTargetClock, kTargetClock, IsDefaultClock, kNeverSet, kWrongTimes},
    {&Kind("P-PINS"), kPins, kPins, IsNoPort, "trace ports have 1, 2, 4, 8, 16 or 32 pins",
     "kept as it is; a decoder can't take the port's data apart with it"},
    {&Kind("P-STP-VERSION"), kStpVersion, kStpVersion, IsNoStpVersion, "there are the versions 1 and 2 of STP",
     "kept as it is; no decoder knows this version"},
    {&Kind("P-ATB-ID"), kAtbId, kAtbId, IsNoAtbId, "trace sources have the ids 1 to 111 (0x6F)",
     "kept as it is; no trace data carries this id"},
    {&Kind("P-HEAD-POINTER"), At("HEAD_Pointer_0"), At("HEAD_Present_0"), IsUnannounced, kNoFlag, kNotUsed},
    {&Kind("P-HEAD-POINTER"), At("HEAD_Pointer_1"), At("HEAD_Present_1"), IsUnannounced, kNoFlag, kNotUsed},
};

std::int32_t ValueOf(const StmProperties& properties, std::size_t index) {
    return NumberOf(properties, kStmProperties[index]);
}

bool IsDoubtful(const Rule& rule, const StmProperties& properties) {
    return rule.isDoubtful(ValueOf(properties, rule.property), ValueOf(properties, rule.flag));
}

std::string What(const Rule& rule, const StmProperties& properties) {
    const StmProperty& row = kStmProperties[rule.property];
    return fmt::format("{} is {}: {}", row.name, InWords(PropertyOf(row, NumberOf(properties, row))), rule.why);
}

}  // namespace

std::vector<std::string> NewWarnings(const StmProperties& old, const StmProperties& changed) {
    std::vector<std::string> warnings;
    for (const Rule& rule : kRules) {
        const bool isNew = ValueOf(old, rule.property) != ValueOf(changed, rule.property);
        if (isNew && rule.kind->severity == Severity::Warning && IsDoubtful(rule, changed)) {
            warnings.push_back(fmt::format("{}; {}", What(rule, changed), rule.effect));
        }
    }
    return warnings;
}

void TellDoubtfulValues(const StmProperties& properties, const OriginOf& originOf, Findings& findings) {
    for (const Rule& rule : kRules) {
        const auto origin = originOf(rule.property);
        if (!origin || !originOf(rule.flag)) {
            continue;
        }
        if (IsDoubtful(rule, properties)) {
            findings.Add(*rule.kind, origin->place, What(rule, properties), rule.effect);
        } else if (rule.kind == &Kind("P-CLOCK") && !origin->fits) {
            findings.Add(
                *rule.kind, origin->place,
                fmt::format("the rate that is stated for {} does not fit 32 bits", kStmProperties[rule.property].name),
                "kept as something else; times are computed with that");
        }
    }
}

}  // namespace stmdcm
