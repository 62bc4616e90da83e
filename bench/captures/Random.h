#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>

namespace stmdcm_bench {

/// Numbers that follow from a seed, the same ones with every compiler.
class Random {
  public:
    explicit Random(std::uint64_t seed) : m_engine(seed) {}

    std::size_t Below(std::size_t limit) { return static_cast<std::size_t>(m_engine() % limit); }
    bool OneIn(std::size_t number) { return Below(number) == 0; }
    template <class T, std::size_t N>
    const T& OneOf(const std::array<T, N>& values) {
        return values[Below(N)];
    }

  private:
    std::mt19937_64 m_engine;
};

}  // namespace stmdcm_bench
