// The exported face of the container, which may be used from any thread: traced and passed on to the real library.

#include <utility>

#include "host/check/HostCall.h"
#include "host/check/RealLibrary.h"
#include "trace/tdf/TDFHandler.h"

namespace stmdcm_check {

namespace {

/// Calls the real library's function of that name. `given(call)` tells what it gave apart from its result.
template <class Result, class... Args>
Result Forward(const char* symbol, const char* operation, const JsonObject& arguments, auto given, Args... args) {
    HostCall call(operation, "", arguments, HostCall::Kind::Free);
    const auto real = RealLibrary::Symbol<Result(Args...)>(symbol);
    return call.Run([&]() -> Result {
        if constexpr (std::is_void_v<Result>) {
            real(args...);
            given(call.Given());
        } else {
            Result result = real(args...);
            given(call.Given());
            return result;
        }
    });
}

constexpr auto Nothing = [](JsonObject& /*out*/) {};

JsonObject Section(const char* path, const char* name, unsigned int version) {
    return JsonObject().Add("path", path).Add("name", name).Add("version", version);
}

}  // namespace

}  // namespace stmdcm_check

namespace Zu::Wep::Trace {

using stmdcm_check::Forward;
using stmdcm_check::JsonObject;
using stmdcm_check::Nothing;
using stmdcm_check::Section;

// As the compiler names the members of TDFHandler: what `nm -D` shows of both libraries is the same.
#define STMDCM_HANDLER(member) "_ZN2Zu3Wep5Trace10TDFHandler" member

unsigned int FileSize(const char* path) {
    return Forward<unsigned int>("_ZN2Zu3Wep5Trace8FileSizeEPKc", "FileSize", JsonObject().Add("path", path), Nothing,
                                 path);
}

TDFHandler::TDFHandler() { Forward<void>(STMDCM_HANDLER("C1Ev"), "TDFHandler", {}, Nothing, this); }

TDFHandler::~TDFHandler() { Forward<void>(STMDCM_HANDLER("D1Ev"), "~TDFHandler", {}, Nothing, this); }

void TDFHandler::CreateTDFFile(const char* path) {
    Forward<void>(STMDCM_HANDLER("13CreateTDFFileEPKc"), "CreateTDFFile", JsonObject().Add("path", path), Nothing, this,
                  path);
}

bool TDFHandler::ISTDF(const char* path) {
    return Forward<bool>(STMDCM_HANDLER("5ISTDFEPKc"), "ISTDF", JsonObject().Add("path", path), Nothing, this, path);
}

bool TDFHandler::IsFileAvailable(const char* path) {
    return Forward<bool>(STMDCM_HANDLER("15IsFileAvailableEPKc"), "IsFileAvailable", JsonObject().Add("path", path),
                         Nothing, this, path);
}

bool TDFHandler::HasExtension(const char* path, const char* extension) {
    return Forward<bool>(STMDCM_HANDLER("12HasExtensionEPKcS4_"), "HasExtension",
                         JsonObject().Add("path", path).Add("extension", extension), Nothing, this, path, extension);
}

bool TDFHandler::SaveNameVersion(std::FILE* stream, const char* name, unsigned int version) {
    return Forward<bool>(STMDCM_HANDLER("15SaveNameVersionEP8_IO_FILEPKcj"), "SaveNameVersion",
                         JsonObject().Add("name", name).Add("version", version), Nothing, this, stream, name, version);
}

void TDFHandler::SaveSectionHeader(const char* path, const char* name, unsigned int version,
                                   unsigned int& headerOffset) {
    const auto given = [&](JsonObject& out) { out.Add("headerOffset", headerOffset); };
    Forward<void>(STMDCM_HANDLER("17SaveSectionHeaderEPKcS4_jRj"), "SaveSectionHeader", Section(path, name, version),
                  given, this, path, name, version, &headerOffset);
}

void TDFHandler::SaveSectionData(const char* path, const char* name, unsigned int headerOffset, const void* data,
                                 unsigned int elementSize, unsigned int count, unsigned int& sectionLength) {
    const JsonObject arguments = JsonObject()
                                     .Add("path", path)
                                     .Add("name", name)
                                     .Add("headerOffset", headerOffset)
                                     .Add("elementSize", elementSize)
                                     .Add("count", count);
    const auto given = [&](JsonObject& out) { out.Add("sectionLength", sectionLength); };
    Forward<void>(STMDCM_HANDLER("15SaveSectionDataEPKcS4_jPKvjjRj"), "SaveSectionData", arguments, given, this, path,
                  name, headerOffset, data, elementSize, count, &sectionLength);
}

bool TDFHandler::SeekSectionData(std::FILE* stream, const char* name, unsigned int version,
                                 unsigned int& payloadLength) {
    const auto given = [&](JsonObject& out) { out.Add("payloadLength", payloadLength); };
    return Forward<bool>(STMDCM_HANDLER("15SeekSectionDataEP8_IO_FILEPKcjRj"), "SeekSectionData",
                         JsonObject().Add("name", name).Add("version", version), given, this, stream, name, version,
                         &payloadLength);
}

void TDFHandler::GetSectionDataLengthInBytes(const char* path, const char* name, unsigned int version,
                                             unsigned int& payloadLength) {
    const auto given = [&](JsonObject& out) { out.Add("payloadLength", payloadLength); };
    Forward<void>(STMDCM_HANDLER("27GetSectionDataLengthInBytesEPKcS4_jRj"), "GetSectionDataLengthInBytes",
                  Section(path, name, version), given, this, path, name, version, &payloadLength);
}

void TDFHandler::LoadSectionData(const char* path, const char* name, unsigned int version, void* buffer,
                                 unsigned int bufferSize, unsigned int& bytesRead) {
    const auto given = [&](JsonObject& out) { out.Add("bytesRead", bytesRead); };
    Forward<void>(STMDCM_HANDLER("15LoadSectionDataEPKcS4_jPvjRj"), "LoadSectionData",
                  Section(path, name, version).Add("bufferSize", bufferSize), given, this, path, name, version, buffer,
                  bufferSize, &bytesRead);
}

void TDFHandler::GetSectionDataPosition(const char* path, const char* name, unsigned int version,
                                        unsigned int& position, unsigned int& payloadLength) {
    const auto given = [&](JsonObject& out) { out.Add("position", position).Add("payloadLength", payloadLength); };
    Forward<void>(STMDCM_HANDLER("22GetSectionDataPositionEPKcS4_jRjS5_"), "GetSectionDataPosition",
                  Section(path, name, version), given, this, path, name, version, &position, &payloadLength);
}

}  // namespace Zu::Wep::Trace
