#include "trace/tdf/SectionReader.h"

#include <algorithm>
#include <cstdint>

#include "trace/tdf/TDFError.h"
#include "trace/tdf/TDFFile.h"

namespace Zu::Wep::Trace {

std::string ReadSection(const char* path, const char* name, unsigned int version) {
    TDFError::ThrowUnless(CanOpenForReading(path), TDFError::LoadFileName);
    const ZU_WEP::PosixFile file = OpenForReading(path);
    const SectionInfo section = RequireSection(file, name, version, TDFError::SectionSizeNotFound);
    TDFError::ThrowUnless(section.payloadLength != 0, TDFError::NoBuffer);

    const std::uint64_t size = file.Size().value_or(0);
    const std::uint64_t held = size - std::min(size, section.payloadOffset);
    std::string payload(std::min<std::uint64_t>(section.payloadLength, held), '\0');
    const auto count = file.ReadAt(section.payloadOffset, payload.data(), payload.size());
    TDFError::ThrowUnless(count.has_value(), TDFError::ReadCorrupted);
    payload.resize(*count);  // fewer when the file was cut short meanwhile
    return payload;
}

}  // namespace Zu::Wep::Trace
