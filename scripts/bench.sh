#!/usr/bin/env bash
# ./dev bench NAME [ARGUMENT…] runs one benchmark, bench/NAME/run.sh; without a name, those of docs/performance.md.
source scripts/common.sh
[ $# -gt 0 ] || exec bash bench/page.sh
name=$1
shift
[ -f "bench/$name/run.sh" ] ||
  die "usage: ./dev bench [$(ls bench/*/run.sh | sed 's|bench/\(.*\)/run.sh|\1|' | paste -sd '|') [ARGUMENT…]]"
exec bash "bench/$name/run.sh" "$@"
