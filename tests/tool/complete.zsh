# What zsh offers for each of the command lines in the file $3, in a terminal of its own, with the completion $1 for the
# program $2: a line "> LINE", and behind it a line for each offer.
zmodload zsh/zpty
zpty shell "TERM=dumb zsh -f -i"
offer() {
    local text
    zpty -w -n shell "$1"$'\t'
    zpty -r shell text $'*\ndone\r\n'
    print -r -- "> $1"
    print -r -- ${(F)${(M)${(f)${text//$'\r'}}:#offer:*}#offer:}
}
zpty -w shell "stty -echo; PS1= PS2= RPS1=; setopt no_prompt_sp no_auto_list no_beep; path=(${2:h} \$path); fpath=(${1:h} \$fpath)
autoload -U compinit; compinit -u -D
compadd() { local -a hits; builtin compadd -O hits \"\$@\"; print -rl -- \${hits/#/offer:}; builtin compadd \"\$@\" }
show-offers() { print; zle list-choices; print; print done; zle kill-whole-line }
zle -N show-offers; bindkey '^I' show-offers; print; print ready"
zpty -r shell ready $'*\nready\r\n'
while IFS= read -r line; do offer "$line"; done <$3
zpty -d shell
