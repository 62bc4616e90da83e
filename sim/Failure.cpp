#include "sim/Failure.h"

#include <stdexcept>

#include "host/vorn/vornError.h"

namespace stmdcm_sim {

using Zu::Wep::Vorn::vornError;

bool Failure::Strike(const std::string& call) {
    if (m_steps.empty()) {
        return false;
    }
    const Step step = m_steps.front();
    if (step.times != kAlways && --m_steps.front().times == 0) {
        m_steps.pop_front();
    }
    const std::string message = step.message.value_or(call + " fails, as the scenario has it");
    switch (step.kind) {
        case Kind::VornError:
            throw vornError(message, vornError::Severity_Error);
        case Kind::StdException:
            throw std::runtime_error(message);
        case Kind::Integer:
            throw 1;
        case Kind::Nothing:
            return true;
        case Kind::None:
            break;
    }
    return false;
}

}  // namespace stmdcm_sim
