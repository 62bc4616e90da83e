#pragma once

// For programs that link the plug-in's code statically (StmDCM::static).

#include <cstdint>

namespace Zu::Wep::Trace {

/// The settings that an STM decoder needs, with the defaults of a fresh manager. Any 32-bit value is stored as it is.
struct StmProperties {
    std::int32_t dataCompression = 0;
    std::int32_t instructionCompression = 0;
    std::int32_t mreqInfoSel0 = 0;
    std::int32_t mreqInfoSel1 = 0;
    std::int32_t mreqInfoSel2 = 0;
    std::int32_t mreqInfoSel3 = 0;
    std::int32_t mreqInfoSel4 = 0;
    std::int32_t mreqInfoSel5 = 0;
    std::int32_t mreqInfoSel6 = 0;
    std::int32_t mreqInfoSel7 = 0;
    bool dataFlip = false;
    bool headPresent0 = false;
    bool headPresent1 = false;
    bool bufferWrapped = false;
    bool twpProtocol = false;
    bool needsPreprocess = true;
    std::int32_t headPointer0 = 0;
    std::int32_t headPointer1 = 0;
    std::int32_t traceClockHz = 1;
    std::int32_t targetClockHz = 1;
    std::int32_t targetPins = 4;
    std::int32_t ocpwpProbeId = 0;
    std::int32_t stpVersion = 1;
    std::int32_t atbId = 1;
    bool vornLibImport = false;
    std::int32_t ctsetEventGroupNum = 0;
};

}  // namespace Zu::Wep::Trace
