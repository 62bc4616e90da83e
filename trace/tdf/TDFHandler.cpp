#include "trace/tdf/TDFHandler.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "trace/format/SectionLayout.h"
#include "trace/format/SectionScanner.h"
#include "trace/tdf/TDFError.h"
#include "trace/tdf/TDFFile.h"

namespace Zu::Wep::Trace {

using TDFError::ThrowUnless;
using ZU_WEP::PosixFile;

namespace {

/// Version, name length and name: what follows the length field.
std::string EncodeNameVersion(const char* name, unsigned int version) {
    return EncodeSectionStart(0, name != nullptr ? name : "", version).substr(SectionHeader::kLengthSize);
}

std::uint32_t ReadLengthField(const PosixFile& file, std::uint64_t headerOffset) {
    std::array<char, SectionHeader::kLengthSize> bytes{};
    ThrowUnless(file.ReadAt(headerOffset, bytes.data(), bytes.size()) == bytes.size(), TDFError::kReadLength);
    return DecodeSectionLength(bytes.data());
}

void WriteLengthField(const PosixFile& file, std::uint64_t headerOffset, std::uint32_t length) {
    ThrowUnless(file.WriteAt(headerOffset, {EncodeSectionLength(length)}), TDFError::kWriteLength);
}

/// The checks that LoadSectionData and GetSectionDataPosition begin with.
void CheckPathToLoad(const char* path) {
    ThrowUnless(CanOpenForReading(path), TDFError::kLoadName);
    ThrowUnless(HasExtension(path, kTDFExtension), TDFError::kExtension);
}

SectionInfo RequireNamedSection(const PosixFile& file, const char* name, unsigned int version) {
    return RequireSection(file, name, version, std::string(name != nullptr ? name : "") + TDFError::kSectionNotFound);
}

}  // namespace

TDFHandler::TDFHandler() = default;

TDFHandler::~TDFHandler() = default;

void TDFHandler::CreateTDFFile(const char* path) {
    ThrowUnless(path != nullptr, TDFError::kCreateNullName);
    ThrowUnless(HasExtension(path, kTDFExtension), TDFError::kExtension);
    PosixFile file = PosixFile::OpenAtOnce(path, O_WRONLY | O_CREAT | O_TRUNC);
    ThrowUnless(file.IsOpen(), TDFError::kCreate);
    ThrowUnless(file.Write(kTDFIdentifier) && file.Close(), TDFError::kWriteIdentifier);
}

bool TDFHandler::ISTDF(const char* path) {
    if (!HasExtension(path, kTDFExtension)) {
        return false;
    }
    const PosixFile file = PosixFile::OpenAtOnce(path, O_RDONLY);
    return file.IsOpen() && HasIdentifier(file);
}

bool TDFHandler::IsFileAvailable(const char* path) { return CanOpenForReading(path); }

bool TDFHandler::HasExtension(const char* path, const char* extension) { return Trace::HasExtension(path, extension); }

bool TDFHandler::SaveNameVersion(std::FILE* stream, const char* name, unsigned int version) {
    if (stream == nullptr) {
        return false;
    }
    const std::string bytes = EncodeNameVersion(name, version);
    return std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
}

void TDFHandler::SaveSectionHeader(const char* path, const char* name, unsigned int version,
                                   unsigned int& headerOffset) {
    headerOffset = 0;
    CheckPathToSave(path);
    PosixFile file = OpenForUpdate(path);
    const std::uint64_t offset = file.Size().value_or(0);
    const std::string nameVersion = EncodeNameVersion(name, version);
    const std::uint64_t length = SectionHeader::kLengthSize + nameVersion.size();
    ThrowUnless(offset <= kMaxFileSize && length <= kMaxFileSize - offset, TDFError::kHeaderOffset);

    headerOffset = static_cast<unsigned int>(offset);
    ThrowUnless(file.WriteAt(offset, {EncodeSectionLength(0)}), TDFError::kWriteHeaderSize);
    ThrowUnless(file.WriteAt(offset + SectionHeader::kLengthSize, {nameVersion}), TDFError::kWriteNameVersion);
    WriteLengthField(file, offset, static_cast<std::uint32_t>(length));
    ThrowUnless(file.Close(), TDFError::kWriteLength);
}

void TDFHandler::SaveSectionData(const char* path, const char* /*name*/, unsigned int headerOffset, const void* data,
                                 unsigned int elementSize, unsigned int count, unsigned int& sectionLength) {
    sectionLength = 0;
    CheckPathToSave(path);
    ThrowUnless(headerOffset >= kFirstSectionOffset, TDFError::kHeaderOffset);
    ThrowUnless(data != nullptr, TDFError::kNoData);
    PosixFile file = OpenForUpdate(path);
    const std::uint64_t end = std::uint64_t{headerOffset} + ReadLengthField(file, headerOffset);
    const std::uint64_t size = std::uint64_t{elementSize} * count;
    ThrowUnless(end <= kMaxFileSize && size <= kMaxFileSize - end, TDFError::kHeaderOffset);

    // Elements without a size count as elements that were not written.
    ThrowUnless(elementSize != 0 || count == 0, TDFError::kWriteData);
    ThrowUnless(file.WriteAt(end, {std::string_view(static_cast<const char*>(data), size)}), TDFError::kWriteData);
    sectionLength = static_cast<unsigned int>(end + size - headerOffset);
    WriteLengthField(file, headerOffset, sectionLength);
    ThrowUnless(file.Close(), TDFError::kWriteCorrupted);
}

bool TDFHandler::SeekSectionData(std::FILE* stream, const char* name, unsigned int version,
                                 unsigned int& payloadLength) {
    payloadLength = 0;
    const off_t position = stream != nullptr ? ::ftello(stream) : -1;
    if (position < 0) {
        return false;
    }
    StreamSectionSource source(stream);
    SectionScanner scanner(source, static_cast<std::uint64_t>(position));
    SectionInfo section;
    const SectionKey wanted = KeyOf(name, version);
    if (!scanner.Find({&wanted, 1}, section) ||
        ::fseeko(stream, static_cast<off_t>(section.payloadOffset), SEEK_SET) != 0) {
        return false;
    }
    payloadLength = section.payloadLength;
    return true;
}

void TDFHandler::GetSectionDataLengthInBytes(const char* path, const char* name, unsigned int version,
                                             unsigned int& payloadLength) {
    payloadLength = 0;
    ThrowUnless(CanOpenForReading(path), TDFError::kLoadFileName);
    // Alone of its kind it does not look at the extension (docs/tdf.md).
    const PosixFile file = OpenForReading(path);
    payloadLength = RequireSection(file, name, version, TDFError::kSectionSizeNotFound).payloadLength;
}

void TDFHandler::LoadSectionData(const char* path, const char* name, unsigned int version, void* buffer,
                                 unsigned int bufferSize, unsigned int& bytesRead) {
    bytesRead = 0;
    CheckPathToLoad(path);
    ThrowUnless(buffer != nullptr && bufferSize != 0, TDFError::kNoBuffer);
    const PosixFile file = OpenForReading(path);
    const SectionInfo section = RequireNamedSection(file, name, version);
    const auto count = file.ReadAt(section.payloadOffset, buffer, std::min(bufferSize, section.payloadLength));
    ThrowUnless(count.has_value(), TDFError::kReadCorrupted);
    bytesRead = static_cast<unsigned int>(*count);
}

void TDFHandler::GetSectionDataPosition(const char* path, const char* name, unsigned int version,
                                        unsigned int& position, unsigned int& payloadLength) {
    CheckPathToLoad(path);
    const PosixFile file = OpenForReading(path);
    payloadLength = 0;
    const SectionInfo section = RequireNamedSection(file, name, version);
    position = static_cast<unsigned int>(section.payloadOffset);
    payloadLength = section.payloadLength;
}

}  // namespace Zu::Wep::Trace
