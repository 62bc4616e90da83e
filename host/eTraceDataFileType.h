#pragma once

#include "trace/Interface.h"

namespace Zu::Wep::Trace {

/// The kind of store that a file name given to a manager names.
enum eTraceDataFileType : int {
    TRACE_DATA_FILE_TDF = 0,     ///< a capture (docs/tdf.md): load and save
    TRACE_DATA_FILE_LIVE = 1,    ///< a settings file in the trace settings directory: load and save
    TRACE_DATA_FILE_TYPE_2 = 2,  ///< saves as TRACE_DATA_FILE_LIVE does, can't be loaded
    TRACE_DATA_FILE_TYPE_3 = 3,  ///< neither
    TRACE_DATA_FILE_LOCAL = 4,  ///< loads any settings text (docs/settings-text.md), saves as TRACE_DATA_FILE_LIVE does
};

}  // namespace Zu::Wep::Trace
