#include "stmdcm/images/PathMapping.h"

#include <fmt/format.h>

#include <filesystem>

#include "stmdcm/Failure.h"

namespace stmdcm {

namespace {

std::string WithoutLastSlash(std::string path) {
    path.erase(path.find_last_not_of('/') + 1);
    return path;
}

}  // namespace

PathMapping PathMapping::Parse(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
        throw Failure(fmt::format("\"{}\" is no OLD=NEW", text), Failure::Kind::Request);
    }
    const std::filesystem::path to = std::filesystem::absolute(text.substr(equals + 1)).lexically_normal();
    return {WithoutLastSlash(text.substr(0, equals)), WithoutLastSlash(to.string())};
}

std::optional<std::string> PathMapping::Map(const std::string& path) const {
    if (!path.starts_with(m_old)) {
        return std::nullopt;
    }
    const std::string rest = path.substr(m_old.size());
    return rest.empty() || rest.front() == '/' ? std::optional(m_new + rest) : std::nullopt;
}

std::optional<std::string> MapPath(const std::vector<PathMapping>& mappings, const std::string& path) {
    std::optional<std::string> mapped;
    std::size_t reach = 0;
    for (const PathMapping& mapping : mappings) {
        auto other = mapping.Map(path);
        if (other && (!mapped || mapping.Reach() > reach)) {
            mapped = std::move(other);
            reach = mapping.Reach();
        }
    }
    return mapped;
}

}  // namespace stmdcm
