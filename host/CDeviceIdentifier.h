#pragma once

#include <string>

#include "host/eTraceDataFileType.h"

namespace Zu::Wep::Trace {

/// Implemented by the host: it keeps the description of the device, and is told when a manager
/// writes or reads a configuration so that it can store its own part beside it.
/// Borrowed by the managers for their whole life and never deleted by them. Results are not looked at.
class CDeviceIdentifier {
  public:
    /// Called before a manager writes its sections (a capture) or its text (a settings file) to `fileName`. `type` is
    /// TRACE_DATA_FILE_TDF for a capture and TRACE_DATA_FILE_LOCAL for every settings file.
    virtual bool SaveToFile(const std::string& fileName, eTraceDataFileType type) = 0;

    /// Called after a manager has read the object-file list of the capture `fileName`.
    virtual bool LoadFromFile(const std::string& fileName, eTraceDataFileType type) = 0;

  protected:
    ~CDeviceIdentifier() = default;
};

}  // namespace Zu::Wep::Trace
