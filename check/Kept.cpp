#include "check/Kept.h"

#include <mutex>
#include <utility>
#include <vector>

namespace stmdcm_check {

namespace {

struct KeptObjects {
    std::mutex lock;
    std::vector<std::pair<void*, void (*)(void*)>> all;
};

/// Never destroyed, see Output.cpp.
KeptObjects& AllKept() {
    static auto* const kept = new KeptObjects;
    return *kept;
}

}  // namespace

void Keep(void* object, void (*free)(void*)) {
    KeptObjects& kept = AllKept();
    const std::lock_guard lock(kept.lock);
    kept.all.emplace_back(object, free);
}

void FreeKept() {
    for (const auto& [object, free] : std::exchange(AllKept().all, {})) {
        free(object);
    }
}

}  // namespace stmdcm_check
