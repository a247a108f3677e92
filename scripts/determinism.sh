#!/bin/bash
# Converts a fixed picture to all nine formats with programs from several compilers and optimisation levels, and
# compares the bytes with stored checksums.
#
#   scripts/determinism.sh             g++, g++-11 and clang++ with -O0, -O2 and -O3, with every instruction set of the
#                                      machine
#   scripts/determinism.sh --aarch64   also for another processor, in emulation; needs g++-aarch64-linux-gnu and
#                                      qemu-user-static, and takes that processor's libraries from Debian's archive
set -euo pipefail

cd "$(dirname "$0")/.."
scripts/install-dependencies.sh build compilers
build=build/determinism
sources=(tests/determinism/NineOutputs.cpp MediaConversion/MediaPipeline/*.cpp MediaConversion/converters/*.cpp
    MediaConversion/converters/kernels/*.cpp)

# make_program NAME COMPILER OPTIONS...: builds the program of this name, with the libraries in $libraries.
make_program() {
    local objects=$build/$1
    mkdir -p "$objects"
    printf '%s\n' "${sources[@]}" | xargs -P "$(nproc)" -I '{}' sh -c '
        source=$1 objects=$2
        shift 2
        exec "$@" -std=c++17 -ffp-contract=off -Wno-psabi -I. -c "$source" \
            -o "$objects/$(echo "$source" | tr / .).o"' sh '{}' "$objects" "${@:2}"
    "${@:2}" "$objects"/*.o "${libraries[@]}" -lopencv_imgproc -lopencv_core -pthread -o "$build/$1.program"
}

for compiler in g++ g++-11 clang++; do
    for level in -O0 -O2 -O3; do
        echo "$compiler $level"
        libraries=()
        make_program "$compiler$level" "$compiler" "$level" -isystem /usr/include/opencv4
        "$build/$compiler$level.program"
    done
done
[[ ${1:-} == --aarch64 ]] || exit 0

echo "aarch64-linux-gnu-g++ -O2"
archive=$build/archive root=$build/aarch64-root
if [[ ! -d $root ]]; then
    # A package manager of its own for the other processor, in which nothing is installed.
    mkdir -p "$archive"/{lists,cache/archives}/partial
    touch "$archive/status"
    here=$PWD/$archive
    options=(-o Dir::State::lists="$here/lists" -o Dir::State::status="$here/status" -o Dir::Cache="$here/cache"
        -o APT::Architecture=arm64 -o APT::Architectures=arm64)
    apt-get "${options[@]}" update
    apt-get "${options[@]}" install --yes --download-only --no-install-recommends libopencv-imgproc-dev
    for package in "$archive"/cache/archives/*.deb; do
        dpkg -x "$package" "$root.part"
    done
    mv "$root.part" "$root"
fi
folder=$PWD/$root/usr/lib/aarch64-linux-gnu
folders=$folder:$folder/blas:$folder/lapack
libraries=(-Wl,-rpath-link,"$folders")
make_program aarch64 aarch64-linux-gnu-g++ -O2 --sysroot="$PWD/$root" -isystem "=/usr/include/opencv4" \
    -isystem "=/usr/include/aarch64-linux-gnu/opencv4"
qemu-aarch64-static -L "$root" -E LD_LIBRARY_PATH="$folders" "$build/aarch64.program"
