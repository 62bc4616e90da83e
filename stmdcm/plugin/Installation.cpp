#include "stmdcm/plugin/Installation.h"

#include <fmt/format.h>

#include <system_error>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

constexpr char kPluginFile[] = "libStmDCM.so";

std::filesystem::path ProgramDirectory() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        throw Failure(fmt::format("where this program is can't be found out: {}", ZU_WEP::ErrnoText(error.value())));
    }
    return program.parent_path();
}

/// Of a factory library of this program's own, in a folder of the libraries' directory.
std::filesystem::path FactoryDirectory(const char* folder, const char* advice) {
    const std::filesystem::path prefix = ProgramDirectory().parent_path();
    for (const std::filesystem::path& directory : {prefix / STMDCM_LIBDIR / folder, prefix / "lib" / folder}) {
        if (std::filesystem::exists(directory / kFactoryFile)) {
            return directory;
        }
    }
    throw Failure(fmt::format("{} is not in {}{}", kFactoryFile, (prefix / STMDCM_LIBDIR / folder).string(), advice));
}

}  // namespace

std::vector<std::filesystem::path> PluginCandidates() {
    const std::filesystem::path program = ProgramDirectory();
    const std::filesystem::path prefix = program.parent_path();
    return {program / kPluginFile, prefix / "lib" / kPluginFile, prefix / STMDCM_LIBDIR / kPluginFile,
            std::filesystem::path(STMDCM_FULL_LIBDIR) / kPluginFile};
}

std::filesystem::path SimulatorDirectory() {
    return FactoryDirectory("stmdcm", "; name its directory with --factory-dir DIR");
}

std::filesystem::path RecorderDirectory() { return FactoryDirectory("stmdcm/record", "; install it again"); }

std::filesystem::path DataFile(const std::string& name) {
    std::filesystem::path path = ProgramDirectory().parent_path() / "share" / "stmdcm" / name;
    if (!std::filesystem::is_regular_file(path)) {
        throw Failure(path.string(), "the file that belongs to this program is not there; install it again");
    }
    return path;
}

}  // namespace stmdcm
