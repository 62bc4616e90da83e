#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Configuration.h"

namespace stmdcm {

class Manager;
struct PluginSession;

/// Takes a configuration out of a manager, through the plug-in's interfaces alone. The object files, which those don't
/// list, are left out.
Configuration ReadConfiguration(const Manager& manager);

/// The files that a manager holds under the names in `recorded`, as they are on disk: a manager that was asked about a
/// missing or changed file may hold another one than was recorded.
std::vector<ObjectFile> ObjectFilesHeldBy(const Manager& manager, const std::vector<ObjectFile>& recorded);

/// Has the manager save into a capture of the session's own. Gives its path; throws Failure.
std::string SaveIntoCapture(PluginSession& session, Manager& manager);

}  // namespace stmdcm
