# What the completion offers, asked as zsh asks it: zsh_offers.zsh DIRECTORY LINE...
# The lines are typed into a zsh of its own, whose completion writes down what it offers. Each prints one line.
zmodload zsh/zpty
export TERM=dumb
zpty typist "zsh -f -i"
await() { while [[ ! -e $1 ]]; do sleep 0.05; done; rm -f $1 }
tell() { zpty -w typist "$1; touch done"; await done }
tell "PS1=; fpath=(${(q)1} \$fpath); autoload -U compinit; compinit -u -D; zstyle ':completion:*' insert-tab false"
tell "compadd() { builtin compadd -A offers \"\$@\"; print -rl -- \$IPREFIX\$^offers >>offers; builtin compadd \"\$@\" }"
tell "over() { BUFFER=; : >done }; zle -N over; bindkey '^Xq' over"
for line in "${@:2}"; do
    touch offers
    zpty -w -n typist "$line"$'\t\x18q' # the key behind the tab is read when the completion is over
    await done
    print -r -- $(grep . offers | sort -u)
    rm -f offers
done
zpty -d typist
