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
    Failure& failure = found != m_cpu->attributes.end() ? found->second.failure : none;
    Play(m_scenario->delay, "GetAttribute " + CallLog::Quoted(m_cpu->name) + " " + CallLog::Quoted(name), failure, [&] {
        if (found == m_cpu->attributes.end()) {
            throw vornError(m_cpu->name + " has no attribute \"" + name + "\"", vornError::Severity_Error);
        }
        return Give(found->second, value);
    });
}

}  // namespace stmdcm_sim
