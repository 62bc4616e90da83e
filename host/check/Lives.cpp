#include "host/check/Lives.h"

namespace stmdcm_check {

std::string UsecaseLife::Name() const {
    if (m_record == nullptr) {
        return std::string("the ") + m_kind + " scratch use case";
    }
    return std::string(m_kind) + " use case " + std::to_string(m_index) + " of " + m_record->manager.name;
}

std::string UsecaseLife::Objection() const {
    if (!m_deletedBy.empty()) {
        return "the use case was deleted by " + m_deletedBy;
    }
    if (m_record == nullptr) {
        return "";
    }
    if (!m_record->manager.ended.empty()) {
        return "the use case ended with its manager, by " + m_record->manager.ended;
    }
    return m_record->changes != m_changes ? "its record was changed since by " + m_record->changedBy : "";
}

}  // namespace stmdcm_check
