#!/usr/bin/env bash
# Runs a benchmark: ./dev bench NAME [ARGUMENT…] calls scripts/bench-NAME.sh.
source scripts/common.sh
name=${1:-}
[ -n "$name" ] && [ -f "scripts/bench-$name.sh" ] ||
  die "usage: ./dev bench $(ls scripts/bench-*.sh | sed 's|.*/bench-\(.*\)\.sh|\1|' | paste -sd '|') [ARGUMENT…]"
shift
exec bash "scripts/bench-$name.sh" "$@"
