#!/usr/bin/env bash
# Builds and runs the test suite, gives each fuzz target a short run (scripts/fuzz.sh), then builds
# the suite in the fuzzers' tree and runs it again under AddressSanitizer and
# UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
jobs="$(nproc)"
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$jobs"
ctest --test-dir build --output-on-failure -j"$jobs"
if [ "${TV_SKIP_FUZZ:-0}" != 1 ]; then
  bash scripts/fuzz.sh
fi
if [ "${TV_SKIP_SANITIZERS:-0}" != 1 ]; then
  bash scripts/san_tree.sh
  cmake --build build-san -j"$jobs"
  ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp" \
    ctest --test-dir build-san --output-on-failure -j"$jobs"
fi
