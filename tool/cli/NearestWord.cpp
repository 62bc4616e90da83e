#include "tool/cli/NearestWord.h"

#include <algorithm>
#include <limits>

namespace stmdcm {

namespace {

constexpr std::size_t kShortestStart = 3;

/// How many letters must be put in, taken out, changed or swapped with the next.
std::size_t Distance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                cost[i][j] = i + j;
                continue;
            }
            const std::size_t changed = cost[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, changed});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
            }
        }
    }
    return cost[a.size()][b.size()];
}

bool IsStart(const std::string& word, const std::string& candidate) {
    return word.size() >= kShortestStart && word.find_first_not_of('-') != std::string::npos &&
           candidate.starts_with(word);
}

}  // namespace

std::string NearestWord(const std::string& word, const std::vector<std::string>& words) {
    std::string nearest;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (const std::string& candidate : words) {
        const std::size_t distance = IsStart(word, candidate) ? 1 : Distance(word, candidate);
        const std::size_t letters = candidate.size() - std::min(candidate.size(), candidate.find_first_not_of('-'));
        if (distance < least && 3 * distance <= letters + 1) {
            nearest = candidate;
            least = distance;
        }
    }
    return nearest;
}

}  // namespace stmdcm
