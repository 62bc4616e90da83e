#include "stmdcm/plugin/LibraryPath.h"

#include <fmt/format.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "source_utilities/ErrnoText.h"
#include "stmdcm/Failure.h"
#include "stmdcm/plugin/WorkingFile.h"

namespace stmdcm {

namespace fs = std::filesystem;

namespace {

constexpr char kVariable[] = "LD_LIBRARY_PATH";

std::vector<std::string> ProgramArguments() {
    std::istringstream in(ReadWorkingFile("/proc/self/cmdline"));
    std::vector<std::string> arguments;
    for (std::string argument; std::getline(in, argument, '\0');) {
        arguments.push_back(argument);
    }
    return arguments;
}

[[noreturn]] void StartAgain() try {
    std::vector<std::string> arguments = ProgramArguments();
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    ::execv("/proc/self/exe", pointers.data());
    throw Failure(ZU_WEP::ErrnoText(errno));
} catch (const Failure& failure) {
    throw Failure(fmt::format("this program can't be started again to set {}: {}", kVariable, failure.Cause()));
}

std::string LibraryPath() {
    const char* value = ::getenv(kVariable);
    return value == nullptr ? "" : value;
}

}  // namespace

void SearchLibrariesFirstIn(const fs::path& directory, const char* library) {
    if (!fs::is_regular_file(directory / library)) {
        throw Failure(directory.string(), fmt::format("there is no {} in this directory", library));
    }
    const std::string first = fs::canonical(directory).string();
    const std::string old = LibraryPath();
    if (old == first || old.starts_with(first + ":")) {
        return;
    }
    ::setenv(kVariable, old.empty() ? first.c_str() : (first + ":" + old).c_str(), 1);
    StartAgain();
}

fs::path FirstOnLibraryPath(const char* library) {
    std::string directories = LibraryPath();
    std::replace(directories.begin(), directories.end(), ';', ':');  // as ld.so(8) takes both
    std::istringstream in(directories);
    for (std::string directory; std::getline(in, directory, ':');) {
        fs::path file = fs::absolute(directory.empty() ? "." : directory) / library;
        std::error_code error;
        if (fs::exists(file, error)) {
            return file;
        }
    }
    return {};
}

}  // namespace stmdcm
