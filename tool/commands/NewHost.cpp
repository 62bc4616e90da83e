#include <fmt/format.h>

#include <string_view>

#include "stmdcm/reading/Words.h"
#include "tool/commands/CommandTable.h"
#include "tool/output/OutputDirectory.h"

namespace stmdcm {

namespace {

struct TemplateFile {
    const char* name;
    std::string_view text;
};

// Each is a file of tool/data/new-host/.
constexpr TemplateFile kFiles[] = {
#include "NewHostFiles.inc"
};

/// A host to begin with.
class NewHost final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("FOLDER", m_folder, "The folder to make; nothing may be there")->required()->type_name("DIR");
        app.footer(
            "The host builds at once, with CMake or without, against the installed package: it loads the plug-in and "
            "asks for its interface, loads a capture, asks, changes and saves, loads from a live target, and tells why "
            "a call failed. Its tests run it on a capture and a simulated target. Its README.md says how.\n\nExample:\n"
            "  stmdcm new-host my_host");
    }

    ExitStatus Run(const Context& context) override {
        OutputDirectory folder(m_folder);
        for (const TemplateFile& file : kFiles) {
            folder.Add(file.name, "", nullptr, [&](ByteSink& sink) { sink.Write(file.text); });
        }
        folder.Commit();
        context.console.Print(fmt::format("{}: a host in {} files; README.md there says how it is built and tried\n",
                                          Shown(m_folder), std::size(kFiles)));
        return ExitStatus::Done;
    }

    bool HasDocument() const override { return false; }

  private:
    std::string m_folder;
};

}  // namespace

std::unique_ptr<Command> MakeNewHost() { return std::make_unique<NewHost>(); }

}  // namespace stmdcm
