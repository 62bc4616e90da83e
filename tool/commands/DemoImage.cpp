#include "tool/commands/DemoImage.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <fstream>

#include "stmdcm/Failure.h"

namespace stmdcm {

void WriteDemoImage(const std::filesystem::path& path, std::int64_t modified) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << "program image " << path.filename().string() << "\n";
    const timespec times[2] = {{modified, 0}, {modified, 0}};
    if (::utimensat(AT_FDCWD, path.c_str(), times, 0) != 0) {
        throw Failure(fmt::format("{}: the program image can't be written", path.string()));
    }
}

}  // namespace stmdcm
