#!/bin/bash
# Builds OpenCV's core and imgproc as static libraries without foreign parts, from Debian's source package: for a
# plug-in that brings its own OpenCV into the host's process.
#
#   scripts/build-static-opencv.sh FOLDER [OPTIONS OF CMAKE...]
#
# Then configure with -DOpenCV_DIR=FOLDER/lib/cmake/opencv4. For host versions with the old string ABI, build both with
# it: -DCMAKE_CXX_FLAGS=-D_GLIBCXX_USE_CXX11_ABI=0 here and -DZET_OLD_STRING_ABI=ON there.
set -euo pipefail

if [[ $# -lt 1 ]]; then
    sed -n '2,9s/^# \{0,1\}//p' "$0" >&2
    exit 2
fi
mkdir -p "$1"
folder=$(cd "$1" && pwd)
shift

# The system's package sources as sources of source code, with lists of their own, so that the system's stay as they are.
work=$folder/work
mkdir -p "$work/lists/partial" "$work/sources"
if ! compgen -G "$work/opencv_*.orig.tar.*" >/dev/null; then
    { cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null || true; } |
        sed -n "s/^deb /deb-src /p" >"$work/sources/system.list"
    for list in /etc/apt/sources.list.d/*.sources; do
        [[ ! -e $list ]] || sed 's/^Types:.*/Types: deb-src/' "$list" >"$work/sources/${list##*/}"
    done
    apt=(apt-get -o Dir::Etc::sourcelist=- -o Dir::Etc::sourceparts="$work/sources" -o Dir::State::lists="$work/lists")
    "${apt[@]}" update
    (cd "$work" && "${apt[@]}" source --download-only opencv)
fi
mkdir -p "$work/source"
for archive in "$work"/opencv_*.orig.tar.*; do
    tar --extract --file "$archive" --directory "$work/source" --strip-components 1
done

without=()
for part in ADE EIGEN FFMPEG GSTREAMER GTK IPP ITT JASPER JPEG LAPACK OPENCL OPENEXR OPENJPEG PNG PROTOBUF QUIRC TBB TIFF \
    V4L VA WEBP; do
    without+=("-DWITH_$part=OFF")
done
cmake -S "$work/source" -B "$work/build" -G Ninja \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$folder" -DCMAKE_INSTALL_LIBDIR=lib \
    -DBUILD_LIST=core,imgproc -DBUILD_SHARED_LIBS=OFF -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
    -DCMAKE_CXX_VISIBILITY_PRESET=hidden -DCMAKE_VISIBILITY_INLINES_HIDDEN=ON \
    -DBUILD_TESTS=OFF -DBUILD_PERF_TESTS=OFF -DBUILD_opencv_apps=OFF -DBUILD_JAVA=OFF -DBUILD_PROTOBUF=OFF \
    "${without[@]}" "$@"
cmake --build "$work/build" --target install -j "$(nproc)"
