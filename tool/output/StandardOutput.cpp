#include "tool/output/StandardOutput.h"

#include <sys/stat.h>
#include <unistd.h>

#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

/// No regular file, where there is none.
struct stat StandardOutput() {
    struct stat info {};
    if (::fstat(STDOUT_FILENO, &info) != 0) {
        info = {};
    }
    return info;
}

}  // namespace

void RefuseStandardOutputIn(const std::string& file) {
    static const struct stat out = StandardOutput();  // it stays the same
    struct stat info {};
    if (S_ISREG(out.st_mode) && ::stat(file.c_str(), &info) == 0 && info.st_dev == out.st_dev &&
        info.st_ino == out.st_ino) {
        throw Failure(file, "this is standard output, too; send that to another file", Failure::Kind::Output);
    }
}

void RefuseTerminal() {
    if (::isatty(STDOUT_FILENO) == 1) {
        throw Failure("binary data does not go to a terminal; use -o FILE, or a pipe", Failure::Kind::Request);
    }
}

}  // namespace stmdcm
