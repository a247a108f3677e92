#!/bin/bash
# Runs all tests in a build that counts, and lists the lines of the library that no test reaches. Fails below 95 %.
set -euo pipefail

project=$(cd "$(dirname "$0")/.." && pwd)
cd "$project"
scripts/install-dependencies.sh build test coverage
jobs=$(nproc)
build=build/coverage
cmake -G Ninja -S . -B $build -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON \
    -DCMAKE_CXX_FLAGS="--coverage -fprofile-update=atomic"
cmake --build $build -j "$jobs"
find $build -name '*.gcda' -delete
# Without the test that limits the size of files: what is counted goes to larger ones.
ctest --test-dir $build -j "$jobs" --output-on-failure --exclude-regex 'HostSdk|InstalledPackage|ALimitOnTheSizeOfFilesIsTheFramesError'
gcovr --root . --object-directory $build --filter MediaConversion/ --exclude-throw-branches --print-summary \
    --fail-under-line 95
