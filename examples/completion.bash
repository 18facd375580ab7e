# Completion of table, words and recode for bash: source this file, or install it as
# /usr/share/bash-completion/completions/table and link the other two names to it.
#
# The options are those that --help lists, the code pages those that recode --pages does.

_kelm_examples() {
    local program=$1 word=$2 before=$3 list=
    # readline hands a colon over as a word of its own.
    [[ $word == : ]] && before=: word=
    [[ ${COMP_WORDS[COMP_CWORD - 1]} == : ]] && before=:
    case $before in
    --from | --to | --out | :) list=$("${program%"${program##*/}"}recode" --pages 2>/dev/null) ;;
    --keep | --sort | --fields | --names | --find | --replace | --remove | --alike) return ;;
    *) [[ $word == -* ]] && list=$("$program" --help | grep -oE -- '--[a-z-]+' | sort -u) ;;
    esac
    if [[ $list ]]; then
        # shellcheck disable=SC2207 # numbers and options have no spaces
        COMPREPLY=($(compgen -W "$list" -- "$word"))
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        compopt -o filenames 2>/dev/null
    fi
}

complete -F _kelm_examples table words recode
