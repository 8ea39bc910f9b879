#!/usr/bin/env bash
# Builds the sanitized tree build-san once (clang, AddressSanitizer and UndefinedBehaviorSanitizer;
# scripts/san_tree.sh), gives each fuzz target a short run there (scripts/fuzz.sh), then builds the
# test suite and the benchmarks in the same tree and runs the suite under the sanitizers. With
# TV_SKIP_SANITIZERS=1 the suite is built and run in the plain release tree build instead.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
jobs="$(nproc)"
if [ "${TV_SKIP_SANITIZERS:-0}" = 1 ]; then
  cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
  cmake --build build -j"$jobs"
  ctest --test-dir build --output-on-failure -j"$jobs"
  exit 0
fi
if [ "${TV_SKIP_FUZZ:-0}" != 1 ]; then
  bash scripts/fuzz.sh
fi
bash scripts/san_tree.sh
cmake --build build-san -j"$jobs"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp" \
  ctest --test-dir build-san --output-on-failure -j"$jobs"
