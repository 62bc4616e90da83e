#include <sstream>

#include "tests/tool/ConfigurationRun.h"
#include "tool/cli/CommandLine.h"
#include "tool/cli/HelpFormatter.h"
#include "tool/cli/Syntax.h"
#include "tool/commands/CommandTable.h"

namespace stmdcm {

namespace {

using HelpTest = ConfigurationRun;
using testing::HasSubstr;
using testing::StartsWith;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

/// The end of a command's help, without its title.
std::string Example(const CLI::App& command) {
    const std::string title = "Example:", footer = title + command.get_footer();
    return footer.substr(footer.rfind(title) + title.size());
}

void ExpectNarrow(const std::string& help) {
    for (const std::string& line : Lines(help)) {
        const bool isExample = line.starts_with("  ") && Contains(line, "stmdcm ");
        EXPECT_TRUE(isExample || line.size() <= HelpFormatter::kWidth) << line;
    }
}

}  // namespace

TEST_F(HelpTest, TellsOfEveryCommandAndOptionAndGoesToStandardOutput) {
    const CommandLine commandLine(kCommands);
    const Result program = Run("--help");
    EXPECT_EQ(std::pair(program.status, program.error), std::pair(0, std::string()));
    EXPECT_EQ(Run("-h").out, program.out);
    EXPECT_TRUE(Contains(program.out, "Exit status:\n  0  ") && Contains(program.out, "NO_COLOR"));
    EXPECT_FALSE(Contains(program.out, "help-man"));
    ExpectNarrow(program.out);
    for (const CLI::App* command : commandLine.Syntax().get_subcommands({})) {
        SCOPED_TRACE(command->get_name());
        const std::string help = command->help();
        EXPECT_THAT(Example(*command), StartsWith("\n  "));
        EXPECT_THAT(Example(*command), HasSubstr("stmdcm " + command->get_name()));
        EXPECT_NE(command->get_description(), "");
        EXPECT_THAT(help, HasSubstr("Usage: " + Usage(*command) + "\n"));
        ExpectNarrow(help);
        for (const CLI::Option* option : VisibleOptions(*command)) {
            EXPECT_THAT(help, HasSubstr(Signature(*option)));
        }
    }
    for (const CLI::App* command : VisibleCommands(commandLine.Syntax())) {
        EXPECT_THAT(program.out, HasSubstr(" " + command->get_description() + "\n")) << "too long";
        EXPECT_THAT(program.out, HasSubstr("\n  " + command->get_name() + " "));
    }
    EXPECT_EQ(Contains(Run("completion --help").out, "Exit status:"), false);
    EXPECT_THAT(Run("show --help").out, HasSubstr("--get PROPERTY,..."));
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
        {"sections a b", "the argument \"b\" is one too many for sections", " sections"},
        {"sections show show", "the argument \"show\" is one too many for sections", " sections"},
        {"show", "FILE is required", " show"},
        {"set STM_ATB_Id=1", "FILE is required", " set"},
        {"set f", "NAME=VALUE is required", " set"},
        {"completion tcsh", "SHELL: \"tcsh\" is none of bash, zsh, fish", " completion"},
        {"nonsense --help", "there is no command \"nonsense\"", ""},
        {"--version nonsense", "there is no command \"nonsense\"", ""},
        {"restore f", "NUMBER is required", " restore"},
        {"restore f -1", "NUMBER: \"-1\" is no whole number", " restore"},
        {"extract f n --version=4294967296", "--version: 4294967296 is more than 4294967295", " extract"},
        {"sections $(printf '\\033[2J') b", "the argument \"b\" is one too many for sections", " sections"},
        {"sections a $(printf '\\033[2J\\302\\233\\377')",
         "the argument \"\\x1b[2J\\xc2\\x9b\\xff\" is one too many for sections", " sections"},
        {"convert a -o b.tdf --as settings", "--as requires -o -: what a file is to be, its name says", " convert"},
        {"history f --prune 1 --force", "--force requires --output", " history"},
        {"extract f n --force", "--force requires --output", " extract"},
        {"live --cpu c --force", "--force requires --save or --record", " live"},
        {"live --cpu c --record ''", "--record: it is empty", " live"},
        {"live --cpu c --save x --record ./x", "--record: names the file of --save", " live"},
        {"validate l --timeout 0", "--timeout: 0 is less than 1", " validate"},
        {"check --list --portable", "--list excludes --portable", " check"},
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
    const std::string file = Path("none.tdf");
    const std::string full = STMDCM_TEST_DATA "/full.tdf";
    const std::string settings = STMDCM_TEST_DATA "/settings.txt";
    const std::string broken = STMDCM_TEST_DATA "/settings-unknown-key.txt";
    ::setenv("F", file.c_str(), 1);
    const std::pair<std::string, std::string> cases[] = {
        // the command line, and the file that it fails for
        {"show $F", file},
        {"sections $F", file},
        {"explain $F STM_ATB_Id", file},
        {"bundle $F -o ${F}2", file},
        {"unbundle $F", file},
        {"recover $F -o ${F}2.tdf", file},
        {"set $F STM_ATB_Id=1", file},
        {"apply $F " + settings, file},
        {"convert $F settings", file},
        {"diff $F $F", file},
        {"objects $F", file},
        {"history $F", file},
        {"validate $F", file},
        {"restore $F 1", file},
        {"live --cpu 0 --scenario $F", file},
        {"recover --plan --split 7 " + full, full},
        {"set " + broken + " STM_STP_Version=2", broken},
        {"apply --only objects " + settings + " $F", settings},
    };
    for (const auto& [line, about] : cases) {
        SCOPED_TRACE(line);
        const Result result = Run("--json " + line);
        EXPECT_EQ(result.status, line.starts_with("diff") ? 4 : 1);
        const Json document = Json::parse(result.out);
        EXPECT_EQ(document.at("command"), line.substr(0, line.find(' ')));
        const Json& failure = document.at("failure");
        EXPECT_EQ(failure.at("file"), about);
        EXPECT_TRUE(failure.at("offset").is_null());
        EXPECT_EQ(result.error, "stmdcm: " + about + ": " + failure.at("cause").get<std::string>() + "\n");
        ExpectNothingLeft();
    }
}

TEST_F(HelpTest, OutputThatIsLostIsAFailure) {
    const std::string full = Sample("full.tdf");
    const auto run = [&](const std::string& arguments) { return Shell("sh -c '" STMDCM_TOOL " " + arguments + "'"); };
    for (const std::string& arguments :
         {std::string("--help"), std::string("--version"), std::string("show --help"), std::string("help-man"),
          std::string("completion zsh"), std::string("complete -- s"), "show " + full, "sections --json " + full,
          "diff --json " + full + " " + full, "report -o - " + full, "extract " + full + " TRACE0"}) {
        SCOPED_TRACE(arguments);
        const Result result = run(arguments + " >/dev/full");
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.error, StartsWith("stmdcm: standard output can't be written: "));
        EXPECT_EQ(run(arguments + " >&-").error, "stmdcm: standard output can't be written: Bad file descriptor\n");
    }
    // What goes to standard error changes nothing.
    const std::string convert = "convert --force " + full + " " + Path("to.txt"), one = Path("one.tdf");
    std::filesystem::copy_file(full, one);
    for (const auto& [arguments, status] : {std::pair("check /none " + full, 4),
                                            {"diff /none " + full, 4},
                                            {convert, 3},
                                            {"apply " + Sample("settings-packed.txt") + " /none " + one, 1}}) {
        EXPECT_EQ(run(arguments + " 2>/dev/full").status, status) << arguments;
    }
    EXPECT_TRUE(Content(one) != Content(full)) << "apply goes on";
    // A file must not take the place of a closed descriptor.
    const std::string extract = "extract " + full + " TRACE0 --progress --force -o " + Path("payload");
    ASSERT_EQ(run(extract).status, 0);
    const std::string payload = Content(Path("payload"));
    for (const std::string closed : {" 0<&-", " 1>&-", " 2>&-", " 0<&- 1>&- 2>&-"}) {
        SCOPED_TRACE(closed);
        EXPECT_EQ(run("show /none" + closed).status, 1);
        EXPECT_EQ(run(extract + closed).status, 0);
        EXPECT_EQ(Content(Path("payload")), payload);
    }
}

