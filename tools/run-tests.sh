#!/usr/bin/env bash
# Runs the whole test suite three times: a strict build (-Werror), one with
# the address and undefined-behaviour sanitizers and one with the thread
# sanitizer; then runs each libFuzzer target for a minute (tools/fuzz.sh).
# --no-sanitizer skips both sanitizer passes and the fuzzing. After the
# strict pass the build is packed into Debian packages, which are checked
# with lintian and tested unpacked (tools/test-packages.sh). Sanitizer builds
# run several times slower, and the next build runs beside their tests:
# PKO_TEST_TIME_SCALE stretches the tests' waits for them. They leave out
# pko-benchmark, whose figures would mean nothing there. They are built with line tables only (-g1): a fifth faster
# to compile than full debug information, and every report still names file
# and line; the thread sanitizer's at -O1, which it needs to run fast enough.
#
# The tests start fake GigE Vision cameras on 127.0.0.1, and camera discovery
# broadcasts on every network interface. So the suite runs in a network
# namespace of its own that has nothing but loopback; where one cannot be made
# (not root), discovery is switched off and the GenICam tests are left out.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/tools/install-deps.sh"
export QT_QPA_PLATFORM=offscreen
jobs=$(nproc)

isolated=0
if unshare --net sh -c 'ip link set lo up' 2>/dev/null; then
  isolated=1
else
  echo "No private network namespace here: GenICam discovery off, GenICam tests skipped." >&2
fi

run_ctest() {
  local build=$1
  if [ "$isolated" = 1 ]; then
    unshare --net sh -c 'ip link set lo up && cd "$1" && exec ctest --output-on-failure -j"$2"' sh "$build" "$jobs"
  else
    (cd "$build" && PKO_GENICAM_DISCOVERY=off ctest --output-on-failure -j"$jobs" -E 'arv|genicam|lostcamera')
  fi
}

run_suite() {
  local build=$1; shift
  "$root/tools/build.sh" "$build" -DPKO_WERROR=ON "$@"
  run_ctest "$build"
}

# The next build runs beside a sanitizer pass's tests, at a lower priority:
# those tests mostly wait for cameras and timers, and their waits are
# stretched anyway. Its output goes to a log, shown when it fails.
background=
start_build() {
  local log=$1; shift
  mkdir -p "$(dirname "$log")"
  (nice -n 10 "$@" >"$log" 2>&1) &
  background=$!
}
finish_build() {
  local log=$1
  if ! wait "$background"; then
    cat "$log" >&2
    echo "build failed: $log" >&2
    exit 1
  fi
  background=
}
trap '[ -z "$background" ] || kill "$background" 2>/dev/null || true' EXIT

echo "== strict build and tests"
# Configured for /usr like the packages, so that packing rebuilds nothing.
run_suite "$root/build-test" -DCMAKE_INSTALL_PREFIX=/usr
echo "== packages"
"$root/tools/package.sh" "$root/build-test"
"$root/tools/test-packages.sh" "$root/build-test"
if [ "${1:-}" = "--no-sanitizer" ]; then
  exit 0
fi
echo "== address and undefined-behaviour sanitizers"
"$root/tools/build.sh" "$root/build-asan" -DPKO_WERROR=ON -DPKO_SANITIZE=ON -DCMAKE_BUILD_TYPE=None \
  "-DCMAKE_CXX_FLAGS=-O0 -g1" -DPKO_BENCHMARK=OFF
start_build "$root/build-tsan/build.log" "$root/tools/build.sh" "$root/build-tsan" -DPKO_WERROR=ON -DPKO_TSAN=ON \
  -DCMAKE_BUILD_TYPE=None "-DCMAKE_CXX_FLAGS=-O1 -g1" -DPKO_BENCHMARK=OFF
PKO_TEST_TIME_SCALE=4 ASAN_OPTIONS=halt_on_error=1:detect_leaks=1 \
  UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
  LSAN_OPTIONS=suppressions=$root/tools/lsan.supp:print_suppressions=0 \
  run_ctest "$root/build-asan"
echo "== thread sanitizer"
finish_build "$root/build-tsan/build.log"
start_build "$root/build-fuzz/build.log" "$root/tools/fuzz.sh" --build-only
PKO_TEST_TIME_SCALE=5 TSAN_OPTIONS="suppressions=$root/tools/tsan.supp:halt_on_error=1:print_suppressions=0" \
  run_ctest "$root/build-tsan"
echo "== fuzzing"
finish_build "$root/build-fuzz/build.log"
"$root/tools/fuzz.sh" --seconds 60
