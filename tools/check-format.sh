#!/usr/bin/env bash
# Fails when any C++ source of the project differs from what clang-format makes of it.
set -euo pipefail
root=${1:-$(cd "$(dirname "$0")/.." && pwd)}
cd "$root"
mapfile -t listed < <(git ls-files -co --exclude-standard -- '*.h' '*.cpp' 2>/dev/null || find . -name '*.h' -o -name '*.cpp')
# A tracked file deleted in the working tree is still listed until the deletion is committed.
files=()
for file in "${listed[@]}"; do
  [ -f "$file" ] && files+=("$file")
done
if [ ${#files[@]} -eq 0 ]; then
  echo "no sources found under $root" >&2
  exit 1
fi
clang-format --dry-run --Werror "${files[@]}"
echo "clang-format: ${#files[@]} files clean"
