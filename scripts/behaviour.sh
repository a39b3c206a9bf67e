#!/usr/bin/env bash
# Every test that docs/behaviour.md names is there, every row names one, and no test of the agent is left out.
source scripts/common.sh
TABLE=docs/behaviour.md
tests_in() { perl -0777 -ne 'print "$1.$2\n" while /^TEST\w*\(\s*(\w+),\s*(\w+)\s*\)/mg' "$@" | sort -u; }
named=$(sed -n 's/^| .* | `\([A-Za-z]*\.[A-Za-z]*\)` |$/\1/p' "$TABLE")
bare=$(grep '^|' "$TABLE" | grep -vE '^\| .* \| `[A-Za-z]+\.[A-Za-z]+` \|$|^\|---\|---\|$|^\| what happens \| pinned by \|$' || true)
missing=$(comm -23 <(sort -u <<<"$named") <(tests_in tests/unit/*.cpp tests/e2e/*.cpp))
silent=$(comm -13 <(sort -u <<<"$named") <(tests_in tests/unit/*.cpp))
[ -z "$bare" ] || echo "rows without a test: $bare"
[ -z "$missing" ] || echo "no such test: $missing"
[ -z "$silent" ] || echo "tests without a row: $silent"
echo "$(wc -l <<<"$named") rows, $(sort -u <<<"$named" | wc -l) tests"
[ -z "$bare$missing$silent" ]
