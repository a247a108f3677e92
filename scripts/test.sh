#!/bin/bash
# Builds the project and runs all its tests.
#
#   scripts/test.sh [PRESETS...]    release by default; also debug, asan (address and undefined), tsan (thread)
set -euo pipefail

project=$(cd "$(dirname "$0")/.." && pwd)
cd "$project"
scripts/install-dependencies.sh build test

jobs=$(nproc)
for preset in "${@:-release}"; do
    # Other compilers warn about other things; only our own builds stop for that.
    cmake --preset "$preset" -DBUILD_TESTING=ON -DZET_WERROR="${ZET_WERROR:-OFF}"
    cmake --build --preset "$preset" -j "$jobs"
    ctest --preset "$preset" -j "$jobs"
done
