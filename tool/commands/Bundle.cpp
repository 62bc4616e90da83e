#include "stmdcm/bundle/Bundle.h"

#include <fmt/format.h>

#include "stmdcm/pins/Sha256.h"
#include "stmdcm/reading/Words.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/ImageOptions.h"
#include "tool/output/OutputDirectory.h"
#include "tool/render/Table.h"

namespace stmdcm {

namespace {

Json ToJson(const BundledFile& file) {
    return {{"file", file.file}, {"size", std::to_string(file.size)}, {"sha256", InHexadecimal(file.sha256)}};
}

/// Tells what a bundle holds.
struct BundleReport {
    const std::string& file;
    const std::string& output;
    const Bundle& bundle;

    std::string Text(const Palette& palette) const {
        const BundleManifest& manifest = bundle.manifest;
        Table table;
        table.AddRow({{"capture", Style::Quiet}, {Shown(manifest.capture.file)}, {SizeInWords(manifest.capture.size)}});
        for (const BundledImage& image : manifest.images) {
            table.AddRow({{Shown(image.name), Style::Quiet},
                          {Shown(image.file)},
                          {SizeInWords(image.size)},
                          {"was " + Shown(image.path), Style::Quiet}});
        }
        return palette.Paint(Style::Heading,
                             fmt::format("{}: {} with {} of its {} program images", Shown(output), Shown(file),
                                         manifest.images.size(), bundle.images.answers.size())) +
               "\n" + table.Text(palette, 2);
    }

    Json Document() const {
        Json images = Json::array();
        for (const BundledImage& image : bundle.manifest.images) {
            Json json = {{"name", image.name}, {"path", image.path}};
            json.update(ToJson(image));
            images.push_back(std::move(json));
        }
        return JsonRenderer::Document("bundle", {{"file", file},
                                                 {"output", output},
                                                 {"capture", ToJson(bundle.manifest.capture)},
                                                 {"images", images},
                                                 {"doubts", bundle.doubts}});
    }
};

/// A capture and all that it takes to decode it, for another machine.
class MakeABundle final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("file", m_file, "A capture")->required()->type_name("CAPTURE");
        app.add_option("-o", m_output, "The new directory of the bundle")->required()->type_name("DIR");
        m_images.Declare(app);
        app.add_flag("--force", m_force, "Go on without the images that are not found");
        app.footer(
            "Copies the capture and the images that it was made with into a directory, with a page that says how to "
            "decode it elsewhere. Images without a pin get one in the copy, when they have the recorded time. The "
            "directory gets its name when all of it is there. Ends with status 3 when an image is missing.\n\n"
            "Example:\n"
            "  stmdcm bundle capture.tdf -o capture.bundle");
    }

    ExitStatus Run(const Context& context) override {
        HashProgress progress;
        ImageFinder finder = m_images.Finder(progress);
        OutputDirectory directory(m_output);
        const Bundle bundle = WriteBundle(m_file, finder, m_force, directory);
        directory.Commit();
        context.Print(BundleReport{m_file, m_output, bundle});
        context.console.Diagnose(m_file, bundle.doubts);
        return StatusOf(bundle.doubts);
    }

  private:
    std::string m_file;
    std::string m_output;
    ImageOptions m_images;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeBundle() { return std::make_unique<MakeABundle>(); }

}  // namespace stmdcm
