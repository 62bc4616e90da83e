#include "host/check/Rules.h"

#include <cstring>

#include "host/check/Json.h"
#include "trace/format/StmPropertyTable.h"

namespace stmdcm_check {

using namespace Zu::Wep::Trace;

namespace {

constexpr std::size_t kLongestCpuName = 127;
constexpr std::int32_t kNoType = 0;  ///< as the value is made: says nothing

std::string TypeFault(const StmProperty& property, std::int32_t type) {
    const std::int32_t expected =
        property.flag != nullptr ? ConfigPropertyValue::Boolean : ConfigPropertyValue::Integer;
    // An integer that is 0 or 1 sets a flag right (trace/dcm/ConfigPropertyValue.h).
    if (type == expected || type == kNoType || (property.flag != nullptr && type == ConfigPropertyValue::Integer)) {
        return "";
    }
    return "the value's type is " + std::to_string(type) + ", but the property's is " + std::to_string(expected) +
           (property.flag != nullptr ? " (Boolean)" : " (Integer)");
}

/// The bytes of the union as the host left them.
struct UnionBytes {
    explicit UnionBytes(const ConfigPropertyValue::Value& value) {
        std::memcpy(bytes, &value, sizeof bytes);
        std::memcpy(&integer, bytes, sizeof integer);
        std::memcpy(&rest, bytes + sizeof integer, sizeof rest);
        std::memcpy(&real, bytes, sizeof real);
    }

    unsigned char bytes[sizeof(ConfigPropertyValue::Value)];
    std::int32_t integer;
    std::uint32_t rest;  ///< what only a real number fills
    double real;
};

std::string FlagFault(const StmProperty& property, const UnionBytes& value) {
    const bool isByte = property.flagSource == FlagSource::BooleanByte;
    if (value.integer == 0 || value.integer == 1) {
        return "";
    }
    const bool isTaken = isByte ? value.bytes[0] != 0 : value.integer != 0;
    return std::string("the value's first four bytes are ") + std::to_string(value.integer) +
           ", neither 0 nor 1: " + (isByte ? "its first byte" : "its integer") + " counts, and the property becomes " +
           (isTaken ? "true" : "false") + "; clear the union before its boolean is set";
}

}  // namespace

std::string FaultOf(const std::string& property, const ConfigPropertyValue& value) {
    const StmProperty* known = FindStmProperty(property);
    if (known == nullptr) {
        return "";  // the result tells
    }
    const UnionBytes bytes(value.value);
    const bool isNumberOrFlag =
        value.type == ConfigPropertyValue::Integer || value.type == ConfigPropertyValue::Boolean;
    if (bytes.rest != 0 && !isNumberOrFlag) {  // of these the rest may be anything
        return "the value was set as the real number " + std::to_string(bytes.real) + ", but its integer counts, " +
               std::to_string(bytes.integer);
    }
    const std::string fault = TypeFault(*known, value.type);
    return fault.empty() && known->flag != nullptr ? FlagFault(*known, bytes) : fault;
}

std::string FaultOf(const CPUInfo* cpu) {
    if (cpu == nullptr) {
        return "";  // the result tells
    }
    if (cpu->name == nullptr) {
        return "the CPU's name is null, which it must not be";
    }
    return std::strlen(cpu->name) > kLongestCpuName ? "the CPU's name has 128 characters or more" : "";
}

std::string FaultOf(eTraceDataFileType type) {
    const int number = type;
    const bool isKnown = number >= TRACE_DATA_FILE_TDF && number <= TRACE_DATA_FILE_LOCAL;
    return isKnown ? "" : "there is no type of file " + std::to_string(number);
}

CpuAsMade::CpuAsMade(const CPUInfo* cpu) : m_cpu(cpu), m_copy(*cpu), m_name(cpu->name != nullptr ? cpu->name : "") {}

std::string CpuAsMade::Fault() const {
    const bool isSame = m_cpu->name == m_copy.name && m_cpu->deviceId == m_copy.deviceId &&
                        m_cpu->cpuId == m_copy.cpuId && (m_copy.name == nullptr || m_name == m_copy.name);
    return isSame ? ""
                  : "the CPUInfo is not what it was when the manager was made; keep it, name included, to the "
                    "manager's end";
}

}  // namespace stmdcm_check
