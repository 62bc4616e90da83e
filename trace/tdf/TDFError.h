#pragma once

// What can fail in a trace data file, as it is told to the host. The texts are fixed, odd blanks included.

#include <string>

namespace Zu::Wep::Trace::TDFError {

inline constexpr const char* kCreateNullName = "Null file name to create TDF.";
inline constexpr const char* kExtension = "TDF file extension must be .tdf.";
inline constexpr const char* kCreate = "Could not create TDF file as specified.";
inline constexpr const char* kOpen = "Could not open TDF file as specified.";
inline constexpr const char* kFormat = "Invalid TDF format.";

inline constexpr const char* kSaveName = "File name passed to save file is not valid.";
inline constexpr const char* kLoadFileName = "File name passed to load file is not valid.";
inline constexpr const char* kLoadName = "File name passed to load is not valid.";

inline constexpr const char* kWriteIdentifier = "Write error -  TDF file identifier.";
inline constexpr const char* kWriteHeaderSize = "Write error -  TDF section header size.";
inline constexpr const char* kWriteNameVersion = "Write error -  TDF section name and version.";
inline constexpr const char* kWriteLength = "Write error - size of TDF header.";
inline constexpr const char* kWriteCorrupted = "Write error - section data corrupted.";
inline constexpr const char* kReadLength = "Write I/O error - unable to determine section length.";
inline constexpr const char* kWriteData = "Write I/O error - unable to write section data.";
inline constexpr const char* kHeaderOffset = "Section header offset to save data is not valid.";
inline constexpr const char* kNoData = "No data to write TDF.";

inline constexpr const char* kNoBuffer = "No buffer allocated to load section data.";
inline constexpr const char* kSectionSizeNotFound = "Section size cannot be located in the file.";
/// Follows the section's name.
inline constexpr const char* kSectionNotFound = " section cannot be located in the file.";
inline constexpr const char* kReadCorrupted = "Read I/O error - section data corrupted.";

/// Throws `vornError` of severity 2.
[[noreturn]] void Throw(const std::string& text);

inline void ThrowUnless(bool condition, const char* text) {
    if (!condition) {
        Throw(text);
    }
}

}  // namespace Zu::Wep::Trace::TDFError
