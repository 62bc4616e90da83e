#include <fmt/format.h>

#include <memory>

#include "stmdcm/Failure.h"
#include "stmdcm/images/ImageUpdate.h"
#include "stmdcm/reading/Words.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/ImageOptions.h"
#include "tool/many/ManyFiles.h"
#include "tool/render/Table.h"
#include "tool/render/TextRenderer.h"

namespace stmdcm {

namespace {

Cell StateCell(const ObjectFile& file) { return {file.DiskStateName(), StateStyle(file.DiskStateName())}; }

/// Tells how the program images of a capture are.
struct ObjectsReport {
    const ImageList& list;
    ImageParts parts;  ///< that were to be recorded

    static void AddRows(const ImageAnswer& answer, Table& table) {
        const auto modified = [](const ObjectFile& file) {
            const bool isOther = file.match && *file.match != PinMatch::Same;
            return "modified " + InWords(Unit::UnixTime, file.modified) +
                   (isOther ? ": this is not the image that was captured" : "");
        };
        table.AddRow({{Shown(answer.recorded.name)},
                      StateCell(answer.recorded),
                      {Shown(answer.recorded.path)},
                      {"recorded " + InWords(Unit::UnixTime, answer.recorded.recorded), Style::Quiet}});
        if (answer.how != ImageAnswer::How::Recorded) {
            table.AddRow({{"  by " + std::string(answer.HowName()), Style::Quiet},
                          StateCell(answer.found),
                          {Shown(answer.found.path)},
                          {answer.found.modified ? modified(answer.found) : "", Style::Quiet}});
        } else if (answer.recorded.modified && !answer.recorded.IsPresent()) {
            table.AddRow({{}, {}, {}, {modified(answer.recorded), Style::Quiet}});
        }
        for (const std::string& candidate : answer.candidates) {
            table.AddRow({{"  perhaps", Style::Quiet}, {}, {Shown(candidate)}});
        }
    }

    std::string Text(const Palette& palette) const {
        Table table;
        for (const ImageAnswer& answer : list.answers) {
            AddRows(answer, table);
        }
        const std::size_t total = list.answers.size();
        const std::string what =
            parts.places ? parts.pins ? "their places and pins" : "their new places" : "their pins";
        const char* recorded = list.isWritten ? ", the capture has " : ", the capture would get ";
        const std::string outcome = list.hasChanges ? recorded + what : "";
        return palette.Paint(Style::Heading, fmt::format("{}: {} of {} program images were found{}", Shown(list.path),
                                                         total - list.unresolved, total, outcome)) +
               "\n" + table.Text(palette, 2);
    }

    Json Document() const {
        Json files = Json::array();
        for (const ImageAnswer& answer : list.answers) {
            Json json = JsonRenderer::ObjectFiles({answer.recorded}).front();
            json["how"] = answer.HowName();
            json["found"] = JsonRenderer::ObjectFiles({answer.found}).front();
            json["candidates"] = answer.candidates;
            files.push_back(std::move(json));
        }
        return JsonRenderer::Document("objects", {{"file", list.path},
                                                  {"object_files", files},
                                                  {"unresolved", list.unresolved},
                                                  {"changed", list.hasChanges},
                                                  {"written", list.isWritten},
                                                  {"doubts", list.doubts}});
    }
};

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
