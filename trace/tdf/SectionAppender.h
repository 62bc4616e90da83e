#pragma once

#include <string_view>

#include "source_utilities/FileLock.h"

namespace Zu::Wep::Trace {

/// Appends a section, all or nothing, with the bytes that TDFHandler's SaveSectionHeader and SaveSectionData give.
/// Other writers that lock the file with flock(2) are waited for while there is `patience`, which the appends of one
/// save share; then it goes on without the lock, and the first of these appends logs so. Where the last section reaches
/// past the end of the file, the new one goes behind its stated end, so that a search can reach it (docs/tdf.md,
/// "Saving"). Throws `vornError` with the text of the step that failed; the file is then as it was.
void AppendSection(const char* path, const char* name, unsigned int version, std::string_view payload,
                   ZU_WEP::LockPatience& patience);

/// The same for a section that is a save of its own.
void AppendSection(const char* path, const char* name, unsigned int version, std::string_view payload);

}  // namespace Zu::Wep::Trace
