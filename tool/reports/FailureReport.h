#pragma once

#include "stmdcm/Failure.h"
#include "tool/render/JsonRenderer.h"

namespace stmdcm {

/// What programs are told of work that could not be done.
namespace FailureReport {

/// In place of the command's own (docs/json.md).
Json Document(const char* command, const Failure& failure);

}  // namespace FailureReport

}  // namespace stmdcm
