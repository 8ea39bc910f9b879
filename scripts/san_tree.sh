#!/usr/bin/env bash
# Configures build-san: clang with AddressSanitizer and UndefinedBehaviorSanitizer, holding both
# the libFuzzer programs (scripts/fuzz.sh) and the sanitized test suite (scripts/test.sh), so the
# sanitized code is compiled once. Debug keeps assertions on; TV_FUZZ compiles at -O1 with line
# tables, which keeps the build and the runs short.
set -euo pipefail
cd "$(dirname "$0")/.."
launcher=()
if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
cmake -S . -B build-san -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ -DTV_FUZZ=ON -DTV_SANITIZE=ON \
  -DTV_BUILD_BENCH=ON "${launcher[@]}" >/dev/null
