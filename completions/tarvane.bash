# Completion of tarvane(1) for bash.

_tarvane_transfer_options='--on-conflict= --on-directory-conflict= -i --interactive -f --force
    -n --no-clobber -u --update -t --target-directory= -T --no-target-directory -p
    --preserve --no-preserve --progress= --interval= -q --quiet -v --verbose --dry-run
    --no-preflight --follow-links --flush= -h --help --version'

# Prints what may follow an option; nothing when that is a file, a number or not an option's value.
_tarvane_values()
{
    case $1 in
        --on-conflict)
            echo ask overwrite skip older compare larger size-differs keep-both fail ;;
        --update) echo older all none none-fail ;;
        --on-directory-conflict) echo ask merge skip fail ;;
        --preserve) echo mode times owner all ownership timestamps ;;
        --progress) echo auto live lines json none ;;
        --flush) echo auto always never ;;
    esac
}

# Without an answer bash completes file names.
_tarvane()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words='' index
    COMPREPLY=()
    for ((index = 1; index < COMP_CWORD; index++)); do
        [[ ${COMP_WORDS[index]} == -- ]] && return
    done
    # bash takes --option=value for three words.
    if [[ $current == = ]]; then
        current=
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    elif [[ $previous == --update || $previous == --preserve ]]; then
        # Its value is optional: what follows as a word of its own is an operand.
        previous=
    fi

    words=$(_tarvane_values "$previous")
    if [[ $previous == -t || $previous == --target-directory ]]; then
        compopt -o dirnames +o default
        return
    elif [[ $COMP_CWORD -gt 1 && ! ${COMP_WORDS[1]} =~ ^(copy|move|tracks|help|-.*)$ ]]; then
        # The place for the right pane; bash takes the colon of a disc for the end of a word.
        compopt -o dirnames +o default
        return
    elif [[ -z $words && $COMP_CWORD -eq 1 ]]; then
        words='copy move tracks help -h --help --version'
        compopt -o plusdirs +o default
    elif [[ $COMP_CWORD -eq 2 && ${COMP_WORDS[1]} == help ]]; then
        words='copy move tracks'
    elif [[ -z $words && $current == -* ]]; then
        case ${COMP_WORDS[1]} in
            copy) words="$_tarvane_transfer_options -r -R --recursive" ;;
            move) words=$_tarvane_transfer_options ;;
            tracks) words='--json -h --help --version' ;;
        esac
    fi

    COMPREPLY=($(compgen -W "$words" -- "$current"))
    [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace
}

complete -o default -F _tarvane tarvane
