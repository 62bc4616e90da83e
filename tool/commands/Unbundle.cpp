#include "stmdcm/bundle/Unbundle.h"

#include <fmt/format.h>

#include "stmdcm/capture/Container.h"
#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/Reading.h"
#include "stmdcm/reading/Words.h"
#include "tool/cli/ProgramText.h"
#include "tool/commands/CommandTable.h"
#include "tool/output/HashProgress.h"
#include "tool/output/OutputFile.h"
#include "tool/render/Table.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

namespace {

/// Tells the capture that a bundle gave, and where its images are.
struct UnbundleReport {
    const std::string& directory;
    const std::string& output;
    const VerifiedBundle& bundle;

    std::string Text(const Palette& palette) const {
        Table table;
        for (const ObjectFile& file : bundle.Images()) {
            table.AddRow(
                {{Shown(file.name)}, {file.DiskStateName(), StateStyle(file.DiskStateName())}, {Shown(file.path)}});
        }
        return palette.Paint(Style::Heading, fmt::format("{}: the capture of {}, whose files are what was bundled",
                                                         Shown(output), Shown(directory))) +
               "\n" + table.Text(palette, 2);
    }

    JsonLine Document() const {
        JsonWriter out = JsonRenderer::Begin("unbundle");
        out.Member("directory", directory).Member("output", output).Key("object_files");
        JsonRenderer::Write(out, bundle.Images());
        return out.Member("doubts", bundle.Doubts()).EndObject().Take();
    }
};

/// Puts a bundle to work.
class Unbundle final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("bundle", m_directory, "The directory of a bundle")->required()->type_name("DIR");
        app.add_option("-o", m_output, "The new capture; without it, one of the bundle's name in this directory")
            ->type_name("OUT");
        app.add_flag("--force", m_force, kOverwriteOutput);
        app.footer(
            "Holds every file of the bundle against the pins and what was bundled, and writes the capture with the "
            "images' places in the bundle, which stays as it is. A bundle in which anything is otherwise is refused, "
            "and nothing is written. Ends with status 3 when images are not in the bundle.\n\nExample:\n"
            "  stmdcm unbundle capture.bundle");
    }

    ExitStatus Run(const Context& context) override {
        HashProgress progress;
        ImageExaminer examiner(progress.Teller());
        const VerifiedBundle bundle(m_directory, examiner);
        const std::string output = m_output.empty() ? bundle.Manifest().capture.file : m_output;
        RequireCaptureName(output);
        const CaptureFile source(bundle.CapturePath());
        OutputFile file(output, m_force, {bundle.CapturePath()}, &source.File());
        bundle.WriteCapture(file);
        file.Flush();
        RequireSame(bundle, file);
        file.Commit();
        context.Print(UnbundleReport{m_directory, output, bundle});
        context.console.Diagnose(m_directory, bundle.Doubts());
        context.console.Diagnose(file.NotKept());
        return bundle.Doubts().empty() ? StatusOf(file.NotKept()) : ExitStatus::Doubtful;
    }

  private:
    /// But for the places of the images.
    static void RequireSame(const VerifiedBundle& bundle, const OutputFile& file) {
        Configuration wanted = Read(Container(bundle.CapturePath())).configuration;
        wanted.objectFiles = bundle.Images();
        const Configuration written =
            file.ReadBack([](const std::string& path) { return Read(Container(path)).configuration; });
        if (!Compare(wanted, written).empty()) {
            throw Failure(file.Path(),
                          fmt::format("what was written does not load as {}, and is not kept; was that changed?",
                                      Shown(bundle.CapturePath())));
        }
    }

    std::string m_directory;
    std::string m_output;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeUnbundle() { return std::make_unique<Unbundle>(); }

}  // namespace stmdcm
