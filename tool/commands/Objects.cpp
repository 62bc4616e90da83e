#include <fmt/format.h>

#include <memory>

#include "stmdcm/Failure.h"
#include "stmdcm/images/ImageUpdate.h"
#include "stmdcm/reading/Words.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/ImageOptions.h"
#include "tool/many/ManyFiles.h"
#include "tool/output/HashProgress.h"
#include "tool/reports/ObjectsReport.h"

namespace stmdcm {

namespace {

/// Which program images of a capture are there, where they are now, and their new places into the capture.
class Objects final : public Command {
  public:
    void Declare(CLI::App& app) override {
        m_files.DeclareFiles(app, "CAPTURE", "Captures");
        m_images.Declare(app);
        app.add_flag("--update", m_update, "Record the new places in the capture, in place");
        app.add_flag("--pin", m_pin,
                     "Write into the capture, in place, what each image is: size, SHA-256 and build-id");
        app.add_flag("--accept-changed", m_acceptChanged, "Record images, too, that are not what was captured");
        app.add_flag("--dry-run", m_dryRun, "Tell what would be recorded, and write nothing");
        m_files.DeclareOptions(app);
        app.footer(
            "A capture holds the path and the modification time of each image, not what is in it: a file with that "
            "time is called \"same time, not proven\". One with another time is not what ran, and is never recorded "
            "without being told. Once --pin has told the capture what they are (docs/pins.md), content decides, not "
            "time, and --search finds them under whatever name. Ends with status 1 when an image is missing, "
            "changed or not readable, with status 3 when the others were recorded, or something is "
            "doubtful.\n\nExample:\n"
            "  stmdcm objects capture.tdf --pin\n"
            "  stmdcm objects capture.tdf --map /home/ann/build=/srv/builds/42 --update");
    }

    void Check() override { m_files.RequireAny("CAPTURE"); }

    ExitStatus Run(const Context& context) override {
        const ImageParts parts{m_update, m_pin};
        if ((m_acceptChanged || m_dryRun) && !m_update && !m_pin) {
            throw Failure("--accept-changed and --dry-run need --update or --pin", Failure::Kind::Request);
        }
        if (!m_update && !m_pin) {
            m_files.SetPurpose(ManyFiles::Purpose::Read);
        }
        HashProgress progress;
        ImageFinder finder = m_images.Finder(progress);
        if (m_files.IsForking()) {
            finder.Examiner().ShareAmongForked();
        }
        return m_files.Run(
            context, [&](const Context& own, const std::string& file) { return LookAt(own, file, finder, parts); });
    }

  private:
    FileResult LookAt(const Context& context, const std::string& file, ImageFinder& finder, ImageParts parts) const {
        const bool isRecording = m_update || m_pin;
        const ImageList list = isRecording ? UpdateImages(file, finder, m_acceptChanged,
                                                          m_dryRun ? ChangeMode::DryRun : ChangeMode::Write, parts)
                                           : ListImages(file, finder);
        context.Print(ObjectsReport{list, parts});
        if (isRecording && list.unresolved > 0) {
            context.console.Diagnose(
                fmt::format("{}: {} of the program images stay as they were recorded; --map and --search find them, "
                            "--accept-changed takes changed ones",
                            Shown(file), list.unresolved));
        }
        context.console.Diagnose(file, list.doubts);
        return {StatusOf(list), CountsOf(list), {}, !list.doubts.empty()};
    }

    std::vector<Count> CountsOf(const ImageList& list) const {
        std::vector<Count> counts{{list.unresolved > 0 ? "with images that are not there"
                                   : list.isComplete   ? "with all images"
                                                       : "with a list that ends within an image"}};
        if (m_update || m_pin) {
            counts.push_back(ChangeCount(list.hasChanges, list.isWritten));
        }
        return counts;
    }

    ManyFiles m_files{ManyFiles::Purpose::Change};
    ImageOptions m_images;
    bool m_update = false;
    bool m_pin = false;
    bool m_acceptChanged = false;
    bool m_dryRun = false;
};

}  // namespace

std::unique_ptr<Command> MakeObjects() { return std::make_unique<Objects>(); }

}  // namespace stmdcm
