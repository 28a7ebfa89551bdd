#!/usr/bin/env bash
# Tests the Debian packages that tools/package.sh made in BUILD_DIR/packages/,
# without installing anything on the machine: unpacks them into a temporary
# root, runs the unpacked programs, and builds examples/hello-tab against the
# unpacked development package and loads it into the unpacked viewer.
#   tools/test-packages.sh [BUILD_DIR]      (BUILD_DIR: build/)
# What the packages must hold (programs, plug-ins, library folder) is read
# from BUILD_DIR/packaging/manifest.txt, written by cmake/PkoPackaging.cmake.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$root/build}" && pwd)
manifest="$build/packaging/manifest.txt"

passed=0
failed=0
pass() {
  echo "PASS: $1"
  passed=$((passed + 1))
}
fail() {
  echo "FAIL: $1"
  [ -n "${2:-}" ] && sed 's/^/    /' <<<"$2"
  failed=$((failed + 1))
}
finish() {
  echo "packages: $passed passed, $failed failed"
  [ "$failed" -eq 0 ]
  exit
}

[ -f "$manifest" ] || { fail "manifest $manifest exists"; finish; }
manifest_value() { sed -n "s/^$1=//p" "$manifest" | tr ';' ' '; }
read -r -a programs <<<"$(manifest_value programs)"
read -r -a plugins <<<"$(manifest_value plugins)"
libdir=$(manifest_value libdir)

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
unpacked="$tmp/root"
mkdir -p "$unpacked" "$tmp/work"

# --- the three packages, unpacked into one root
for package in pelko-viewer libpelkocpp0 libpelkocpp-dev; do
  deb=$(ls "$build"/packages/"${package}"_*.deb 2>/dev/null | head -n 1)
  if [ -n "$deb" ] && dpkg-deb -x "$deb" "$unpacked"; then
    pass "$package unpacks"
  else
    fail "$package unpacks" "no ${package}_*.deb in $build/packages"
  fi
done

prefix="$unpacked/usr"
home="$prefix/$libdir/pelko"
viewer="$prefix/bin/PelkoViewer"

# --- what the viewer package holds
for program in "${programs[@]}"; do
  if [ -x "$prefix/bin/$program" ] && [ -f "$prefix/share/man/man1/$program.1.gz" ]; then
    pass "$program is installed with its man page"
  else
    fail "$program is installed with its man page"
  fi
done
for plugin in "${plugins[@]}"; do
  qm=$(ls "$home/plugins/${plugin}"_*.qm 2>/dev/null | head -n 1)
  if [ -f "$home/plugins/lib$plugin.so" ] && [ -n "$qm" ]; then
    pass "plug-in $plugin is installed with its translation"
  else
    fail "plug-in $plugin is installed with its translation" "$(ls -l "$home/plugins" 2>&1)"
  fi
