#include <algorithm>
#include <iterator>
#include <string_view>

#include "tool/commands/CommandTable.h"

namespace stmdcm {

namespace {

// The scripts know no command: they ask the program that stands on the line what its words can go on with (`complete`).

constexpr char kBash[] =
    R"bash(# bash completion for stmdcm. The program itself says what its command line can go on with.

# _stmdcm_files KIND EXTENSIONS WORD: directories and, for the kind "files", what has one of the extensions; every file
# when nothing fits.
_stmdcm_files() {
    local path extension word=${3//\\/}
    local -a all=()
    mapfile -t all < <(compgen -f -- "${word#[\"\']}")
    for path in "${all[@]}"; do
        if [[ -d ${path/#\~\//$HOME/} ]]; then
            COMPREPLY+=("$path")
        elif [[ $1 == files ]]; then
            for extension in $2; do
                [[ ${path,,} == *"$extension" ]] && COMPREPLY+=("$path")
            done
        fi
    done
    [[ $1 == files && ${#COMPREPLY[@]} -eq 0 ]] && COMPREPLY=("${all[@]}")
    compopt -o filenames 2>/dev/null
}

_stmdcm() {
    local word kind extensions line current=${COMP_WORDS[COMP_CWORD]}
    local -a words=() lines=()
    # "=" is a word of its own here.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        if [[ ${#words[@]} -gt 0 && ($word == = || ${words[-1]} == *=) ]]; then
            words[-1]+=$word
        else
            words+=("${word//\\/}")
        fi
    done
    [[ $current == = ]] && current=
    COMPREPLY=()
    mapfile -t lines < <("${COMP_WORDS[0]/#\~\//$HOME/}" complete -- "${words[@]}" 2>/dev/null)
    read -r kind extensions <<<"${lines[0]}"
    if [[ $kind == files || $kind == directories ]]; then
        _stmdcm_files "$kind" "$extensions" "$current"
        return
    fi
    local start=${words[-1]%"$current"}
    for line in "${lines[@]:1}"; do
        word=${line%%$'\t'*}
        COMPREPLY+=("$(printf %q "${word#"$start"}")")
    done
    [[ ${#COMPREPLY[@]} -gt 0 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace 2>/dev/null
}

complete -F _stmdcm stmdcm
)bash";

constexpr char kZsh[] = R"zsh(#compdef stmdcm
# zsh completion for stmdcm. The program itself says what its command line can go on with.

_stmdcm() {
    local -a lines names shown extensions space
    local line name
    local -i width=0
    lines=("${(@f)$("${(Q)words[1]/#\~\//$HOME/}" complete -- "${(@Q)words[2,CURRENT]}" 2>/dev/null)}")
    extensions=(${=lines[1]#files})
    case ${lines[1]} in
        files*)
            compset -P '--*='
            if (( $#extensions )); then
                _files -g "(#i)*(${(j:|:)extensions})(-.)"
            else
                _files
            fi
            ;;
        directories)
            compset -P '--*='
            _files -/
            ;;
        words)
            for line in "${(@)lines[2,-1]}"; do
                name=${line%%$'\t'*}
                names+=("$name")
                (( $#name > width )) && width=$#name
            done
            for line in "${(@)lines[2,-1]}"; do
                shown+=("${(r:width:)line%%$'\t'*}  ${line#*$'\t'}")
            done
            [[ ${names[1]} == *= ]] && space=(-S '')
            (( $#names )) && compadd "${(@)space}" -l -d shown -a names
            ;;
    esac
}

if [[ ${funcstack[1]} == _stmdcm ]]; then
    _stmdcm "$@"
else
    compdef _stmdcm stmdcm
fi
)zsh";

constexpr char kFish[] =
    R"fish(# fish completion for stmdcm. The program itself says what its command line can go on with.

function __stmdcm_files --argument-names start path
    set -l all (complete -C "__stmdcm_nothing $path")
    set -l fitting (string match -r -- '^.*/$' $all)
    for extension in $argv[3..]
        set -a fitting (string match -i -- "*$extension" $all)
    end
    if test (count $argv) -lt 3; or test (count $fitting) -eq 0
        set fitting $all
    end
    test -n "$fitting"; and printf '%s\n' $start$fitting
end

function __stmdcm_complete
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    set -l program $words[1]
    set -e words[1]
    set -l lines ($program complete -- $words "$current" 2>/dev/null)
    set -l kind (string split -n ' ' -- $lines[1])
    set -l start (string match -r -- '^--[^=]*=' $current)
    set -l path (string replace -r -- '^--[^=]*=' '' $current)
    switch "$kind[1]"
        case files
            __stmdcm_files "$start" "$path" $kind[2..]
        case directories
            __stmdcm_files "$start" "$path" /
        case words
            set -e lines[1]
            test -n "$lines"; and printf '%s\n' $lines
    end
end

complete -c stmdcm -f -a '(__stmdcm_complete)'
)fish";

struct Script {
    const char* shell;  ///< the name of its program
    std::string_view text;
};

constexpr Script kScripts[] = {{"bash", kBash}, {"zsh", kZsh}, {"fish", kFish}};

/// The script that completes this program's command lines in a shell.
class PrintCompletion final : public Command {
  public:
    void Declare(CLI::App& app) override {
        std::vector<std::string> shells;
        std::transform(std::begin(kScripts), std::end(kScripts), std::back_inserter(shells),
                       [](const Script& script) { return script.shell; });
        app.add_option("SHELL", m_shell, "bash, zsh or fish")->required()->check(CLI::IsMember(shells));
        app.footer(
            "The installed program completes by itself where the shell looks for such scripts below its prefix. "
            "Elsewhere the example does it for bash, in this shell or in ~/.bashrc.\n\nExample:\n"
            "  source <(stmdcm completion bash)");
    }

    ExitStatus Run(const Context& context) override {
        const auto* script = std::find_if(std::begin(kScripts), std::end(kScripts),
                                          [&](const Script& each) { return each.shell == m_shell; });
        context.console.Print(script->text);
        return ExitStatus::Done;
    }

  private:
    std::string m_shell;
};

}  // namespace

std::unique_ptr<Command> MakeCompletion() { return std::make_unique<PrintCompletion>(); }

}  // namespace stmdcm
