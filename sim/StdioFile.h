#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace stmdcm_sim {

struct CloseStdioFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using StdioFile = std::unique_ptr<std::FILE, CloseStdioFile>;

/// Null, with errno set, when the file can't be opened. Programs that the process starts do not inherit it.
inline StdioFile OpenStdioFile(const std::string& path, const std::string& mode) {
    return StdioFile(std::fopen(path.c_str(), (mode + "e").c_str()));
}

}  // namespace stmdcm_sim
