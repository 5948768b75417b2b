#!/usr/bin/env -S zsh -f
#
# complete.zsh FOLDER LINE...: what zsh offers at the end of each line, with the
# completions of FOLDER: an interactive zsh on a terminal of its own gets the line and a
# Tab, and notes each match. A line of its own, "--", ends the matches of each line.
emulate -L zsh
zmodload zsh/zpty
zmodload zsh/datetime

notes=$(mktemp -d)
trap 'rm -rf $notes' EXIT
cat > $notes/start <<'START'
PROMPT=
fpath=($FOLDER $fpath)
autoload -Uz compinit
compinit -u -d $NOTES/dump
zstyle ':completion:*' menu no
compadd() {
    # What only sorts into an array is no offer.
    if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then
        builtin compadd "$@"
        return
    fi
    local -a noted
    builtin compadd -A noted "$@"
    print -lr -- $noted >> $NOTES/matches
    builtin compadd "$@"
}
end_of_matches() {
    comppostfuncs=(end_of_matches) # once is all that zsh keeps it for
    print > $NOTES/ended
}
comppostfuncs=(end_of_matches)
bindkey '^I' complete-word
print > $NOTES/ready
START

# wait_for FILE: at most a minute, on a machine that has much else to do.
wait_for() {
    local until=$(( EPOCHREALTIME + 60 )) ignored
    until [[ -e $notes/$1 ]]; do
        zpty -rt shell ignored || sleep 0.02
        if (( EPOCHREALTIME > until )); then
            print -u2 "zsh doesn't answer: no $1"
            exit 1
        fi
    done
    rm -f $notes/$1
}

folder=$1
shift
zpty shell "env TERM=dumb NOTES=$notes FOLDER=$folder zsh -f -i"
zpty -w shell "source $notes/start"
wait_for ready
for line; do
    rm -f $notes/matches
    zpty -wn shell $'\C-u'"$line"$'\t'
    wait_for ended
    if [[ -e $notes/matches ]]; then
        sort -u $notes/matches
    fi
    print -- --
done
zpty -d shell
