#pragma once

#include <deque>
#include <string>
#include <tuple>

#include "trace/usecase/CounterLineInfo.h"
#include "trace/usecase/FormulaInfo.h"

namespace stmdcm_check {

inline auto FieldsOf(const Zu::Wep::Trace::_CounterLineInfo& counter) { return std::tie(counter.number, counter.text); }
inline auto FieldsOf(const Zu::Wep::Trace::FormulaInfo& formula) {
    return std::tie(formula.name, formula.formula, formula.unit, formula.tagNumber, formula.ofmask);
}

inline constexpr char kOver[] = "(used after its end)";
inline void MarkOver(Zu::Wep::Trace::_CounterLineInfo& counter) { counter = {0, kOver}; }
inline void MarkOver(Zu::Wep::Trace::FormulaInfo& formula) { formula = {kOver, kOver, kOver, 0, 0}; }

/// The counters, or formulas, of a use case that the host has pointers to: plain data, which can't tell that it is
/// used. So the host gets copies. What it writes there is brought to the real ones before they are next looked at, and
/// when they end the copies say so in their texts, and are kept.
template <class Item>
class Lent {
  public:
    /// The copy for a real item, the same one as long as that is valid. Null for null.
    Item* Lend(Item* real) {
        if (real == nullptr) {
            return nullptr;
        }
        for (std::size_t i = m_firstValid; i < m_copies.size(); ++i) {
            if (m_copies[i].real == real) {
                return &m_copies[i].item;
            }
        }
        m_copies.push_back({*real, *real, real});
        return &m_copies.back().item;
    }

    void Settle() {
        for (std::size_t i = m_firstValid; i < m_copies.size(); ++i) {
            Copy& copy = m_copies[i];
            if (FieldsOf(copy.item) != FieldsOf(copy.known)) {
                *copy.real = copy.known = copy.item;
            }
        }
    }

    void End() {
        for (; m_firstValid < m_copies.size(); ++m_firstValid) {
            MarkOver(m_copies[m_firstValid].item);
            m_copies[m_firstValid].known = m_copies[m_firstValid].item;
        }
    }

    /// Whether that is a copy that has ended.
    bool IsOver(const Item* item) const {
        for (std::size_t i = 0; i < m_firstValid; ++i) {
            if (&m_copies[i].item == item) {
                return true;
            }
        }
        return false;
    }

    /// Whether the host wrote into a copy that had ended.
    bool IsWrittenTooLate() const {
        for (std::size_t i = 0; i < m_firstValid; ++i) {
            if (FieldsOf(m_copies[i].item) != FieldsOf(m_copies[i].known)) {
                return true;
            }
        }
        return false;
    }

  private:
    struct Copy {
        Item item;   ///< the host's
        Item known;  ///< as it was when it was last brought to the real one
        Item* real;
    };

    std::deque<Copy> m_copies;  ///< the addresses stay
    std::size_t m_firstValid = 0;
};

}  // namespace stmdcm_check
