#!/usr/bin/env bash
# The bash completion offers every option that tolvik-info --help lists.
#   completion.sh TOLVIK_INFO COMPLETION_FILE   (exit 77: bash-completion missing)
set -eu
[ -f /usr/share/bash-completion/bash_completion ] || exit 77
source /usr/share/bash-completion/bash_completion
source "$2"
COMP_WORDS=(tolvik-info -)
COMP_CWORD=1
COMP_LINE="tolvik-info -"
COMP_POINT=${#COMP_LINE}
_tolvik_info
offered=" ${COMPREPLY[*]} "
status=0
for option in $("$1" --help | sed -n 's/^  \(-[a-z], \)\{0,1\}\(--\{0,1\}[a-z][a-z-]*\).*/\2/p'); do
    if [[ $offered != *" $option "* ]]; then
        echo "not completed: $option"
        status=1
    fi
done
exit $status
