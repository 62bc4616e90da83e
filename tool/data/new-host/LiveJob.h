#pragma once

#include <string>

#include "Plugin.h"

/// Loads the settings of one CPU of the live target and shows them. Throws std::runtime_error.
void ShowLive(const Plugin& plugin, const std::string& cpuName);