done
links=$(ldd "$viewer" "$home"/plugins/*.so 2>&1)
if grep -q "libPelkoCPP.so.0 => $unpacked/" <<<"$links" && ! grep -q "not found\|$build" <<<"$links"; then
  pass "the unpacked programs and plug-ins link the unpacked SDK library"
else
  fail "the unpacked programs and plug-ins link the unpacked SDK library" "$links"
fi

# Runs the unpacked viewer from a folder of its own, with a relative
# screenshot path, and keeps what it printed in $output and $errors.
run_viewer() {
  local language=$1
  shift
  rm -f "$tmp/work/shot.png"
  output=$(cd "$tmp/work" && env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=offscreen LANG="$language" \
    LC_ALL="$language" PKO_GENICAM_DISCOVERY=off timeout 60 "$viewer" --screenshot shot.png --print-tabs \
    2>"$tmp/errors")
  status=$?
  errors=$(cat "$tmp/errors")
  [ "$status" -eq 0 ] && [ -s "$tmp/work/shot.png" ]
}

# --- the unpacked viewer: every plug-in a tab, the screenshot where it was asked for
if run_viewer C.UTF-8; then
  tabs=$(grep -c '^tab: ' <<<"$output")
  expected=$((${#plugins[@]} + 1))
  if [ "$tabs" -eq "$expected" ] && grep -qx 'tab: Trigger IO' <<<"$output" && grep -qx 'tab: I/O Monitor' <<<"$output" &&
    grep -qx 'tab: Features' <<<"$output" &&
    ! grep -q 'skipped\|does not exist' <<<"$errors"; then
    pass "the unpacked viewer shows a tab per plug-in ($expected tabs) and saves its screenshot"
  else
    fail "the unpacked viewer shows a tab per plug-in ($expected tabs)" "$output"$'\n'"$errors"
  fi
else
  fail "the unpacked viewer saves a screenshot" "$output"$'\n'"$errors"
fi
# The plug-ins find their translations through the viewer's working folder.
if run_viewer de_DE.UTF-8 && grep -qx 'tab: Trigger-E/A' <<<"$output" && grep -qx 'tab: E/A-Monitor' <<<"$output"; then
  pass "the unpacked plug-ins find their translations"
else
  fail "the unpacked plug-ins find their translations" "$output"$'\n'"$errors"
fi

# --- the other programs
for program in "${programs[@]}"; do
  case $program in
    PelkoViewer) continue ;;
    pko-tool) arguments=(list) expect=SIM-LINE-ROUTING ;;
    *) arguments=(--help) expect= ;;
  esac
  output=$(cd "$tmp/work" && PKO_GENICAM_DISCOVERY=off timeout 60 "$prefix/bin/$program" "${arguments[@]}" 2>&1)
  if [ $? -eq 0 ] && grep -q -- "$expect" <<<"$output"; then
    pass "the unpacked $program ${arguments[*]} runs"
  else
    fail "the unpacked $program ${arguments[*]} runs" "$output"
  fi
done

# --- the development package: pkg-config, and a tab plug-in built with the CMake package
cat >"$tmp/list.cpp" <<'CPP'
#include <PkoAPI/PkoAPI.h>
#include <iostream>
int main()
{
    std::vector<ZMT::PkoAPI::CameraPtr> cameras;
    const int result = ZMT::PkoAPI::PkoSystem::GetInstance().GetCameras(cameras);
    std::cout << cameras.size() << " cameras\n";
    return result == ZMT::PkoAPI::PkoErrorSuccess && !cameras.empty() ? 0 : 1;
}
CPP
flags=$(PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig" PKG_CONFIG_LIBDIR=/nonexistent pkg-config --cflags --libs pelkocpp)
if [ -n "$flags" ] && c++ -std=c++17 "$tmp/list.cpp" -o "$tmp/list" $flags -Wl,-rpath,"$prefix/$libdir" 2>"$tmp/errors" &&
  PKO_GENICAM_DISCOVERY=off "$tmp/list" >/dev/null; then
  pass "a program builds with pelkocpp.pc and runs"
else
  fail "a program builds with pelkocpp.pc and runs" "$flags"$'\n'"$(cat "$tmp/errors")"
fi

launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
if cmake -S "$root/examples/hello-tab" -B "$tmp/hello" -DCMAKE_PREFIX_PATH="$prefix" \
  -DPelkoSDK_DIR="$prefix/$libdir/cmake/PelkoSDK" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" \
  "${launcher[@]}" >"$tmp/hello.log" 2>&1 && cmake --build "$tmp/hello" -j2 >>"$tmp/hello.log" 2>&1 &&
  [ -f "$tmp/hello/libhellotab.so" ]; then
  pass "examples/hello-tab builds against the unpacked development package"
  cp "$tmp/hello/libhellotab.so" "$home/plugins/"
  if run_viewer C.UTF-8 && grep -qx 'tab: Hello' <<<"$output"; then
    pass "the unpacked viewer loads the hello-tab plug-in"
  else
    fail "the unpacked viewer loads the hello-tab plug-in" "$output"$'\n'"$errors"
  fi
else
  fail "examples/hello-tab builds against the unpacked development package" "$(tail -n 30 "$tmp/hello.log")"
fi

finish
