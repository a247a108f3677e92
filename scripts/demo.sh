#!/bin/bash
# Builds the project and writes media files: of an animated line-up chart, or of your own pictures.
#
#   scripts/demo.sh [PICTURES...]    files, or sequences such as 'shot.%04d.exr'
set -euo pipefail

formats=(rgb8 rgba8)

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
for format in "${formats[@]}"; do
    mkdir -p "$demo/$format"
    if [[ $# -eq 0 ]]; then
        "$zet" write --chart 1280x720 --frames 1-12 --format "$format" --output "$demo/$format/chart.%04d.zet" ||
            failures=$((failures + 1))
    fi
    for pictures in "$@"; do
        name=$(basename "${pictures%.*}")
        "$zet" write "$pictures" --format "$format" --output "$demo/$format/$name.zet" ||
            failures=$((failures + 1))
    done
done

echo
echo "The media files are in $demo, in one folder for each format:"
du --human-readable --apparent-size "${formats[@]/#/$demo/}"
exit $((failures > 0))
