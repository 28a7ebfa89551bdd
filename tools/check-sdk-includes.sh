#!/usr/bin/env bash
# Fails when an SDK source includes a header of a part it may not use:
# core/ uses no backend, sim/ and arv/ use core/ and not each other.
# The compilers' include paths already keep the parts apart; this also
# catches a relative path that walks around them.
#   tools/check-sdk-includes.sh PelkoSDK/src
set -euo pipefail
src=$1
allowed() {  # part -> the folders its quoted includes may come from
  case $1 in
    core) echo "core" ;;
    sim) echo "sim sim/models core" ;;
    arv) echo "arv core" ;;
  esac
}
status=0
for part in core sim arv; do
  while IFS= read -r file; do
    dir=$(dirname "$file")
    while IFS= read -r header; do
      found=""
      # Resolved like the compiler: beside the file first, then the allowed folders.
      if [ -f "$dir/$header" ]; then
        found=$(realpath --relative-to="$src" "$dir/$header")
      else
        for ok in $(allowed $part); do
          if [ -f "$src/$ok/$header" ]; then found="$ok/$header"; break; fi
        done
      fi
      if [ -z "$found" ]; then
        echo "$file: includes \"$header\", which is not in a part that $part/ may use"
        status=1
        continue
      fi
      fine=0
      for ok in $(allowed $part); do
        [ "$(dirname "$found")" = "$ok" ] && fine=1
      done
      if [ $fine = 0 ]; then
        echo "$file: includes $found, which $part/ may not use"
        status=1
      fi
    done < <(sed -n 's/^#include "\(.*\)".*/\1/p' "$file" | grep -v '\.moc$' || true)
  done < <(find "$src/$part" -name '*.h' -o -name '*.cpp')
done
exit $status
