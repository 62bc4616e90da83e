#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace stmdcm_test {

/// Where a sync does not wait for a disk, if there is such a place.
inline std::string MemoryDirectory() {
    return std::filesystem::exists("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path().string();
}

/// A directory of its own for one test, removed with all that is in it.
class ScratchDir {
  public:
    explicit ScratchDir(const std::string& parent = std::filesystem::temp_directory_path().string())
        : m_path(parent + "/stmdcm-test-XXXXXX") {
        if (::mkdtemp(m_path.data()) == nullptr) {
            throw std::filesystem::filesystem_error("mkdtemp", m_path, std::error_code(errno, std::generic_category()));
        }
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;
    ~ScratchDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

  private:
    std::string m_path;
};

inline std::string ReadWhole(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void WriteWhole(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

/// Writes a file that was modified at that time, in seconds since 1970.
inline std::string WriteDated(const std::string& path, std::int64_t modified) {
    WriteWhole(path, "image");
    const timespec times[2] = {{modified, 0}, {modified, 0}};
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
    return path;
}

}  // namespace stmdcm_test
