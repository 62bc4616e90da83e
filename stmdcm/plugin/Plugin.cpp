#include "stmdcm/plugin/Plugin.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

#include "stmdcm/Failure.h"
#include "stmdcm/plugin/Installation.h"
#include "stmdcm/plugin/LibraryPath.h"

namespace stmdcm {

namespace fs = std::filesystem;

namespace {

/// What a plug-in asks the loader for beside the system's libraries (host/vorn/vornError.h).
constexpr char kErrorLibrary[] = "libvorn.so";

fs::path FindPlugin(const fs::path& file) {
    if (!file.empty() && fs::exists(file) && !fs::is_regular_file(file)) {
        throw Failure(file.string(), "this is not a regular file; name a plug-in");  // the loader would wait for a pipe
    }
    if (!file.empty()) {
        return fs::absolute(file).lexically_normal();  // A bare name would make the loader search its own directories.
    }
    const std::vector<fs::path> candidates = PluginCandidates();
    const auto found =
        std::find_if(candidates.begin(), candidates.end(), [](const fs::path& path) { return fs::exists(path); });
    if (found == candidates.end()) {
        throw Failure(fmt::format("{} is in none of its places, such as {}; name it with --plugin FILE",
                                  candidates.front().filename().string(), candidates[1].parent_path().string()));
    }
    return *found;
}

void* Load(const fs::path& path) {
    // Stays mapped: the plug-in's log system lives as long as the process, and unloading would only lose it.
    void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr) {
        const std::string error = ::dlerror();
        const std::string errorLibrary = FirstOnLibraryPath(kErrorLibrary);
        const bool isTold = errorLibrary.empty() || error.find(errorLibrary) != std::string::npos;
        throw Failure(fmt::format("the plug-in can't be loaded: {}{}", error,
                                  isTold ? "" : "; LD_LIBRARY_PATH makes the loader take " + errorLibrary));
    }
    return library;
}

}  // namespace

void Plugin::Unload::operator()(void* library) const { ::dlclose(library); }

Plugin::Plugin(const TraceHome& /*home*/, const fs::path& file)
    : m_path(FindPlugin(file)),
      m_library(Load(m_path)),
      m_create(reinterpret_cast<CreateFunction>(Symbol("CreateDeviceConfigManager"))),
      m_destroy(reinterpret_cast<DestroyFunction>(Symbol("DestroyDeviceConfigManager"))) {}

void* Plugin::Symbol(const char* name) const {
    void* symbol = ::dlsym(m_library.get(), name);
    if (symbol == nullptr) {
        throw Failure(m_path.string(), fmt::format("not a device-configuration plug-in: it has no \"{}\"", name));
    }
    return symbol;
}

}  // namespace stmdcm
