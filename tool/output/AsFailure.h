#pragma once

#include <exception>
#include <filesystem>
#include <new>

#include "tool/output/GuardedHome.h"

namespace stmdcm {

/// Calls `work()`. Whatever it throws is thrown as a Failure.
template <class Work>
auto AsFailure(Work work) {
    try {
        return work();
    } catch (const Failure&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw Failure("there is not enough memory");
    } catch (const std::filesystem::filesystem_error& error) {
        throw FailureOf(error);
    } catch (const std::exception& error) {
        throw Failure(error.what());
    }
}

}  // namespace stmdcm
