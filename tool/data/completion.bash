# bash completion for stmdcm. The program itself says what its command line can go on with.

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
        word=$(printf %q "${word#"$start"}")
        COMPREPLY+=("${word//\\,/,}")
    done
    [[ ${#COMPREPLY[@]} -gt 0 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace 2>/dev/null
}

complete -F _stmdcm stmdcm
