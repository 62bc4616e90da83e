#compdef stmdcm
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
