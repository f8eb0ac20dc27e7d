#!/bin/bash
# Checks the words that bash offers after the start of a command line: completion_test.sh XCODHOST COMPLETION
set -uo pipefail
tool=$1
# shellcheck source=xcodhost/completion.bash
. "$2"
# shellcheck disable=SC2317 # the completion calls this function
compopt() { echo "<$2>"; } # prints the kind of names that bash itself would complete
failed=0

# offers LINE EXPECTED: fails unless exactly the expected words are offered after the line.
offers() {
    local offered
    read -ra COMP_WORDS <<<"$tool ${1/=/ = }"
    [[ $1 =~ [^\ ]$ ]] || COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    offered=$(_xcodhost; printf '%s\n' "${COMPREPLY[@]}")
    offered=$(LC_ALL=C sort -u <<<"$offered" | xargs)
    [ "$offered" = "$2" ] || { echo "xcodhost $1: offered \"$offered\", expected \"$2\""; failed=1; }
}

offers "" "explain info list run show validate volume"
offers "r" "run"
offers "-" "--help --version"
offers "run " "<dirnames>"
offers "run PostInstall.bundle --d" "--direct --dry-run"
offers "run --product 4900 --volume " "<dirnames>"
offers "run --volume=" "<dirnames>"
offers "run --volume=v" "<dirnames>"
offers "run --product " ""
offers "run --event p" "post pre"
offers "run --answers " "ask desktop first"
offers "run --block " "<default>"
offers "validate --include vol" "volume volume.nothing-outside"
offers "validate --include steps bundle.factory-" "<plusdirs> bundle.factory-name"
offers "validate --junit " "<default>"
offers "validate --mac " "<dirnames>"
offers "explain vol" "volume.nothing-outside"
offers "list " "checks"
offers "list checks --" "--help --json"
offers "show " ""
exit "$failed"
