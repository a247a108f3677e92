#!/bin/bash
# Kills and interrupts runs of "zet write" at random moments: scripts/kill.sh [TIMES], 50 by default.
# What is left under a final name has to be whole, and --resume to complete the sequence.
set -euo pipefail

cd "$(dirname "$0")/.."
scripts/install-dependencies.sh build test
cmake --preset release -DBUILD_TESTING=ON
cmake --build --preset release -j "$(nproc)" --target robustness_tests
# Each test does so five times with each of two signals.
build/release/bin/robustness_tests --gtest_filter='*KilledRunTest*' --gtest_repeat=$(((${1:-50} + 9) / 10)) \
    --gtest_break_on_failure
