#pragma once

#include <string>

#include "host/check/Json.h"

namespace stmdcm_check {

// What the checker says (docs/host-checker.md). May be called from any thread; `errno` stays as it was.

/// Writes a sentence on standard error or into the file that STMDCM_CHECK_LOG names, one that differs in the
/// numbers of calls alone only once, and each time into the trace. With STMDCM_CHECK_ABORT the process ends there.
void Tell(const std::string& sentence);

/// Appends a line of the kind `event`, with the thread and the time added, to the file that STMDCM_CHECK_TRACE names.
/// None where it names none.
void Trace(const char* event, const JsonObject& members);

}  // namespace stmdcm_check
