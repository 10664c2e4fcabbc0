# What the completion offers, asked as zsh asks it: zsh_offers.zsh DIRECTORY WORDS
# The line is typed into a zsh of its own; completion writes what it would offer into a file.
zmodload zsh/zpty
export TERM=dumb
zpty typist "zsh -f -i"
tell() { zpty -w typist "$1" }
tell "PS1=; fpath=(${(q)1} \$fpath); autoload -U compinit; compinit -u -D"
tell "compadd() { builtin compadd -A offers \"\$@\"; print -rl -- \$IPREFIX\$^offers >>offers; builtin compadd \"\$@\" }"
tell "zstyle ':completion:*' list-prompt ''; zstyle ':completion:*' insert-tab false; rm -f offers; touch ready"
while [[ ! -e ready ]]; do sleep 0.1; done
zpty -w -n typist "$2"$'\t'
sleep ${3:-1}
zpty -d typist
[[ ! -e offers ]] || sort -u offers
rm -f ready offers
