#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a while:
#   tools/fuzz.sh [SECONDS_PER_TARGET] [TARGET...]      (default 60 s, every target)
# Seeds come from tests/fuzz/corpus/<name>/ (never written to); what a run
# learns stays in build-fuzz/corpus/<name>/. A crash fails the script and
# leaves its input in build-fuzz/crashes/: turn it into a regression test.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
shift || true
build=$root/build-fuzz
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=()
  for dir in "$root"/tests/fuzz/corpus/*/; do
    targets+=("fuzz_$(basename "$dir")")
  done
fi
CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DPKO_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j"$(nproc)" --target "${targets[@]}"
mkdir -p "$build/crashes"
# All targets at once: each runs for its time on whatever the machine gives.
pids=()
for target in "${targets[@]}"; do
  name=${target#fuzz_}
  mkdir -p "$build/corpus/$name"
  # Qt's offscreen platform, for targets that make widgets.
  QT_QPA_PLATFORM=offscreen "$build/bin/$target" -max_total_time="$seconds" -print_final_stats=1 \
    -artifact_prefix="$build/crashes/$target-" "$build/corpus/$name" "$root/tests/fuzz/corpus/$name" \
    >"$build/$target.log" 2>&1 &
  pids+=($!)
done
status=0
for i in "${!targets[@]}"; do
  target=${targets[$i]}
  log=$build/$target.log
  if wait "${pids[$i]}"; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    echo "$target: ${runs:-?} executions in ${seconds} s, no crash"
  else
    echo "$target: FAILED, see $log and $build/crashes/" >&2
    tail -n 30 "$log" >&2
    status=1
  fi
done
exit $status
