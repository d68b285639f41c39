#!/usr/bin/env bash
# The library's defined dynamic symbols must be exactly the names of the exports map.
set -euo pipefail
lib=$1 map=$2
have=$(nm -D --defined-only "$lib" | awk '{print $3}' | sed 's/@.*//' | sort -u)
want=$(grep -oE '^[[:space:]]*[A-Za-z_][A-Za-z0-9_]*;' "$map" | tr -d ' \t;' | sort -u)
if [ "$have" != "$want" ]; then
  echo "exported: $have"; echo "expected: $want"
  diff <(echo "$want") <(echo "$have") || true
  exit 1
fi
echo "exports: $(echo $have)"
