#include "stmdcm/validate/Host.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <malloc.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "stmdcm/plugin/WorkingFile.h"
#include "stmdcm/validate/Expect.h"
#include "trace/dcm/CDeviceConfigManager.h"
#include "trace/dcm/EnvironmentVariables.h"
#include "trace/dcm/PropertyNames.h"

namespace stmdcm::validate {

namespace fs = std::filesystem;
using namespace Zu::Wep::Trace;

const char kUsecaseBlocks[] =
    "{\nid=3\nname=mod0\njobid=2\nprobe=p0\nsw=1000\nsuppress=1\n#0=c0\n#1=c1\n"
    "/$\nname=f0\nformula=#0:10\nunit=u\nofmask=1\n$/\n}\n"
    "{\nid=-1\nname=mod1\njobid=-1\nprobe=\nsw=0\nsuppress=0\n}\n"
    "{\ntype=CPT\nsid=4\nname=tracer\njobid=5\nprobe=p1\nsw=9\ncr=200000000\ndf=2\nmode=3\ndo=6\n}\n"
    "{\ntype=PMI_CMI\nname=CMI1\nsw=512\n}\n";

Host::Host(Surroundings surroundings) : m_surroundings(std::move(surroundings)), m_random(m_surroundings.seed) {}

Host::~Host() { Unload(); }

void Host::Load() {
    if (m_library != nullptr) {
        return;
    }
    m_library = ::dlopen(m_surroundings.library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_library == nullptr) {
        Fail("loading the library", "a handle", ::dlerror());
    }
}

void Host::Unload() {
    if (m_library != nullptr) {
        ::dlclose(std::exchange(m_library, nullptr));
    }
}

void* Host::Symbol(const char* name, const char* version) {
    Load();
    return version == nullptr ? ::dlsym(m_library, name) : ::dlvsym(m_library, name, version);
}

void* Host::ExistingSymbol(const char* name) {
    void* const symbol = Symbol(name);
    if (symbol == nullptr) {
        Fail(fmt::format("the symbol {}", name), "an address", "null");
    }
    return symbol;
}

void* Host::Create(CPUInfo* cpu, CDeviceIdentifier* id) {
    return Exported<void* (*)(CPUInfo*, CDeviceIdentifier*)>("CreateDeviceConfigManager")(cpu, id);
}

void Host::Destroy(void* manager) {
    Exported<void (*)(CDeviceConfigManager*)>("DestroyDeviceConfigManager")(
        static_cast<CDeviceConfigManager*>(manager));
}

std::string Host::Settings(const std::string& name) {
    const char* const directory = std::getenv(kSettingsDirectoryVariable);
    return (directory == nullptr ? std::string("(unset)") : std::string(directory)) + "/" + name;
}

std::string Host::Write(const std::string& name, const std::string& bytes) const {
    WriteWorkingFile(Path(name), bytes);
    return Path(name);
}

std::string Host::WriteDated(const std::string& name, std::int64_t modified) const {
    const timespec times[2] = {{modified, 0}, {modified, 0}};
    ::utimensat(AT_FDCWD, Write(name, "image").c_str(), times, 0);
    return Path(name);
}

std::string Host::Read(const std::string& path) { return fs::exists(path) ? ReadWorkingFile(path) : "(none)"; }

void Host::Remove(const std::string& path) { fs::remove(path); }

std::string Host::Printed() const {
    std::fflush(nullptr);
    return Read(Path("printed"));
}

std::string Host::AnyProperties() {
    std::string text;
    for (const PropertyDescription& property : kPropertyDescriptions) {
        const bool isFlag = property.type == ConfigPropertyValue::Boolean;
        std::int32_t value = isFlag ? 1 - property.defaultValue : AnyNumber();
        value += value == property.defaultValue ? 1 : 0;
        text += fmt::format("{} = {}\n", property.name, value);
    }
    return text;
}

std::vector<std::string> FilesBelow(const std::string& folder) {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            names.push_back(entry.path().lexically_relative(folder).string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::size_t Held::Descriptors() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

std::size_t Held::Threads() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/task"), {}));
}

std::size_t Held::Heap() { return ::mallinfo2().uordblks; }

}  // namespace stmdcm::validate
