#include "host/check/Kept.h"

#include <mutex>
#include <utility>
#include <vector>

namespace stmdcm_check {

namespace {

struct KeptObjects {
    std::mutex lock;
    std::vector<std::pair<void*, void (*)(void*)>> all;
};

KeptObjects* allKept = nullptr;  ///< not destroyed with the process, see Output.cpp
std::once_flag once;

KeptObjects& AllKept() {
    std::call_once(once, [] { allKept = new KeptObjects; });
    return *allKept;
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
    delete std::exchange(allKept, nullptr);
}

}  // namespace stmdcm_check
