#pragma once

namespace stmdcm_bench {

/// Loads 64 MiB of use cases in a process of its own and prints its memory; whether it is within its limit.
bool PrintMemoryOfLoad();

}  // namespace stmdcm_bench
