# fish completion for stmdcm. The program itself says what its command line can go on with.

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
