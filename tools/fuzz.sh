#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a while:
#   tools/fuzz.sh [--seconds N] [--build DIR] [--build-only] [TARGET...]   (default 60 s, every target)
# (the older form `tools/fuzz.sh N [TARGET...]` still works). Seeds come from
# tests/fuzz/corpus/<name>/ (never written to); what a run learns stays in
# DIR/corpus/<name>/. A crash, a hang (one input taking more than 10 s), a
# leak or a broken check fails the script and leaves the input in
# DIR/crashes/: turn it into a regression test.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=60
build=$root/build-fuzz
targets=()
build_only=0
usage() { echo "usage: $0 [--seconds N] [--build DIR] [--build-only] [TARGET...]" >&2; exit 2; }
while [ $# -gt 0 ]; do
  case $1 in
    --seconds) [ $# -ge 2 ] || usage; seconds=$2; shift 2 ;;
    --seconds=*) seconds=${1#--seconds=}; shift ;;
    --build) [ $# -ge 2 ] || usage; build=$2; shift 2 ;;
    --build-only) build_only=1; shift ;;
    -h|--help) usage ;;
    -*) usage ;;
    *)
      if [ ${#targets[@]} -eq 0 ] && [[ $1 =~ ^[0-9]+$ ]]; then seconds=$1; else targets+=("$1"); fi
      shift ;;
  esac
done
[[ $seconds =~ ^[0-9]+$ ]] && [ "$seconds" -gt 0 ] || usage
if [ ${#targets[@]} -eq 0 ]; then
  for dir in "$root"/tests/fuzz/corpus/*/; do
    targets+=("fuzz_$(basename "$dir")")
  done
fi
for target in "${targets[@]}"; do
  [ -d "$root/tests/fuzz/corpus/${target#fuzz_}" ] || { echo "$0: no target $target (no tests/fuzz/corpus/${target#fuzz_}/)" >&2; exit 2; }
done
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DPKO_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" >/dev/null
# Only the fuzzers and what they link.
jobs=$(nproc)
[ "$jobs" -le 2 ] || jobs=2
cmake --build "$build" -j"$jobs" --target "${targets[@]}"
[ "$build_only" = 0 ] || exit 0
mkdir -p "$build/crashes"
# All targets at once: each runs for its time on whatever the machine gives.
pids=()
for target in "${targets[@]}"; do
  name=${target#fuzz_}
  mkdir -p "$build/corpus/$name"
  # Qt's offscreen platform, for targets that make widgets. Allocations are
  # unwound in full, through Qt's frames, so that a leak of Qt's own can be
  # told from ours (tests/fuzz/lsan.supp).
  QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=fast_unwind_on_malloc=0 \
    LSAN_OPTIONS=suppressions=$root/tests/fuzz/lsan.supp:print_suppressions=0 \
    "$build/bin/$target" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 \
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
