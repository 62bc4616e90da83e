#include "sim/Failure.h"

#include <stdexcept>

#include "host/vorn/vornError.h"

namespace stmdcm_sim {

using Zu::Wep::Vorn::vornError;

bool Failure::Strike(const std::string& call) {
    if (m_times == 0) {
        return false;
    }
    if (m_times != kAlways) {
        --m_times;
    }
    const std::string message = call + " fails, as the scenario has it";
    switch (m_kind) {
        case Kind::VornError:
            throw vornError(message, vornError::Severity_Error);
        case Kind::StdException:
            throw std::runtime_error(message);
        case Kind::Integer:
            throw 1;
        case Kind::Nothing:
            break;
    }
    return true;
}

}  // namespace stmdcm_sim
