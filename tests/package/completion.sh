#!/bin/bash
# What bash completes after "zet": completion.sh FILE
source "$1"
expect() { # expect WORDS COMMAND-LINE...
    local wanted=$1
    shift
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
    _zet zet "${!#}" "${COMP_WORDS[$(($# - 2))]}"
    [[ ${COMPREPLY[*]} == "$wanted" ]] || { echo "\"$*\" gives \"${COMPREPLY[*]}\", expected \"$wanted\"" >&2; exit 1; }
}
expect write zet wr
expect "--transfer" zet write --tr
expect "420 422 422-10 4224" zet write shot.exr --format 42
expect "srgb" zet sheet --transfer s
expect "" zet write --output sh
expect "" zet write shot
expect "--manifest" zet check --man
