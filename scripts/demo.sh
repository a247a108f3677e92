#!/bin/bash
# Builds the project and writes media files in all formats: of an animated line-up chart, or of your own pictures.
# Ends with what they cost and with a contact sheet that compares them with their source.
#
#   scripts/demo.sh [PICTURES...]    files, or sequences such as 'shot.%04d.exr'
#
# docs/contact-sheet.png is the sheet that it makes of the chart.
set -euo pipefail

project=$(cd "$(dirname "$0")/.." && pwd)
demo=$project/demo

"$project/scripts/install-dependencies.sh" build
(
    cd "$project"
    cmake --preset release -B build/demo -DBUILD_TESTING=OFF
    cmake --build build/demo
)
zet=$project/build/demo/bin/zet
failures=0
sheets=()

# Short name and label of every format.
formats() { "$zet" formats | awk -F '  +' '$2 ~ /^[0-9]+$/ { print $3 "|" $4 }'; }

# The first media file of a name with or without a place for the frame number.
first_file() { compgen -G "$(sed -E 's/%[0-9]*d|#+|@+/*/' <<<"$1")" | sort | head -n 1; }

seconds_since() { awk -v now="$EPOCHREALTIME" -v start="$1" 'BEGIN { printf "%.2f", now - start }'; }

# all_formats NAME SHEET COMPARISON WRITE-ARGUMENTS...
# Writes NAME.zet in every format that can hold the picture, then the sheet. COMPARISON is the option of "zet sheet"
# that names the source.
all_formats() {
    local name=$1 sheet=$2 comparison=$3 format label start outcome file taken
    local -a written=()
    shift 3
    printf '\n%s\n%-8s %-42s %14s %10s\n' "$name" format label bytes/frame seconds
    while IFS='|' read -r format label; do
        mkdir -p "$demo/$format"
        outcome=0 start=$EPOCHREALTIME
        "$zet" write "$@" --format "$format" --output "$demo/$format/$name.zet" --quiet || outcome=$?
        taken=$(seconds_since "$start")
        if [[ $outcome -eq 2 ]]; then # the tool has told why
            printf '%-8s %-42s %14s\n' "$format" "$label" skipped
            continue
        fi
        [[ $outcome -eq 0 ]] || failures=$((failures + 1))
        file=$(first_file "$demo/$format/$name.zet") || continue
        written+=("$file")
        printf '%-8s %-42s %14s %10s\n' "$format" "$label" "$(stat -c %s "$file")" "$taken"
    done < <(formats)

    if [[ ${#written[@]} -eq 0 ]]; then
        failures=$((failures + 1))
        return
    fi
    echo
    "$zet" sheet "${written[@]}" "$comparison" --output "$sheet" --width 240 || failures=$((failures + 1))
    sheets+=("$sheet")
}

if [[ $# -eq 0 ]]; then
    all_formats chart.%04d "$demo/contact-sheet.png" --against-chart --chart 1280x720 --frames 1-12
fi
for pictures in "$@"; do
    name=$(basename "${pictures%.*}")
    [[ ! -e $pictures ]] || name=${name//[%#@]/_} # marks in a file's own name are no place for a frame number
    all_formats "$name" "$demo/contact-sheet-$(sed -E 's/[._-]*(%[0-9]*d|#+|@+)//' <<<"$name").png" \
        "--against=$pictures" "$pictures"
done

echo
echo "The media files are in $demo, in one folder for each format."
for sheet in "${sheets[@]}"; do
    echo "The first of each beside its source: $sheet"
done
exit $((failures > 0))
