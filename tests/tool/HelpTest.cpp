#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/tool/ToolRun.h"
#include "tool/cli/CommandLine.h"
#include "tool/cli/HelpFormatter.h"
#include "tool/cli/Syntax.h"
#include "tool/commands/CommandTable.h"

namespace stmdcm {

namespace {

using HelpTest = ToolRun;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

/// The end of a command's help.
std::string Example(const CLI::App& command) {
    const std::string footer = command.get_footer();
    const std::size_t place = footer.rfind("Example:");
    return place == std::string::npos ? "" : footer.substr(place);
}

void ExpectNarrow(const std::string& help) {
    for (const std::string& line : Lines(help)) {
        const bool isExample = line.starts_with("  ") && Contains(line, "stmdcm ");
        EXPECT_TRUE(isExample || line.size() <= HelpFormatter::kWidth) << line;
    }
}

}  // namespace

TEST_F(HelpTest, EveryCommandIsOneLineAndHasAnExample) {
    const CommandLine commandLine(kCommands);
    const std::string program = Run("--help").out;
    ExpectNarrow(program);
    for (const CLI::App* command : commandLine.Syntax().get_subcommands({})) {
        SCOPED_TRACE(command->get_name());
        const std::string example = Example(*command);
        EXPECT_TRUE(example.starts_with("Example:\n  ") && Contains(example, "stmdcm " + command->get_name()));
        EXPECT_NE(command->get_description(), "");
        const std::string help = command->help();
        ExpectNarrow(help);
        EXPECT_TRUE(Contains(help, "Usage: " + Usage(*command) + "\n")) << help;
        for (const CLI::Option* option : VisibleOptions(*command)) {
            EXPECT_TRUE(Contains(help, Signature(*option))) << help;
        }
    }
    for (const CLI::App* command : VisibleCommands(commandLine.Syntax())) {
        EXPECT_TRUE(Contains(program, " " + command->get_description() + "\n")) << "too long: " << command->get_name();
        EXPECT_TRUE(Contains(program, "\n  " + command->get_name() + " "));
    }
}

TEST_F(HelpTest, TellsOfStatusesAndEnvironmentAndGoesToStandardOutput) {
    for (const char* arguments : {"--help", "-h", "completion --help"}) {
        const Result result = Run(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.error, "");
        EXPECT_EQ(Contains(result.out, "Exit status:\n  0  "), !Contains(arguments, "completion"));
    }
    EXPECT_TRUE(Contains(Run("--help").out, "NO_COLOR"));
    EXPECT_FALSE(Contains(Run("--help").out, "help-man"));
}

TEST_F(HelpTest, AWrongCommandLineGetsOneSentenceAndTheWayToHelp) {
    const struct {
        const char* arguments;
        const char* sentence;
        const char* command;
    } cases[] = {
        {"", "a command is required", ""},
        {"shwo f", "there is no command \"shwo\"; did you mean show?", ""},
        {"complet bash", "there is no command \"complet\"; did you mean completion?", ""},
        {"frobnicate", "there is no command \"frobnicate\"", ""},
        {"--jsno", "there is no option --jsno; did you mean --json?", ""},
        {"show --colour=always f", "there is no option --colour; did you mean --color?", " show"},
        {"show --propertes", "there is no option --propertes; did you mean --properties?", " show"},
        {"show -z f", "there is no option -z", " show"},
        {"--changed show f", "the option --changed belongs behind the command show", " show"},
        {"show a b", "the argument \"b\" is one too many for show", " show"},
        {"show show show", "the argument \"show\" is one too many for show", " show"},
        {"show", "FILE is required", " show"},
        {"set f", "NAME=VALUE is required", " set"},
        {"completion tcsh", "SHELL: \"tcsh\" is none of bash, zsh, fish", " completion"},
        {"nonsense --help", "there is no command \"nonsense\"", ""},
        {"--version nonsense", "there is no command \"nonsense\"", ""},
        {"restore f -1", "number: \"-1\" is no whole number", " restore"},
        {"extract f n --version=4294967296", "--version: 4294967296 is more than 4294967295", " extract"},
        {"show $(printf '\\033[2J') b", "the argument \"b\" is one too many for show", " show"},
        {"show a $(printf '\\033[2J\\302\\233\\377')",
         "the argument \"\\x1b[2J\\xc2\\x9b\\xff\" is one too many for show", " show"},
        {"demo --color", "--color needs a value, WHEN", " demo"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const Result result = Run(c.arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.error, std::string("stmdcm: ") + c.sentence + "\nRun stmdcm" + c.command +
                                    " --help for more information.\n");
    }
}

TEST_F(HelpTest, AFailureIsADocumentToo) {
    const std::string file = (Temporary() / "none.tdf").string();
    const std::string settings = STMDCM_TEST_DATA "/settings.txt";
    const std::string full = STMDCM_TEST_DATA "/full.tdf";
    const std::string broken = STMDCM_TEST_DATA "/settings-unknown-key.txt";
    const struct {
        std::string command;
        std::string arguments;
        int status = 1;
        std::string about = {};  ///< another file than the one that is not there
    } cases[] = {
        {"show", file},
        {"sections", file},
        {"recover", file + " -o " + file + "2.tdf"},
        {"set", file + " STM_ATB_Id=1"},
        {"apply", file + " " + settings},
        {"convert", file + " " + settings + "2"},
        {"diff", file + " " + settings, 4},
        {"objects", file},
        {"history", file},
        {"restore", file + " 1"},
        {"live", "--cpu Core_0 --scenario " + file},
        {"recover", "--plan --split 7 " + full, 1, full},
        {"set", broken + " STM_STP_Version=2", 1, broken},
        {"apply", "--only objects " + settings + " " + file, 1, settings},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        const Result result = Run(c.command + " --json " + c.arguments);
        EXPECT_EQ(result.status, c.status);
        const auto document = nlohmann::json::parse(result.out);
        EXPECT_EQ(document.at("command"), c.command);
        const auto& failure = document.at("failure");
        const std::string about = c.about.empty() ? file : c.about;
        EXPECT_EQ(failure.at("file"), about);
        EXPECT_TRUE(failure.at("offset").is_null());
        EXPECT_EQ(result.error, "stmdcm: " + about + ": " + failure.at("cause").get<std::string>() + "\n");
        ExpectNothingLeft();
    }
}

TEST_F(HelpTest, OutputThatIsLostIsAFailure) {
    const std::string full = STMDCM_TEST_DATA "/full.tdf";
    const auto run = [&](const std::string& arguments) { return Shell("sh -c '" STMDCM_TOOL " " + arguments + "'"); };
    for (const std::string& arguments :
         {std::string("--help"), std::string("--version"), std::string("show --help"), std::string("help-man"),
          std::string("completion zsh"), std::string("complete -- s"), "show " + full, "sections --json " + full,
          "diff --json " + full + " " + full, "extract " + full + " TRACE0"}) {
        SCOPED_TRACE(arguments);
        const Result result = run(arguments + " >/dev/full");
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(result.error.starts_with("stmdcm: standard output can't be written: ")) << result.error;
    }
    // A file must not take the place of a closed descriptor.
    const std::string output = (Temporary() / "payload").string();
    const std::string extract = "extract " + full + " TRACE0 --progress --force -o " + output;
    ASSERT_EQ(run(extract).status, 0);
    const auto size = std::filesystem::file_size(output);
    for (const std::string closed : {" 0<&-", " 1>&-", " 2>&-", " 0<&- 1>&- 2>&-"}) {
        SCOPED_TRACE(closed);
        EXPECT_EQ(run("show /none" + closed).status, 1);
        EXPECT_EQ(run(extract + closed).status, 0);
        EXPECT_EQ(std::filesystem::file_size(output), size);
    }
}

TEST_F(HelpTest, TheManualPageSaysWhatTheHelpSays) {
    const std::string page = Run("help-man").out;
    const CommandLine commandLine(kCommands);
    std::string plain;
    for (const std::string& line : Lines(page)) {
        EXPECT_TRUE(line[0] != '.' || Contains(" .TH .SH .SS .TP .PP .nf .fi .B ", " " + line.substr(0, 3) + " ") ||
                    line.starts_with(".B "))
            << line;
        plain += line + "\n";
    }
    for (std::size_t dash = 0; (dash = plain.find("\\-")) != std::string::npos;) {
        plain.erase(dash, 1);
    }
    for (const CLI::App* command : VisibleCommands(commandLine.Syntax())) {
        EXPECT_TRUE(Contains(plain, ".SS " + Usage(*command) + "\n" + command->get_description() + ".\n"));
        for (const CLI::Option* positional : Positionals(*command)) {
            EXPECT_TRUE(Contains(plain, ".B " + Signature(*positional) + "\n" + positional->get_description() + "\n"));
        }
        EXPECT_TRUE(Contains(plain, Example(*command).substr(std::string("Example:").size())));
    }
    for (const char* title : {"EXIT STATUS", "ENVIRONMENT", "FILES", "SEE ALSO"}) {
        EXPECT_TRUE(Contains(page, std::string(".SH ") + title + "\n")) << title;
    }
    if (Shell("command -v groff").status != 0) {
        GTEST_SKIP() << "groff is not installed";
    }
    EXPECT_EQ(Shell(STMDCM_TOOL " help-man | groff -man -Tascii -ww").error, "");
}

}  // namespace stmdcm
