#pragma once

// What can fail in a trace data file, as it is told to the host. The texts are fixed, odd blanks included.

#include <string>

namespace Zu::Wep::Trace::TDFError {

inline constexpr const char* CreateNullName = "Null file name to create TDF.";
inline constexpr const char* Extension = "TDF file extension must be .tdf.";
inline constexpr const char* Create = "Could not create TDF file as specified.";
inline constexpr const char* Open = "Could not open TDF file as specified.";
inline constexpr const char* Format = "Invalid TDF format.";

inline constexpr const char* SaveName = "File name passed to save file is not valid.";
inline constexpr const char* LoadFileName = "File name passed to load file is not valid.";
inline constexpr const char* LoadName = "File name passed to load is not valid.";

inline constexpr const char* WriteIdentifier = "Write error -  TDF file identifier.";
inline constexpr const char* WriteHeaderSize = "Write error -  TDF section header size.";
inline constexpr const char* WriteNameVersion = "Write error -  TDF section name and version.";
inline constexpr const char* WriteLength = "Write error - size of TDF header.";
inline constexpr const char* WriteCorrupted = "Write error - section data corrupted.";
inline constexpr const char* ReadLength = "Write I/O error - unable to determine section length.";
inline constexpr const char* WriteData = "Write I/O error - unable to write section data.";
inline constexpr const char* HeaderOffset = "Section header offset to save data is not valid.";
inline constexpr const char* NoData = "No data to write TDF.";

inline constexpr const char* NoBuffer = "No buffer allocated to load section data.";
inline constexpr const char* SectionSizeNotFound = "Section size cannot be located in the file.";
/// Follows the section's name.
inline constexpr const char* SectionNotFound = " section cannot be located in the file.";
inline constexpr const char* ReadCorrupted = "Read I/O error - section data corrupted.";

/// Throws `vornError` of severity 2.
[[noreturn]] void Throw(const std::string& text);

inline void ThrowUnless(bool condition, const char* text) {
    if (!condition) {
        Throw(text);
    }
}

}  // namespace Zu::Wep::Trace::TDFError