TEST_F(HelpTest, TheManualPageSaysWhatTheHelpSays) {
    std::string plain = Run("help-man").out;
    const CommandLine commandLine(kCommands);
    for (const std::string& line : Lines(plain)) {
        EXPECT_TRUE(line[0] != '.' || Contains(".TH.SH.SS.TP.PP.nf.fi.B ", line.substr(0, 3))) << line;
    }
    for (std::size_t dash = 0; (dash = plain.find("\\-")) != std::string::npos;) {
        plain.erase(dash, 1);
    }
    for (const CLI::App* command : VisibleCommands(commandLine.Syntax())) {
        EXPECT_THAT(plain, HasSubstr(".SS " + Usage(*command) + "\n" + command->get_description() + ".\n"));
        for (const CLI::Option* positional : Positionals(*command)) {
            EXPECT_THAT(plain, HasSubstr(".B " + Signature(*positional) + "\n" + positional->get_description() + "\n"));
        }
        EXPECT_THAT(plain, HasSubstr(Example(*command)));
    }
    for (const std::string title : {"EXIT STATUS", "ENVIRONMENT", "FILES", "SEE ALSO"}) {
        EXPECT_THAT(plain, HasSubstr(".SH " + title + "\n"));
    }
    if (Shell("command -v groff").status != 0) {
        GTEST_SKIP() << "groff is not installed";
    }
    EXPECT_EQ(Shell(STMDCM_TOOL " help-man | groff -man -Tascii -ww").error, "");
}

}  // namespace stmdcm
