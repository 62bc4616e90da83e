#include "tool/commands/Objects.h"

#include <fmt/format.h>

#include "stmdcm/images/ImageUpdate.h"
#include "tool/commands/ChangeReport.h"
#include "tool/commands/ObjectsReport.h"

namespace stmdcm {

void Objects::Declare(CLI::App& app) {
    app.add_option("file", m_file, "A capture")->required()->type_name("CAPTURE");
    app.add_option("--map", m_mappings, "What was recorded under OLD is now under NEW")
        ->type_name("OLD=NEW")
        ->allow_extra_args(false);
    app.add_option("--search", m_directories, "Look for missing and changed images, by name, below this directory")
        ->type_name("DIR")
        ->allow_extra_args(false);
    CLI::Option* update = app.add_flag("--update", m_update, "Record the new places in the capture, in place");
    app.add_flag("--accept-changed", m_acceptChanged, "Record images, too, that were modified since the capture")
        ->needs(update);
    app.footer(
        "An image is present when it has the modification time that was recorded; another one is not what ran, and is\n"
        "never recorded without being told. Ends with status 1 when an image is missing or changed, with status 3 "
        "when\n"
        "the others were recorded.\n\nExample:\n"
        "  stmdcm objects capture.tdf --map /home/ann/build=/srv/builds/42 --update");
}

ExitStatus Objects::Run(const Context& context) {
    std::vector<PathMapping> mappings;
    for (const std::string& text : m_mappings) {
        mappings.push_back(PathMapping::Parse(text));
    }
    ImageFinder finder(std::move(mappings), m_directories);
    const ImageList list = m_update ? UpdateImages(m_file, finder, m_acceptChanged) : ListImages(m_file, finder);
    const ObjectsReport report(list);
    context.console.Print(context.options.json ? report.Json() : report.Text(context.console.Out()));
    if (m_update && list.unresolved > 0) {
        context.console.Diagnose(
            fmt::format("{}: {} of the program images stay as they were recorded; --map and --search find them, "
                        "--accept-changed takes changed ones",
                        m_file, list.unresolved));
    }
    ChangeReport::Diagnose(m_file, list.doubts, context.console);
    return StatusOf(list);
}

}  // namespace stmdcm
