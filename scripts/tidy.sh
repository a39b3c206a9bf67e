#!/usr/bin/env bash
# clang-tidy over the product's sources that build natively. A file that passed is not looked at again until it, a header
# or the configuration changes.
source scripts/common.sh
common=$(git ls-files -co --exclude-standard -z '*.h' .clang-tidy | sort -z | xargs -0 sha256sum | sha256sum | cut -c1-16)
export PASSED=$BUILD/tidy/$common
mkdir -p "$PASSED"

tidy_one() {
  local key
  key=$PASSED/$(cat "$2" <(echo "$2") | sha256sum | cut -c1-32)
  [ -f "$key" ] && return 0
  clang-tidy --quiet -p "$1" "$2" 2>/dev/null && touch "$key"
}
export -f tidy_one

sed -n 's/^ *"file": "\(.*\)".*/\1/p' "$BUILD/native/compile_commands.json" | sort -u |
  grep -E "^$ROOT/(agent|catalogue|service|install|progress|reference_host|tools|bench)/" |
  xargs -P "$JOBS" -I{} bash -c "tidy_one '$BUILD/native' '{}'"
