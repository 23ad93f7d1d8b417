# Completion of hexmire for bash: source this file, or put it as `hexmire` into
# /usr/share/bash-completion/completions. The program itself tells what there is.

# The rows below a heading of a help text, "  name  description".
_hexmire_rows() {
    awk -v heading="$1:" '/^[A-Z][a-z]+:$/ { inside = $0 == heading; next }
                          inside && /^  [^ ]/ { print $1, $2 }'
}

_hexmire() {
    local program=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local commands=() word text subcommands options kind
    COMPREPLY=()
    text=$("$program" --help 2>/dev/null) || return
    # Which command it is: words that are sub-commands, from the first on.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD - 1}"; do
        subcommands=$(_hexmire_rows Subcommands <<<"$text" | cut -d ' ' -f 1)
        grep -qxF -e "$word" <<<"$subcommands" || break
        commands+=("$word")
        text=$("$program" "${commands[@]}" --help 2>/dev/null) || return
    done
    subcommands=$(_hexmire_rows Subcommands <<<"$text" | cut -d ' ' -f 1)
    options=$(_hexmire_rows Options <<<"$text" | sed 's/^-h,//')
    kind=$(awk -v option="$before" '$1 == option { print $2 }' <<<"$options")
    case $kind in
        FILE* | FOLDER | DEVICE) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
        *[a-z0-9]\|*) mapfile -t COMPREPLY < <(compgen -W "${kind//|/ }" -- "$current") ;;
        [A-Z]*[A-Z]*) ;;
        *)
            if [[ $current == -* ]]; then
                mapfile -t COMPREPLY < <(compgen -W "$(cut -d ' ' -f 1 <<<"$options")" -- "$current")
            elif [[ -n $subcommands ]]; then
                mapfile -t COMPREPLY < <(compgen -W "$subcommands" -- "$current")
            else
                mapfile -t COMPREPLY < <(compgen -f -- "$current")
            fi
            ;;
    esac
}

complete -o filenames -F _hexmire hexmire
