#!/bin/bash
# Measures conversions, the road of a frame and the tool, and prints one table: milliseconds for a frame,
# megapixels a second, and how many times as long it takes as a pass that only reads and writes the same bytes.
#
#   scripts/bench.sh [--peers] [SECONDS]    SECONDS for each measurement of chains and the road, 0.5 by default
#
# --peers installs other converters to compare with; those that are there are measured anyway. Leaves
# build/bench/results.json, in Google Benchmark's format, and docs/performance.svg. Machines are noisy: compare only
# what comes from one run, and leave the machine alone meanwhile.
set -euo pipefail

project=$(cd "$(dirname "$0")/.." && pwd)
build=$project/build/bench
groups=(build bench)
if [[ ${1:-} == --peers ]]; then
    groups+=(peers)
    shift
fi
seconds=${1:-0.5}

"$project/scripts/install-dependencies.sh" "${groups[@]}" >&2
{
    cd "$project"
    cmake --preset release -B "$build" -DZET_BENCHMARKS=ON -DBUILD_TESTING=OFF
    cmake --build "$build" -j "$(nproc)"
} >&2

results=()
for program in kernel chain road peer; do
    [[ -x $build/bin/${program}_benchmarks ]] || continue
    echo "measuring: $program" >&2
    "$build/bin/${program}_benchmarks" --benchmark_min_time="$seconds" --benchmark_out_format=json \
        --benchmark_out="$build/$program.json" >&2
    results+=("$build/$program.json")
done

# What the tool makes of a sequence of half-float pictures, and what others make of it.
frames=48
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
echo "measuring: the tool" >&2
for ((frame = 1; frame <= frames; ++frame)); do
    oiiotool "$project/docs/contact-sheet.png" --ch R,G,B --resize 1920x1080 --cshift +$((frame * 16))+0 \
        --noise:stddev=0.004:seed=$frame -d half -o "$work/picture.$(printf %04d $frame).exr"
done

declare -A best # seconds
names=()
# sequence NAME COMMAND...: times one run over the whole sequence
sequence() {
    local name=$1 start taken
    shift
    [[ -v best[$name] ]] || names+=("$name")
    start=$EPOCHREALTIME
    "$@" >/dev/null 2>&1
    taken=$(awk -v now="$EPOCHREALTIME" -v start="$start" 'BEGIN { print now - start }')
    best[$name]=$(awk -v taken="$taken" -v best="${best[$name]:-$taken}" 'BEGIN { print taken < best ? taken : best }')
}
for round in 1 2 3; do # by turns: what else the machine does comes and goes
    for format in dxt5 420 422 422-10 rgb12 rgb10 rgb8 rgba8 4224; do
        sequence "zet-$format" "$build/bin/zet" write "$work/picture.%04d.exr" -o "$work/out.%04d.zet" -f "$format"
    done
    if command -v ffmpeg >/dev/null; then
        pictures=(ffmpeg -y -i "$work/picture.%04d.exr")
        sequence ffmpeg-dpx "${pictures[@]}" -c:v dpx "$work/out.%04d.dpx"
        sequence ffmpeg-yuyv422 "${pictures[@]}" -f rawvideo -pix_fmt yuyv422 "$work/out.yuv"
        sequence ffmpeg-yuv422p10 "${pictures[@]}" -f rawvideo -pix_fmt yuv422p10 "$work/out.yuv"
        sequence ffmpeg-hap-q "${pictures[@]}" -c:v hap -format hap_q "$work/out.mov"
    fi
    sequence oiiotool-dpx oiiotool --frames 1-$frames "$work/picture.%04d.exr" -d uint10 -o "$work/out.%04d.dpx"
done

tool_results=()
for name in "${names[@]}"; do
    tool_results+=("$(awk -v name="$name" -v frames="$frames" -v seconds="${best[$name]}" 'BEGIN {
        ms = 1000 * seconds / frames
        printf "{\"name\": \"tool/%s\", \"run_type\": \"iteration\", \"real_time\": %f, \"time_unit\": \"ms\", ", name, ms
        printf "\"best_ms\": %f, \"MP/s\": %f}", ms, 1920 * 1080 / ms / 1000 }')")
done
(IFS=,; echo "{\"benchmarks\": [${tool_results[*]}]}") >"$build/tool.json"

"$build/bin/benchmark_report" "$build/results.json" "$project/docs/performance.svg" "${results[@]}" "$build/tool.json"
