#include "source_utilities/uDll.h"

#include <dlfcn.h>

#include <cstring>

#include "source_utilities/Log.h"
#include "source_utilities/uEnvironment.h"
#include "source_utilities/uLogger.h"

const char _anyAddressInThisModuleWillDo = 0;

namespace ZU_WEP {

namespace {

constexpr int defaultMode = -1;
constexpr const char* extension = ".so";
constexpr std::size_t affixLength = 3;  // Of "lib" and of the extension.

int ModeOf(int mode) { return mode == defaultMode ? RTLD_LAZY : mode; }

void LogEntry() {
    // Fixed texts of the log format, which do not follow the source.
    constexpr const char* sourceFile = "source_utilities/uDll";
    constexpr int lineNumber = 191;
    if (uLogger* logger = LoggerAbove(2)) {
        logger->Log(LogTrace, uLogger::NO_STAMP, "%s #%d  %s(...)\n", sourceFile, lineNumber, "FindAndLoad");
    }
}

}  // namespace

uDll::uDll(const char* path, int mode) : m_path(path == nullptr ? "" : path), m_mode(ModeOf(mode)) {}

uDll::~uDll() { Unload(); }

bool uDll::Load(const char* path, int mode) {
    if (IsLoaded()) {
        return true;
    }
    if (path != nullptr) {
        m_path = path;
    }
    if (mode != defaultMode) {
        m_mode = mode;
    }
    if (m_path.empty()) {
        return false;
    }
    return Open();
}

bool uDll::Open() {
    m_mode = ModeOf(m_mode);
    m_error.clear();
    m_handle = dlopen(m_path.c_str(), m_mode);
    if (m_handle != nullptr) {
        return true;
    }
    TakeError();
    Log(LogInformation, "uDll: %s", m_error.c_str());
    return false;
}

void uDll::TakeError() {
    const char* text = dlerror();
    if (text != nullptr) {
        m_error = text;
    }
}

bool uDll::FindAndLoad(const char* name, int mode) {
    LogEntry();
    if (name == nullptr) {
        return false;
    }
    if (IsLoaded()) {
        return true;
    }
    std::string workingDirectory;
    uEnvironment::GetWorkingDirectory(workingDirectory);
    std::string platformName;
    GetPlatformName(platformName, name);
    Log(LogInformation, "uDll:  request to load \"%s\" in mode %d", name, mode);
    Log(LogInformation, "uDll:  GetPlatformName returned \"%s\"", platformName.c_str());
    Log(LogInformation, "uDll:  Working Directory is: \"%s\"", workingDirectory.c_str());
    Log(LogInformation, "uDll:  LD_LIBRARY_PATH=%s", uEnvironment::GetVar("LD_LIBRARY_PATH"));
    return Load(platformName.c_str(), mode);
}

bool uDll::Unload() {
    if (!IsLoaded()) {
        return false;
    }
    m_error.clear();
    if (dlclose(m_handle) != 0) {
        TakeError();
    }
    m_handle = nullptr;
    return m_error.empty();
}

void* uDll::GetSymbolAddress(const char* symbol) {
    if (!IsLoaded()) {
        return nullptr;
    }
    m_error.clear();
    void* address = dlsym(m_handle, symbol);
    if (address == nullptr) {
        TakeError();
    }
    return address;
}

const char* uDll::GetModulePath(std::string& path) {
    Dl_info module{};
    if (IsLoaded() && dladdr(&_anyAddressInThisModuleWillDo, &module) != 0) {
        path += module.dli_fname;
    }
    return path.c_str();
}

bool uDll::hasExtension(const char* name) {
    // Anywhere in the name: "libx.so.1" has it, too (uDll.h).
    return name != nullptr && std::strstr(name, extension) != nullptr && std::strcmp(name, extension) != 0;
}

const char* uDll::GetPlatformName(std::string& out, const char* name) {
    if (name == nullptr) {
        return out.c_str();
    }
    if (hasExtension(name)) {
        out += name;
    } else {
        out.append("lib").append(name).append(extension);
    }
    return out.c_str();
}

const char* uDll::GetUniversalName(std::string& out, const char* name) {
    if (name == nullptr) {
        return out.c_str();
    }
    std::string plain = name;
    if (hasExtension(name)) {
        // Dropped without a look at what they are: "libvorn.so.1" gives "vorn.s" (uDll.h).
        plain.erase(0, affixLength);
        if (plain.size() >= affixLength) {
            plain.resize(plain.size() - affixLength);
        }
    }
    out += plain;
    return out.c_str();
}

}  // namespace ZU_WEP
