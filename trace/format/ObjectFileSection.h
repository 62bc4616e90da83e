#pragma once

// The payload of the section "DCM_COMMON". Its format is docs/object-files.md.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "trace/format/SectionLayout.h"

namespace Zu::Wep::Trace {

inline constexpr char kCommonSectionName[] = "DCM_COMMON";
inline constexpr int kCommonSectionVersion = 1;
inline constexpr SectionKey kCommonSection{kCommonSectionName, kCommonSectionVersion};

struct ObjectFileEntry {
    std::string name;
    std::string fileName;
    std::int64_t timeStamp = 0;  ///< seconds since 1970-01-01 UTC
};

void AppendObjectFileEntry(std::string& payload, const ObjectFileEntry& entry);

/// Hears of one entry; the texts are those in the payload.
using ObjectFileTaker = std::function<void(std::string_view name, std::string_view fileName, std::int64_t timeStamp)>;

/// Gives `take` the whole entries at the start of `payload`, in order. False when they don't fill it.
bool ReadObjectFileEntries(std::string_view payload, const ObjectFileTaker& take);

}  // namespace Zu::Wep::Trace
