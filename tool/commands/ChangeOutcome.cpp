#include "tool/commands/ChangeOutcome.h"

namespace stmdcm {

void Diagnose(const ChangeResult& result, const Console& console) {
    if (result.HasChanges()) {
        console.Diagnose(result.path, result.doubts);
        console.Diagnose(result.path, result.warnings);
    }
}

FileResult ResultOf(const ChangeResult& result) {
    return {StatusOf(result), {ChangeCount(result.HasChanges(), result.isWritten)}};
}

}  // namespace stmdcm
