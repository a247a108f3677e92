#!/bin/bash
# What bash completes after "zet": completion.sh FILE
source "$1"
compopt() { names=none; } # which bash has only while it completes
expect() { # expect WORDS COMMAND-LINE...
    local wanted=$1
    shift
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=() names=files
    _zet zet "${!#}" "${COMP_WORDS[$(($# - 2))]}"
    [[ ${COMPREPLY[*]:-$names} == "$wanted" ]] || { echo "\"$*\" gives \"${COMPREPLY[*]}\", expected \"$wanted\"" >&2; exit 1; }
}
expect write zet wr
expect "--transfer" zet write --tr
expect "420 422 422-10 4224" zet write shot.exr --format 42
expect "srgb" zet sheet --transfer s
expect "420 422 422-10 4224" zet write --format = 42 # as bash takes --format=42 apart
expect "auto none srgb rec709" zet write --transfer =
expect files zet write --output sh
expect files zet write shot
expect none zet write --jobs 1
expect "--manifest" zet check --man
