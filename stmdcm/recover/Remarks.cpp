#include "stmdcm/recover/Remarks.h"

#include <utility>

namespace stmdcm {

const char* RemarkId(RemarkKind kind) {
    constexpr const char* kIds[] = {"identifier", "dropped",      "cut_short",      "length_corrected",
                                    "split",      "odd_name",     "hidden_section", "capture",
                                    "over_limit", "unreachable",  "missing",        "empty",
                                    "finding",    "not_loadable", "mismatch",       "not_kept"};
    return kIds[static_cast<std::size_t>(kind)];
}

void Remarks::Add(Remark remark) {
    m_doubtCount += remark.kind != RemarkKind::InnerCapture ? 1 : 0;
    if (m_count++ < kMaxListed) {
        m_listed.push_back(std::move(remark));
    }
}

}  // namespace stmdcm
