#!/usr/bin/env bash
# Builds the Debian packages pelko-viewer, libpelkocpp0 and libpelkocpp-dev
# with CPack into BUILD_DIR/packages/ and checks them with lintian.
#   tools/package.sh [BUILD_DIR] [extra cmake arguments...]      (BUILD_DIR: build/)
# What goes into which package: cmake/PkoPackaging.cmake.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
shift || true

"$root/tools/install-deps.sh"
# Installed under /usr; the programs find the rest relative to themselves.
"$root/tools/build.sh" "$build" -DCMAKE_INSTALL_PREFIX=/usr "$@"

rm -rf "$build/packages"
if ! (cd "$build" && cpack -G DEB) >"$build/cpack.log" 2>&1; then
  cat "$build/cpack.log" >&2
  exit 1
fi
shopt -s nullglob
debs=("$build"/packages/*.deb)
if [ ${#debs[@]} -ne 3 ]; then
  echo "package.sh: expected 3 packages in $build/packages, found ${#debs[@]}" >&2
  exit 1
fi

# Errors fail; warnings are shown. The packages' overrides, each with its
# reason: packaging/*/lintian-overrides.
lintian --fail-on error "${debs[@]}"
printf '%s\n' "${debs[@]}"
