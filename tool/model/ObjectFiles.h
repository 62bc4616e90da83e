#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/model/Configuration.h"

namespace stmdcm {

class Manager;
class TraceDataFile;

/// The object files of a capture. The managers' interface does not list them, so the list comes from the capture's own
/// section (docs/object-files.md).
class ObjectFiles {
  public:
    /// As recorded in the capture, with what is on disk now. Throws Failure when the capture has no such section.
    static std::vector<ObjectFile> Recorded(TraceDataFile& container, const std::string& capture);

    /// The files that a manager holds under the names in `recorded`, as they are on disk: a manager that was asked
    /// about a missing or changed file may hold another one than was recorded.
    static std::vector<ObjectFile> HeldBy(const Manager& manager, const std::vector<ObjectFile>& recorded);

    /// The entries of a section's payload, with what is on disk now.
    static std::vector<ObjectFile> Parse(std::string_view payload);
};

}  // namespace stmdcm
