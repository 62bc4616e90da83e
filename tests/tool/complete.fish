# What fish offers for each of the command lines in the file $argv[3], as complete.zsh tells it.
set -p PATH (dirname $argv[2])
source $argv[1]
while read -l line
    echo "> $line"
    complete -C $line | string replace -r '\t.*' ''
end <$argv[3]
