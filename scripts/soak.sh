#!/bin/bash
# Writes very many frames through the plug-in and tells whether memory and descriptors stay as they are.
#
#   scripts/soak.sh [SMALL] [LARGE] [FOLDER]    20000 frames of 160x88 and 200 of 7680x4320 by default
set -euo pipefail

project=$(cd "$(dirname "$0")/.." && pwd)
cd "$project"
scripts/install-dependencies.sh build test
cmake --preset release -DBUILD_TESTING=ON
cmake --build --preset release -j "$(nproc)" --target soak

folder=$(mktemp -d "${3:-${TMPDIR:-/tmp}}/zetwriter-soak-XXXXXX")
trap 'rm -rf "$folder"' EXIT
build/release/bin/soak "$folder" "${1:-20000}" "${2:-200}"
