#pragma once

// Trace data files, see docs/tdf.md: all that a host needs for them.

#include <cstdio>

#include "host/vorn/vornError.h"
#include "trace/Interface.h"
#include "trace/tdf/FileSize.h"

namespace Zu::Wep::Trace {

/// Reads and writes the sections of a trace data file. Holds nothing: every operation that takes a path opens the file,
/// works and closes it again before it returns or throws, so that any number of instances may be used, from any thread;
/// two writers on the same file are not guarded against each other.
///
/// Operations that give `void` report every failure by a `Zu::Wep::Vorn::vornError` of severity 2, the others by their
/// result. Sizes, offsets and lengths are in bytes. A null path is a file that is not there, a null name is the empty
/// one. A section is known by name and version; where several have the same, every operation finds the first in the
/// file.
class STMDCM_EXPORT TDFHandler {
  public:
    TDFHandler();
    ~TDFHandler();  // NOLINT(performance-trivially-destructible): hosts link to it

    /// Creates the file, or empties it, and writes the identifier. The path must end in ".tdf", in any case.
    void CreateTDFFile(const char* path);
    /// True when the path ends in ".tdf" and names a readable file that begins with the identifier.
    bool ISTDF(const char* path);
    bool IsFileAvailable(const char* path);
    /// `extension` comes without its dot; case does not count.
    bool HasExtension(const char* path, const char* extension);

    /// Writes version, name length and name at the stream's position.
    bool SaveNameVersion(std::FILE* stream, const char* name, unsigned int version);
    /// Appends an empty section to an existing file, which may be of any kind; `headerOffset` is then its place in it.
    void SaveSectionHeader(const char* path, const char* name, unsigned int version, unsigned int& headerOffset);
    /// Appends to the section at `headerOffset`, which must be the last one: what lies behind it is overwritten.
    /// `name` is not looked at. `sectionLength` becomes the length of the whole section, header included.
    void SaveSectionData(const char* path, const char* name, unsigned int headerOffset, const void* data,
                         unsigned int elementSize, unsigned int count, unsigned int& sectionLength);

    /// Searches from the stream's position, which must be a section's first byte. When found the stream stands at the
    /// payload's first byte, otherwise anywhere. The stream must be able to seek and stays the caller's.
    bool SeekSectionData(std::FILE* stream, const char* name, unsigned int version, unsigned int& payloadLength);
    /// The stated payload size, which need not lie inside the file. Takes a file of any extension.
    void GetSectionDataLengthInBytes(const char* path, const char* name, unsigned int version,
                                     unsigned int& payloadLength);
    /// Fills the caller's buffer from the payload. `bytesRead` is smaller than asked where payload or file end before.
    void LoadSectionData(const char* path, const char* name, unsigned int version, void* buffer,
                         unsigned int bufferSize, unsigned int& bytesRead);
    /// `position` is the payload's offset in the file; it is untouched when this throws.
    void GetSectionDataPosition(const char* path, const char* name, unsigned int version, unsigned int& position,
                                unsigned int& payloadLength);
};

}  // namespace Zu::Wep::Trace
