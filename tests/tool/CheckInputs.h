#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stmdcm/capture/Container.h"
#include "stmdcm/pins/PinSection.h"
#include "stmdcm/reading/Reading.h"
#include "tests/support/SectionList.h"
#include "trace/format/ObjectFileSection.h"
#include "trace/format/SettingsText.h"

namespace stmdcm {

/// The identifiers of what was found, each once, in the order of the table; but for those of what nearly all texts here
/// have: blocks that leave fields and counters out.
inline std::string Identifiers(const Reading& report) {
    std::string identifiers;
    for (const FindingKind& kind : kFindingKinds) {
        const bool isUsual = &kind == &Kind("U-NOT-SET") || &kind == &Kind("U-NO-COUNTER");
        if (report.findings.Count(kind) > 0 && !isUsual) {
            identifiers += (identifiers.empty() ? "" : " ") + std::string(kind.id);
        }
    }
    return identifiers;
}

/// The lines of all properties, with their defaults but for the clocks.
inline std::string AllProperties() {
    Zu::Wep::Trace::StmProperties properties;
    properties.traceClockHz = properties.targetClockHz = 1000000;
    std::string text;
    Zu::Wep::Trace::AppendPropertyLines(properties, text);
    return text;
}

/// The parts of a capture; those not set are as a manager writes them by default.
struct CaptureParts {
    std::string settings = AllProperties();
    std::string device = "board=7\n";
    std::string common = {};

    std::string Bytes() const {
        return "TDF2" + MakeSection("DEVID", 1, device) + MakeSection("DCM_COMMON", 1, common) +
               MakeSection("STMDECODERINFO", 1, settings);
    }
};

/// A file with something to find in it, or nothing.
struct CheckInput {
    std::string name;
    std::string bytes;
    std::string expected;  ///< every identifier that it gives, in the order of the table
};

/// Such a file for nearly every kind of finding; the others take a file that is larger or none.
std::vector<CheckInput> CheckInputs();

inline std::string ObjectFileEntryBytes(const std::string& name, const std::string& path, std::int64_t time) {
    std::string bytes;
    Zu::Wep::Trace::AppendObjectFileEntry(bytes, {name, path, time});
    return bytes;
}

}  // namespace stmdcm
