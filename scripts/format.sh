#!/usr/bin/env bash
# Formats the sources in place; with --check it only tells which would change.
source scripts/common.sh
mode=(-i)
[ "${1:-}" = --check ] && mode=(--dry-run --Werror)
git ls-files --cached --others --exclude-standard -z '*.c' '*.cpp' '*.h' | xargs -0 clang-format "${mode[@]}"
