#pragma once

#include <string>

/// A false from a manager has no reason with it; the plug-in's log has.

/// Has the plug-in write its log, unless the environment says how. Call it before the first manager is made.
void SwitchLogOn();

/// Where to read why a call failed; for the end of a sentence.
std::string SeeLog();
