#include "stmdcm/plugin/TargetRecorder.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <link.h>
#include <stdlib.h>

#include <memory>
#include <nlohmann/json.hpp>

#include "stmdcm/Failure.h"
#include "stmdcm/plugin/Installation.h"
#include "stmdcm/plugin/LibraryPath.h"

namespace stmdcm {

namespace fs = std::filesystem;

namespace {

constexpr char kRecordedFactory[] = "STMDCM_RECORD_FACTORY";
constexpr char kRecordingFile[] = "STMDCM_RECORD_FILE";

/// The file of the factory that the dynamic loader finds for a manager.
std::string FoundByLoader() {
    struct Close {
        void operator()(void* library) const { ::dlclose(library); }
    };
    const std::unique_ptr<void, Close> library(::dlopen(kFactoryFile, RTLD_LAZY | RTLD_LOCAL));
    link_map* map = nullptr;
    if (!library || ::dlinfo(library.get(), RTLD_DI_LINKMAP, &map) != 0) {
        throw Failure(
            fmt::format("the trace factory can't be loaded: {}; name its directory with --factory-dir", ::dlerror()));
    }
    return fs::canonical(map->l_name).string();
}

}  // namespace

fs::path RecorderInFrontOf(const fs::path& directory) {
    const fs::path recorder = RecorderDirectory();
    if (!directory.empty()) {
        if (!fs::is_regular_file(directory / kFactoryFile)) {
            throw Failure(directory.string(), fmt::format("there is no {} in this directory", kFactoryFile));
        }
        ::setenv(kRecordedFactory, fs::canonical(directory / kFactoryFile).c_str(), 1);
    } else if (!AreLibrariesSearchedFirstIn(recorder) || ::getenv(kRecordedFactory) == nullptr) {
        ::setenv(kRecordedFactory, FoundByLoader().c_str(), 1);
    }
    return recorder;
}

void RecordInto(const std::string& file) { ::setenv(kRecordingFile, file.c_str(), 1); }

std::vector<std::string> RemarksOf(const std::string& scenario) {
    return nlohmann::json::parse(scenario).value("remarks", std::vector<std::string>());
}

}  // namespace stmdcm
