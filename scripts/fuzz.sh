#!/usr/bin/env bash
# Builds the libFuzzer programs (clang, AddressSanitizer and UndefinedBehaviorSanitizer) in
# build-san and gives each a short run: a fixed number of inputs, from the seeds the system's own
# writers make and the stored inputs of tests/fuzz. A finding is written to
# build-san/findings/<target>/ and fails the run. scripts/test.sh runs the tests in the
# same tree (scripts/san_tree.sh).
#   TV_FUZZ_RUNS=N   inputs per target instead of each target's default
#   TV_FUZZ_SEED=N   the random seed (fixed by default, so that a run can be repeated)
set -euo pipefail
cd "$(dirname "$0")/.."
jobs="$(nproc)"
bash scripts/san_tree.sh

# Inputs per target: a drawing runs the whole recognition, an answer is a few parses.
declare -A runs=([dxf]=1500 [tk]=5000 [config]=5000 [answers]=100000)
targets=(dxf tk config answers)
cmake --build build-san -j"$jobs" --target make_fuzz_seeds "${targets[@]/#/fuzz_}"

seeds=build-san/seeds
rm -rf "$seeds" build-san/corpus build-san/findings
ASAN_OPTIONS=detect_leaks=0 build-san/make_fuzz_seeds "$seeds" >/dev/null
for t in "${targets[@]}"; do
  corpus=build-san/corpus/$t findings=build-san/findings/$t
  mkdir -p "$corpus" "$findings"
  inputs=("$seeds/$t")
  for stored in tests/fuzz/seeds/$t tests/fuzz/regressions/$t; do
    if [ -d "$stored" ]; then inputs+=("$stored"); fi
  done
  dict=()
  if [ -f fuzz/$t.dict ]; then dict=(-dict=fuzz/$t.dict); fi
  echo "fuzz_$t: ${TV_FUZZ_RUNS:-${runs[$t]}} runs"
  start=$SECONDS
  build-san/fuzz_$t -runs="${TV_FUZZ_RUNS:-${runs[$t]}}" -seed="${TV_FUZZ_SEED:-20240329}" -timeout=30 \
    -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$findings/" "${dict[@]}" \
    "$corpus" "${inputs[@]}" 2>"build-san/fuzz_$t.log" || {
    tail -n 60 "build-san/fuzz_$t.log"
    echo "fuzz_$t failed: the input is in $findings/; keep it in tests/fuzz/regressions/$t/ with the fix" >&2
    exit 1
  }
  grep -E "^stat::number_of_executed_units|^#[0-9]+ *DONE" "build-san/fuzz_$t.log" | tail -n 2
  echo "fuzz_$t: $((SECONDS - start)) s"
done
