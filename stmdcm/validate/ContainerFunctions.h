#pragma once

#include <cstdio>

namespace stmdcm::validate {

/// One of the container's operations that a library exports, as the loader knows it (trace/tdf/TDFHandler.h).
struct ContainerFunction {
    const char* name;    ///< for people
    const char* symbol;  ///< by the C++ ABI of Itanium
};

// The first argument is the object, which holds nothing. Sizes, offsets and lengths are in bytes.
using CreateFileFunction = void(void*, const char* path);
using TestFileFunction = bool(void*, const char* path);
using SaveHeaderFunction = void(void*, const char* path, const char* name, unsigned version, unsigned& offset);
using SaveDataFunction = void(void*, const char* path, const char* name, unsigned offset, const void* data,
                              unsigned elementSize, unsigned count, unsigned& length);
using LengthFunction = void(void*, const char* path, const char* name, unsigned version, unsigned& length);
using LoadFunction = void(void*, const char* path, const char* name, unsigned version, void* buffer, unsigned size,
                          unsigned& read);
using FileSizeFunction = unsigned(const char* path);

inline constexpr char kConstructor[] = "_ZN2Zu3Wep5Trace10TDFHandlerC1Ev";
inline constexpr char kDestructor[] = "_ZN2Zu3Wep5Trace10TDFHandlerD1Ev";
inline constexpr char kCreateFile[] = "_ZN2Zu3Wep5Trace10TDFHandler13CreateTDFFileEPKc";
inline constexpr char kIsTdf[] = "_ZN2Zu3Wep5Trace10TDFHandler5ISTDFEPKc";
inline constexpr char kIsAvailable[] = "_ZN2Zu3Wep5Trace10TDFHandler15IsFileAvailableEPKc";
inline constexpr char kSaveHeader[] = "_ZN2Zu3Wep5Trace10TDFHandler17SaveSectionHeaderEPKcS4_jRj";
inline constexpr char kSaveData[] = "_ZN2Zu3Wep5Trace10TDFHandler15SaveSectionDataEPKcS4_jPKvjjRj";
inline constexpr char kLength[] = "_ZN2Zu3Wep5Trace10TDFHandler27GetSectionDataLengthInBytesEPKcS4_jRj";
inline constexpr char kLoad[] = "_ZN2Zu3Wep5Trace10TDFHandler15LoadSectionDataEPKcS4_jPvjRj";
inline constexpr char kFileSize[] = "_ZN2Zu3Wep5Trace8FileSizeEPKc";

inline constexpr ContainerFunction kContainerFunctions[] = {
    {"the constructor of TDFHandler", kConstructor},
    {"the destructor of TDFHandler", kDestructor},
    {"TDFHandler::CreateTDFFile", kCreateFile},
    {"TDFHandler::ISTDF", kIsTdf},
    {"TDFHandler::IsFileAvailable", kIsAvailable},
    {"TDFHandler::HasExtension", "_ZN2Zu3Wep5Trace10TDFHandler12HasExtensionEPKcS4_"},
    {"TDFHandler::SaveNameVersion", "_ZN2Zu3Wep5Trace10TDFHandler15SaveNameVersionEP8_IO_FILEPKcj"},
    {"TDFHandler::SaveSectionHeader", kSaveHeader},
    {"TDFHandler::SaveSectionData", kSaveData},
    {"TDFHandler::SeekSectionData", "_ZN2Zu3Wep5Trace10TDFHandler15SeekSectionDataEP8_IO_FILEPKcjRj"},
    {"TDFHandler::GetSectionDataLengthInBytes", kLength},
    {"TDFHandler::LoadSectionData", kLoad},
    {"TDFHandler::GetSectionDataPosition", "_ZN2Zu3Wep5Trace10TDFHandler22GetSectionDataPositionEPKcS4_jRjS5_"},
    {"FileSize", kFileSize},
};

}  // namespace stmdcm::validate
