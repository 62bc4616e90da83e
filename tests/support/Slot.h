#pragma once

#include <cstddef>
#include <cstring>

namespace stmdcm_test {

/// Calls through a slot of an object's table, as a host compiled elsewhere does: no header's order can hide a slip.
template <class Result, class... Args>
Result Slot(void* object, std::size_t slot, Args... args) {
    void** table = nullptr;
    std::memcpy(&table, object, sizeof table);
    return reinterpret_cast<Result (*)(void*, Args...)>(table[slot])(object, args...);
}

}  // namespace stmdcm_test
