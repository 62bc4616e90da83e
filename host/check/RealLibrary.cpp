#include "host/check/RealLibrary.h"

#include <dlfcn.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <stdexcept>

#include "host/check/Output.h"

namespace stmdcm_check {

namespace {

namespace fs = std::filesystem;

constexpr char kVariable[] = "STMDCM_CHECK_LIBRARY";
constexpr char kLibraryFile[] = "libStmDCM.so";
constexpr char kCreate[] = "CreateDeviceConfigManager";
constexpr char kDestroy[] = "DestroyDeviceConfigManager";

void* library = nullptr;

/// Behind links: a link of the real one's name in another directory is how some hosts are given the checker.
fs::path OwnFile() {
    Dl_info info{};
    std::error_code error;
    const bool isKnown = ::dladdr(&library, &info) != 0 && info.dli_fname != nullptr;
    return isKnown ? fs::canonical(info.dli_fname, error) : fs::path();
}

std::string FileToLoad() {
    const char* named = std::getenv(kVariable);
    if (named != nullptr && *named != '\0') {
        return named;
    }
    std::error_code error;
    const fs::path own = OwnFile().parent_path();
    return (fs::exists(own / kLibraryFile, error) ? own / kLibraryFile : own.parent_path() / kLibraryFile).string();
}

/// Why that library is none to stand in front of; empty for one that is.
std::string Objection(const std::string& file) {
    if (library == nullptr) {
        return ::dlerror();
    }
    void* const create = ::dlsym(library, kCreate);
    if (create == reinterpret_cast<void*>(&CreateDeviceConfigManager)) {
        return file + " is the checker itself";
    }
    if (create == nullptr || ::dlsym(library, kDestroy) == nullptr) {
        return file + " is no configuration manager";
    }
    return ::dlvsym(library, kCreate, STMDCM_INTERFACE_VERSION) == nullptr
               ? file + " has not the interface " + STMDCM_INTERFACE_VERSION + " for which this checker was made"
               : "";
}

}  // namespace

void RealLibrary::Load() {
    const std::string file = FileToLoad();
    library = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    const std::string objection = Objection(file);
    Trace("start", JsonObject()
                       .Add("stmdcm_check_trace", 1)
                       .Add("library", file)
                       .Add("interface", STMDCM_INTERFACE_VERSION)
                       .Add("unix_time", static_cast<long>(std::time(nullptr))));
    if (!objection.empty()) {
        Unload();
        Tell("the real library can't be used: " + objection + "; name it in " + kVariable);
    }
}

void RealLibrary::Unload() {
    if (library != nullptr) {
        ::dlclose(library);
        library = nullptr;
    }
}

void* RealLibrary::Address(const char* name) {
    void* const address = library != nullptr ? ::dlsym(library, name) : nullptr;
    if (address == nullptr) {
        throw std::runtime_error(std::string("stmdcm-check: there is no real ") + name);
    }
    return address;
}

decltype(&CreateDeviceConfigManager) RealLibrary::Create() {
    return library != nullptr ? Symbol<decltype(CreateDeviceConfigManager)>(kCreate) : nullptr;
}

decltype(&DestroyDeviceConfigManager) RealLibrary::Destroy() {
    return Symbol<decltype(DestroyDeviceConfigManager)>(kDestroy);
}

}  // namespace stmdcm_check
