#!/usr/bin/env bash
# Runs the whole test suite twice: a strict build (-Werror), then one with the
# address and undefined-behaviour sanitizers. --no-sanitizer skips the second.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/tools/install-deps.sh"
export QT_QPA_PLATFORM=offscreen
jobs=$(nproc)

run_suite() {
  local build=$1; shift
  "$root/tools/build.sh" "$build" -DPKO_WERROR=ON "$@"
  (cd "$build" && ctest --output-on-failure -j"$jobs")
}

echo "== strict build and tests"
run_suite "$root/build-test"
if [ "${1:-}" != "--no-sanitizer" ]; then
  echo "== sanitizer build and tests"
  ASAN_OPTIONS=halt_on_error=1:detect_leaks=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
    LSAN_OPTIONS=suppressions=$root/tools/lsan.supp:print_suppressions=0 \
    run_suite "$root/build-asan" -DPKO_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug
fi
