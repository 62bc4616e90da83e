#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <optional>

#include "stmdcm/Failure.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/capture/CopyRange.h"
#include "stmdcm/reading/Findings.h"
#include "stmdcm/reading/Words.h"
#include "stmdcm/recover/HeaderRules.h"
#include "tool/cli/ProgramText.h"
#include "tool/cli/ValueCheck.h"
#include "tool/commands/CommandTable.h"
#include "tool/output/OutputFile.h"
#include "tool/output/Progress.h"
#include "tool/output/StandardOutput.h"

namespace stmdcm {

namespace {

/// Why the payload may not be what was written, empty for no reason.
std::string Doubt(const CaptureFile& file, const Section& section) {
    const std::uint64_t held = file.Held(section.PayloadOffset(), section.PayloadLength());
    if (section.IsTooShort()) {
        return fmt::format("its length, {}, does not even cover its header; readers get {} of it", section.length,
                           Counted(held, "byte"));
    }
    if (held < section.PayloadLength()) {
        return fmt::format("the file ends within it: {} of {} {} there", held, Counted(section.PayloadLength(), "byte"),
                           held == 1 ? "is" : "are");
    }
    return {};
}

/// Takes bytes that are no text.
class BinaryOutput final : public ByteSink {
  public:
    BinaryOutput() { RefuseTerminal(); }
    void Write(std::string_view bytes) override { Console::ToStandardOutput(bytes); }
};

/// One section's payload, byte for byte.
class Extract final : public Command {
  public:
    void Declare(CLI::App& app) override {
        app.add_option("FILE", m_file, "A capture (.tdf)")->required()->type_name("CAPTURE");
        app.add_option("NAME", m_name, "The section's name; \"\" for one without")->type_name("SECTION");
        app.add_option("--version", m_version, "Its version, where there are several")
            ->type_name("N")
            ->check(WholeNumber(std::numeric_limits<std::uint32_t>::max()));
        app.add_option("--offset", m_offset, "Where it begins, for one that is not read (see sections, recover --plan)")
            ->type_name("N")
            ->check(WholeNumber());
        auto* output =
            app.add_option("-o,--output", m_output, "Write to this file instead of standard output, which - names too")
                ->type_name("OUT");
        app.add_flag("--force", m_force, kOverwriteOutput)->needs(output);
        app.add_flag("--progress", m_progress, "Tell the progress also where standard error is no terminal");
        app.footer(
            "Writes the payload byte for byte, and never to a terminal. Ends with status 3 when the file does not hold "
            "all of it; what is there is written. With --offset the name may be left out, and CAPTURE may have lost "
            "its first bytes.\n\nExample:\n"
            "  stmdcm extract full.tdf STMDECODERINFO -o settings.txt");
    }

    ExitStatus Run(const Context& context) override {
        if (!m_name && !m_offset) {
            throw Failure("extract needs a SECTION, or --offset", Failure::Kind::Request);
        }
        const CaptureFile file(m_file,
                               m_offset ? CaptureFile::Identifier::Optional : CaptureFile::Identifier::Required);
        const Section section = m_offset ? ChooseAtOffset(file) : Choose(Container(m_file));
        const std::vector<std::string> notKept = Copy(file, section);
        context.console.Diagnose(m_output, notKept);
        const std::string doubt = Doubt(file, section);
        if (doubt.empty()) {
            return StatusOf(notKept);
        }
        context.console.Diagnose(fmt::format("{}: section {} at offset {}: {}", Shown(m_file),
                                             Shown(HeaderRules(file).NameOf(section)), section.offset, doubt));
        return ExitStatus::Doubtful;
    }

    bool HasDocument() const override { return false; }

  private:
    bool IsNamed(const Container& container, const Section& section) const {
        return section.nameLength == m_name->size() && container.Name(section) == *m_name;
    }

    Section Choose(const Container& container) const {
        const Section* chosen = nullptr;
        for (const Section& section : container.Sections()) {
            if (section.use != SectionUse::Read || (m_version && section.version != *m_version) ||
                !IsNamed(container, section)) {
                continue;
            }
            if (chosen != nullptr) {
                throw Failure(m_file,
                              fmt::format("there are several versions of section {}, among them {} and {}; name "
                                          "one with --version",
                                          Shown(*m_name), chosen->version, section.version),
                              Failure::Kind::Request);
            }
            chosen = &section;
        }
        if (chosen == nullptr) {
            FailToFind(container);
        }
        return *chosen;
    }

    /// Also one that no walk comes to, such as those that recover lists.
    Section ChooseAtOffset(const CaptureFile& file) const {
        const HeaderRules rules(file);
        std::optional<Section> section = rules.SectionAt(*m_offset);
        if (file.HasIdentifier()) {
            const Container container(m_file);
            const Section* listed = container.At(*m_offset);
            section = listed != nullptr ? *listed : section;
        }
        if (!section) {
            throw Failure(m_file, fmt::format("no section begins at offset {}; list them with sections or recover "
                                              "--plan",
                                              *m_offset));
        }
        const std::string name = rules.NameOf(*section);
        if ((m_name && name != *m_name) || (m_version && *m_version != section->version)) {
            throw Failure(m_file, fmt::format("the section at offset {} is {}, version {}", *m_offset, Shown(name),
                                              section->version));
        }
        return *section;
    }

    [[noreturn]] void FailToFind(const Container& container) const {
        std::string sentence = fmt::format("a reader finds no section {}", Shown(*m_name));
        if (m_version) {
            sentence += fmt::format(", version {}", *m_version);
        }
        for (const Section& section : container.Sections()) {
            if (section.use != SectionUse::Read && IsNamed(container, section)) {
                throw Failure(m_file, fmt::format("{}; there is one that is {}, get it with --offset {}", sentence,
                                                  SectionUseText(section.use), section.offset));
            }
        }
        throw Failure(m_file, sentence + "; list those that are there with sections");
    }

    /// Gives what of a file that was there is not kept.
    std::vector<std::string> Copy(const CaptureFile& file, const Section& section) const {
        if (m_output.empty() || m_output == "-") {
            BinaryOutput output;
            CopyTo(output, file, section);
            return {};
        }
        OutputFile output(m_output, m_force, {m_file});
        CopyTo(output, file, section);
        output.Commit();
        return output.NotKept();
    }

    void CopyTo(ByteSink& sink, const CaptureFile& file, const Section& section) const {
        const std::uint64_t held = file.Held(section.PayloadOffset(), section.PayloadLength());
        Progress progress("Extracting", held, m_progress);
        CopyRange(file, section.PayloadOffset(), held, sink, [&](std::uint64_t done) { progress.Update(done); });
    }

    std::string m_file;
    std::optional<std::string> m_name;
    std::optional<std::uint32_t> m_version;
    std::optional<std::uint64_t> m_offset;
    std::string m_output;
    bool m_force = false;
    bool m_progress = false;
};

}  // namespace

std::unique_ptr<Command> MakeExtract() { return std::make_unique<Extract>(); }

}  // namespace stmdcm
