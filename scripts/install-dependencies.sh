#!/bin/bash
# Installs those of the Debian packages that are missing: install-dependencies.sh GROUPS...
# The groups are the lists below.
set -euo pipefail

# OpenCV's and OpenImageIO's CMake files ask for all that the two were built with, so the whole of OpenCV and
# OpenImageIO's programs are needed as well.
build=(g++ cmake ninja-build libopencv-dev libopenimageio-dev openimageio-tools libopenexr-dev libcli11-dev
    libfmt-dev nlohmann-json3-dev libxxhash-dev libdeflate-dev libjemalloc-dev zlib1g-dev)
test=(libgtest-dev libgmock-dev libsquish-dev python3-openimageio python3-numpy)
bench=(libbenchmark-dev)
fuzz=(clang libclang-rt-14-dev)
compilers=(g++-11 clang) # besides the one that builds
farm=(slurmctld slurmd slurm-client munge)
coverage=(gcovr)
peers=(ffmpeg libswscale-dev libavcodec-dev libavutil-dev libzimg-dev pkg-config) # to compare with

wanted=()
for group in "$@"; do
    case $group in
    build | test | bench | fuzz | compilers | farm | coverage | peers)
        declare -n packages=$group
        wanted+=("${packages[@]}")
        ;;
    *)
        echo "$0: unknown group \"$group\": expected build, test, bench, fuzz, compilers, farm, coverage or peers" >&2
        exit 2
        ;;
    esac
done

if ! command -v dpkg-query >/dev/null; then
    echo "This is not a Debian system; the build needs what Debian calls ${wanted[*]}" >&2
    exit 0
fi

missing=()
for package in "${wanted[@]}"; do
    state=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
    [[ $state == installed* ]] || missing+=("$package")
done
[[ ${#missing[@]} -gt 0 ]] || exit 0

if [[ $(id -u) -eq 0 ]]; then
    as_root=()
elif command -v sudo >/dev/null; then
    as_root=(sudo)
else
    echo "These packages are missing, and only root can install them: ${missing[*]}" >&2
    exit 1
fi
echo "Installing ${missing[*]}"
"${as_root[@]}" apt-get update
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install --yes --no-install-recommends "${missing[@]}"
