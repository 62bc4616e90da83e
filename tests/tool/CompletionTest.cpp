#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/tool/ConfigurationRun.h"
#include "tool/cli/CommandLine.h"
#include "tool/cli/Syntax.h"
#include "tool/commands/CommandTable.h"

namespace stmdcm {

namespace {

/// A directory with files of every kind, and a shell in it.
class CompletionTest : public ConfigurationRun {
  protected:
    CompletionTest() {
        std::filesystem::create_directory(Path("folder"));
        Write("full.tdf", Content(Sample("full.tdf")));
        Run("set " + Path("full.tdf") + " STM_ATB_Id=1");
        Run("set " + Path("full.tdf") + " STM_ATB_Id=2");
        for (const char* name : {"a b.tdf", "notes.md", "other.so", "settings.txt", "UPPER.TDF"}) {
            Write(name, "");
        }
    }

    std::string InShell(const std::string& program, const std::string& text) const {
        const std::string script = Home() / "script";
        stmdcm_test::WriteWhole(script, "cd '" + Temporary().string() + "'\n" + text);
        const Result result = Shell(program + " " + script);
        EXPECT_EQ(result.error, "");
        EXPECT_EQ(result.status, 0);
        return result.out;
    }

    /// What bash offers when the cursor is in the last of `words`, as bash takes words apart.
    std::string InBash(const std::string& words) const {
        return Sorted(InShell("bash", "source <(" STMDCM_TOOL " completion bash)\nCOMP_WORDS=(" STMDCM_TOOL " " +
                                          words +
                                          ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_stmdcm\n"
                                          "printf '%s\\n' \"${COMPREPLY[@]}\"\n"));
    }

    /// Such words as they are typed.
    static std::string Typed(const std::string& words) {
        const std::string joined = std::regex_replace(words, std::regex(" = ?"), "=");
        return "stmdcm " + std::regex_replace(joined, std::regex("'([^']*)'"), "$1");
    }

    /// What another shell offers for each line: as bash does, without what stands in front of a "=" and behind a
    /// folder.
    std::map<std::string, std::string> In(const std::string& shell, const std::string& lines) const {
        stmdcm_test::WriteWhole(Home() / "lines", lines);
        const std::string script = Home() / "_stmdcm";
        std::istringstream in(InShell("sh", STMDCM_TOOL " completion " + shell + " >" + script + "\n" + shell +
                                                " " STMDCM_TEST_DATA "/../tool/complete." + shell + " " + script +
                                                " " STMDCM_TOOL " " + (Home() / "lines").string()));
        std::map<std::string, std::string> offered;
        std::string typed;
        for (std::string line; std::getline(in, line);) {
            if (line.starts_with("> ")) {
                typed = line.substr(2);
                offered[typed];
            } else {
                const std::string start = typed.substr(typed.rfind(' ') + 1, typed.rfind('=') - typed.rfind(' '));
                line.erase(0, start.ends_with('=') && line.starts_with(start) ? start.size() : 0);
                offered[typed] += std::regex_replace(line, std::regex(R"(\\|/$)"), "") + "\n";
            }
        }
        for (auto& [line, words] : offered) {
            words = Sorted(words);
        }
        return offered;
    }

    /// The first words of the lines, up to a tab, in order, with commas between them.
    static std::string Sorted(const std::string& lines) {
        std::set<std::string> words;
        std::istringstream in(lines);
        for (std::string line; std::getline(in, line);) {
            words.insert(line.substr(0, line.find('\t')));
        }
        return CLI::detail::join(words, ",");
    }

    static std::string EveryCommand() {
        const CommandLine commandLine(kCommands);
        std::string lines;
        for (const CLI::App* command : VisibleCommands(commandLine.Syntax())) {
            lines += command->get_name() + "\n";
        }
        return Sorted(lines);
    }
};

}  // namespace

TEST_F(CompletionTest, EveryShellOffersWhatFits) {
    const std::pair<const char*, const char*> cases[] = {
        {"sho", "show"},
        {"--js", "--json"},
        {"nosuch", ""},
        {"show --ch", "--changed"},
        {"show --pl", "--plugin"},
        {"--color ''", "always,auto,never"},
        {"show --color a", "always,auto"},
        {"--color = ne", "never"},
        {"--color =", "always,auto,never"},
        {"completion ''", "bash,fish,zsh"},
        {"show ''", "UPPER.TDF,a b.tdf,folder,full.tdf,settings.txt"},
        {"show 'a\\ '", "a b.tdf"},
        {"show no", "notes.md"},
        {"show -- --ch", ""},
        {"sections full.tdf ''", ""},
        {"show full.tdf se", "settings.txt"},
        {"--json --color never show fu", "full.tdf"},
        {"--plugin ''", "folder,other.so"},
        {"--plugin = o", "other.so"},
        {"demo --keep ''", "folder"},
        {"apply settings.txt full.tdf ''", "UPPER.TDF,a b.tdf,folder,full.tdf"},
        {"set full.tdf STM_ATB", "STM_ATB_Id="},
        {"set full.tdf STM_ATB_Id = 3 HEAD_Po", "HEAD_Pointer_0=,HEAD_Pointer_1="},
        {"set full.tdf STM_VornLib_Import =", "no,yes"},
        {"set full.tdf STM_VornLib_Import = y", "yes"},
        {"set full.tdf STM_ATB_Id =", ""},
        {"extract full.tdf ''", "DCM_COMMON,DEVID,STMDECODERINFO,TRACE0"},
        {"extract notes.md ''", ""},
        {"explain full.tdf co", "core0,core1"},
        {"explain full.tdf STM_ATB", "STM_ATB_Id"},
        {"set full.tdf se", "settings.txt"},
        {"show --get STM_ATB_Id,STM_ATB", "STM_ATB_Id,STM_ATB_Id"},
        {"check --ignore O-MISSING,O-D", "O-MISSING,O-DUPLICATE"},
        {"apply settings.txt --only use", "usecases"},
        {"validate ''", "folder,other.so"},
        {"validate --only life,text.pi", "life,text.pipe"},
        {"restore full.tdf ''", "2,3"},
        {"restore full.tdf full.tdf 3", "3"},
        {"restore full.tdf se", "settings.txt"},
        {"live --scenario " STMDCM_TEST_DATA "/../../sim/scenarios/example.json --cpu ''",
         "Core_0/Cluster,Core_1/Cluster"},
        {"live --cpu ''", ""}};
    for (const auto& [words, offered] : cases) {
        EXPECT_EQ(InBash(words), offered) << words;
    }
    EXPECT_EQ(InBash("''"), EveryCommand());
    std::string lines;
    for (const auto& [words, offered] : cases) {
        lines += Typed(words) + "\n";
    }
    for (const char* shell : {"zsh", "fish"}) {
        auto told = In(shell, lines + "stmdcm \n");
        for (const auto& [words, offered] : cases) {
            EXPECT_EQ(told[Typed(words)], offered) << shell << ": " << Typed(words);
        }
        EXPECT_EQ(told["stmdcm "], EveryCommand()) << shell;
    }
}

}  // namespace stmdcm
