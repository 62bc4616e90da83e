#include "sim/SimulatedChannelDriver.h"

#include "host/vorn/vornError.h"
#include "sim/CallLog.h"
#include "sim/Play.h"

namespace stmdcm_sim {

using Zu::Wep::Trace::ChannelAttribute;
using Zu::Wep::Vorn::vornError;

namespace {

std::string Give(const AttributeAnswer& answer, ChannelAttribute& value) {
    std::string told;
    if (answer.type) {
        value.type = *answer.type;
        told += " type " + std::to_string(value.type);
    }
    if (answer.isTextNull) {
        value.text = nullptr;
        told += " text null";
    }
    if (answer.text) {
        value.text = answer.text->c_str();
        told += " text " + CallLog::Quoted(*answer.text);
    }
    return told.empty() ? " gives nothing" : " gives" + told;
}

}  // namespace

void SimulatedChannelDriver::GetAttribute(const char* name, ChannelAttribute& value) {
    const auto found = m_cpu->attributes.find(name);
    Failure none;
    AttributeAnswer* const answer = found != m_cpu->attributes.end() ? &found->second.Next() : nullptr;
    Failure& failure = answer != nullptr ? answer->failure : none;
    Play(m_scenario->delay, "GetAttribute " + CallLog::Quoted(m_cpu->name) + " " + CallLog::Quoted(name), failure, [&] {
        if (answer == nullptr) {
            throw vornError(m_cpu->name + " has no attribute \"" + name + "\"", vornError::Severity_Error);
        }
        return Give(*answer, value);
    });
}

}  // namespace stmdcm_sim
