#include "tool/reports/FailureReport.h"

#include <string>

namespace stmdcm {

Json FailureReport::Document(const char* command, const Failure& failure) {
    return JsonRenderer::Document(command,
                                  {{"failure",
                                    {{"file", JsonRenderer::OrNull(failure.File())},
                                     {"offset", failure.Offset() ? Json(std::to_string(*failure.Offset())) : nullptr},
                                     {"cause", failure.Cause()}}}});
}

}  // namespace stmdcm
