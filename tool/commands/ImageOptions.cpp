#include "tool/commands/ImageOptions.h"

#include <utility>

namespace stmdcm {

void ImageOptions::Declare(CLI::App& app) {
    app.add_option("--map", m_mappings, "What was recorded under OLD is now under NEW")
        ->type_name("OLD=NEW")
        ->allow_extra_args(false);
    app.add_option("--search", m_directories,
                   "Look for missing and changed images below this directory: by pin, else by name and time")
        ->type_name("DIR")
        ->allow_extra_args(false);
}

ImageFinder ImageOptions::Finder(HashProgress& progress) const {
    std::vector<PathMapping> mappings;
    for (const std::string& text : m_mappings) {
        mappings.push_back(PathMapping::Parse(text));
    }
    return {std::move(mappings), m_directories, progress.Teller()};
}

}  // namespace stmdcm
