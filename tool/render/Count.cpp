#include "tool/render/Count.h"

#include <fmt/format.h>

#include "stmdcm/reading/Findings.h"

namespace stmdcm {

Count ChangeCount(bool hasChanges, bool isWritten) {
    if (!hasChanges) {
        return {"as asked already"};
    }
    return {isWritten ? "changed" : "would be changed"};
}

std::string InWords(const std::vector<Count>& counts) {
    std::string words;
    for (const Count& count : counts) {
        if (count.number > 0) {
            words += words.empty() ? "" : ", ";
            words += count.isNoun ? Counted(count.number, count.what) : fmt::format("{} {}", count.number, count.what);
        }
    }
    return words.empty() ? "nothing found" : words;
}

}  // namespace stmdcm
