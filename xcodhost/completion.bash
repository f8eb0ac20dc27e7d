# Bash completion of xcodhost. Reads the commands, options and checks from the output of the tool, so that the
# completion always agrees with the tool.

# Prints the first word of each line in one section of a help text: _xcodhost_words SECTION <HELP
_xcodhost_words() {
    sed -nE "/^$1:\$/,/^\$/s/^  (-h,)?([^ ]+).*/\2/p"
}

# Prints the kind of the current word according to the help text: DIR, FILE, ID or nothing. Prints "ID ..." if the
# word can be a further value of an option that accepts several: _xcodhost_kind HELP WORD-BEFORE...
_xcodhost_kind() {
    local option="" word value=""
    for word in "${@:2}"; do
        [[ $word =~ ^--[a-z-]+$ ]] && option=$word
    done
    [ -z "$option" ] || value=$(sed -nE "s/^  $option ([A-Z]+( \.\.\.)?) .*/\1/p" <<<"$1")
    if [[ -n $value && ${!#} == "$option" ]]; then
        echo "${value% ...}"
    elif [[ $value == *... ]]; then
        echo "$value"
    else # a positional argument: DIR or FILE, or the name of the argument if it is not a path
        sed -nE '/^Positionals:$/,/^$/s/^  ([A-Z]+)( (DIR|FILE))? .*/\3 \1/p' <<<"$1" | sed 's/^ //; s/ .*//'
    fi
}

_xcodhost() {
    local tool=${COMP_WORDS[0]/#\~\//$HOME/} word=${COMP_WORDS[COMP_CWORD]} before=("${COMP_WORDS[@]:1:COMP_CWORD-1}")
    local help offered commands=() name
    COMPREPLY=()
    help=$("$tool" --help 2>/dev/null) || return
    for name in "${before[@]}"; do
        _xcodhost_words Subcommands <<<"$help" | grep -qxF -e "$name" || break
        commands+=("$name")
        help=$("$tool" "${commands[@]}" --help)
    done
    if [[ $word == = ]]; then # bash splits "--option=value" into three words
        word=""
    elif [[ ${before[*]: -1} == = ]]; then
        unset "before[-1]"
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_xcodhost_words Options <<<"$help")" -- "$word")
        return
    fi
    case $(_xcodhost_kind "$help" "${before[@]}") in
    DIR) compopt -o dirnames ;;
    FILE) compopt -o default ;;
    EVENT) offered="pre post both" ;;
    WHO) offered="ask desktop first" ;;
    "ID ...") compopt -o plusdirs ;;& # the last word can be the bundle
    ID*)
        name='\1 \2' # the id of the check, and its group
        [ "${commands[0]}" != explain ] || name='\1'
        offered=$("$tool" list checks | sed -E "s/^(([^.]+)\.[^ ]+).*/$name/")
        ;;
    "") offered=$(_xcodhost_words Subcommands <<<"$help") ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "${offered-}" -- "$word")
}

complete -F _xcodhost xcodhost
