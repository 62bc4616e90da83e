#pragma once

// Opening trace data files, with the checks and errors that all operations share.

#include <optional>
#include <string>

#include "source_utilities/PosixFile.h"
#include "trace/format/SectionScanner.h"

namespace Zu::Wep::Trace {

inline constexpr char kTDFExtension[] = "tdf";

/// Whether the path ends in a dot and `extension`, in any case. Null has none, and is none.
bool HasExtension(const char* path, const char* extension);

/// Whether the path names a file that can be opened for reading.
bool CanOpenForReading(const char* path);

/// Reads the identifier at the descriptor's position, the start of a file just opened: a pipe has no other. Gives
/// whether it is there; nothing, and `errno`, when it can't be read.
std::optional<bool> ReadIdentifier(const ZU_WEP::PosixFile& file);

inline bool HasIdentifier(const ZU_WEP::PosixFile& file) { return ReadIdentifier(file).value_or(false); }

/// Reads it again, from the start of the file, which can seek.
std::optional<bool> StillHasIdentifier(const ZU_WEP::PosixFile& file);

/// Throws where there is no file, or none that may be read: writing never creates one.
void CheckPathToSave(const char* path);

/// Opens a file for reading and writing; throws.
ZU_WEP::PosixFile OpenForUpdate(const char* path);

/// Opens a file for reading and checks its identifier; throws.
ZU_WEP::PosixFile OpenForReading(const char* path);

/// A null name is the empty one.
inline SectionKey KeyOf(const char* name, unsigned int version) { return {name != nullptr ? name : "", version}; }

/// Finds a section; throws `notFoundText`.
SectionInfo RequireSection(const ZU_WEP::PosixFile& file, const char* name, unsigned int version,
                           const std::string& notFoundText);

}  // namespace Zu::Wep::Trace
