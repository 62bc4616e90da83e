#pragma once

#include <utility>

namespace stmdcm_check {

/// Takes over an object until FreeKept.
void Keep(void* object, void (*free)(void*));

/// Makes an object that the host gets a pointer to. It is there until the checker is unloaded, whatever the host does
/// with it, so that a call that comes too late can be told.
template <class Object, class... Args>
Object* MakeKept(Args&&... args) {
    auto* const object = ::new Object(std::forward<Args>(args)...);
    Keep(object, [](void* kept) {
        static_cast<Object*>(kept)->~Object();
        ::operator delete(kept);
    });
    return object;
}

/// Nobody may have a pointer to a kept object from now on, and nothing is told any more: what tells is kept, too.
void FreeKept();

}  // namespace stmdcm_check
