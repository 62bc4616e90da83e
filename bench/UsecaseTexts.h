#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace stmdcm_bench {

/// A statistics-counter use case as a peer keeps it: the values that the library's own keeps.
struct PlainCounter {
    std::uint32_t number = 0;
    std::string text;
};
struct PlainFormula {
    std::string name, formula, unit;
    std::uint32_t ofmask = 0;
};
struct PlainUsecase {
    std::uint32_t id = 0;
    std::string name;
    std::int32_t jobid = -1;
    std::string probe;
    std::uint32_t sw = 0;
    bool suppress = false;
    std::vector<PlainCounter> counters;
    std::vector<PlainFormula> formulas;
};

inline constexpr std::size_t kCountersEach = 4;

/// The n-th of the use cases that every text below holds: four counters and one formula each.
PlainUsecase UsecaseNumber(std::size_t n);

/// The same `count` use cases as blocks (docs/use-case-blocks.md), as a JSON array, and as sections of an INI file, in
/// which a key may not begin with "#".
std::string UsecaseText(std::size_t count);
std::string UsecaseJson(std::size_t count);
std::string UsecaseIni(std::size_t count);

}  // namespace stmdcm_bench
