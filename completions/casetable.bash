# bash completion for casetable

_casetable() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local options='-h --help --version -s --string -n --number -a --aux -f --format -o --output
        --files --unmatched --from-list -0 --null -E --exclude -H --hidden -d --max-depth
        -L --follow --keep-going --suggest --explain -q --quiet'
    # Bash takes --format=csv for three words.
    if [[ $current == = ]]; then
        current=
    elif [[ $previous == = && COMP_CWORD -gt 1 ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    COMPREPLY=()
    case $previous in
        -f | --format)
            mapfile -t COMPREPLY < <(compgen -W 'auto table csv tsv json vtt' -- "$current")
            return
            ;;
        -o | --output | --from-list | --explain)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        -s | --string | -n | --number | -a | --aux | -E | --exclude | -d | --max-depth)
            return # What only the user knows.
            ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
    fi
}

complete -F _casetable casetable
