# shellcheck shell=bash
# Completes the command lines of orvel-analytics and orvel-analyticsd in bash. What there is to
# complete is read from the help of the command at hand, so that both always agree.

# Prints the commands that a help text lists.
_orvel_commands() { sed -n '/^Subcommands:/I,$ { s/^  \([a-z][a-z-]*\)  .*/\1/p; }' <<<"$1"; }

# Prints the options that a help text lists, and what follows each of them on its line.
_orvel_options() { sed -n 's/^  \(-[a-z],\)\?\(--[a-z][a-z-]*\)/\2/p' <<<"$1"; }

# Prints what kind of value an option takes, such as "FILE REQUIRED" or "ANSWER:{accepted,rejected}";
# nothing for an option without a value. Two blanks part it from the explanation.
_orvel_value() { _orvel_options "$1" | sed -n "s/  .*//; s/^$2 \\([A-Z][A-Z]*\\b.*\\)/\\1/p"; }

# Sets COMPREPLY to the values of a kind that begin with a word.
_orvel_complete_value() {
    local kind=$1 word=$2
    case $kind in
        *"{"*"}"*)
            kind=${kind#*\{}
            kind=${kind%%\}*}
            mapfile -t COMPREPLY < <(compgen -W "${kind//,/ }" -- "$word")
            ;;
        FILE* | EVENTS*)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            ;;
        DIR*)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            ;;
    esac
}

_orvel() {
    local program=${COMP_WORDS[0]/#\~/$HOME} word=${COMP_WORDS[COMP_CWORD]}
    local help index given kind='' commands=()
    COMPREPLY=()
    help=$("$program" --help 2>/dev/null) || return 0
    # Everything before the word: commands, whose own help counts from there on, and options, of
    # which the last one may want the word for its value. "=" is a word of its own.
    for ((index = 1; index < COMP_CWORD; index++)); do
        given=${COMP_WORDS[index]}
        if [[ $given == --* ]]; then
            kind=$(_orvel_value "$help" "$given")
        elif [[ $given == = ]]; then
            continue
        elif [[ -n $kind ]]; then
            # Of some options there may be several values.
            [[ $kind == *...* ]] || kind=
        elif _orvel_commands "$help" | grep -qxF -- "$given"; then
            commands+=("$given")
            help=$("$program" "${commands[@]}" --help 2>/dev/null) || return 0
        fi
    done
    [[ $word != = ]] || word=
    if [[ -n $kind && $word != --* ]]; then
        _orvel_complete_value "$kind" "$word"
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_orvel_options "$help" | sed 's/[ =].*//')" -- "$word")
    elif [[ -n $(_orvel_commands "$help") ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_orvel_commands "$help")" -- "$word")
    else
        # What is left is the file that some commands read.
        kind=$(sed -n '/^Positionals:/I,/^$/ s/^  \([A-Z]*\).*/\1/p' <<<"$help" | head -n 1)
        _orvel_complete_value "$kind" "$word"
    fi
}

complete -F _orvel orvel-analytics orvel-analyticsd
