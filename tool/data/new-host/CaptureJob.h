#pragma once

#include <string>

#include "Plugin.h"

/// Shows what `capture` was recorded with, changes its pin count, saves that into the new capture `copy`, and reads it
/// back from there. Throws std::runtime_error.
void ChangeCapture(const Plugin& plugin, const std::string& capture, const std::string& copy);
