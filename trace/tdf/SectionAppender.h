#pragma once

#include <string_view>

namespace Zu::Wep::Trace {

/// Appends a section, all or nothing, with the bytes that TDFHandler's SaveSectionHeader and SaveSectionData give.
/// Waits for other writers that lock the file with flock(2). Where the last section reaches past the end of the file,
/// the new one goes behind its stated end, so that a search can reach it (docs/tdf.md, "Saving"). Throws `vornError`
/// with the text of the step that failed; the file is then as it was.
void AppendSection(const char* path, const char* name, unsigned int version, std::string_view payload);

}  // namespace Zu::Wep::Trace
