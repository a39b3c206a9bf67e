#!/usr/bin/env bash
# Lines that are not blank, folder by folder; the tests' share; median and longest file and function.
source scripts/common.sh
bash scripts/deps.sh universal-ctags

# sources PATH…: what counts as code.
sources() { git ls-files -co --exclude-standard -- "$@" | grep -E '\.(c|cpp|h|cs|def|go|sh|ps1|cmake|gp)$|CMakeLists.txt$|^dev$'; }
lines() { sources "$@" | xargs -r cat | grep -cv '^[[:space:]]*$' || true; }

# lengths_of_files, lengths_of_functions PATH…: "LENGTH WHERE", one a line, of C++.
lengths_of_files() { sources "$@" | grep -E '\.(cpp|h)$' | xargs -r wc -l | grep -v ' total$' | awk '{ print $1, $2 }'; }
lengths_of_functions() {
  sources "$@" | grep -E '\.(cpp|h)$' | ctags -L - -f - --languages=C++ --kinds-C++=f --fields=+ne --excmd=number |
    awk -F'\t' '{ for (i = 4; i <= NF; i++) { if ($i ~ /^line:/) a = substr($i, 6); if ($i ~ /^end:/) e = substr($i, 5) }
      print e - a + 1, $2 ": " $1 }'
}

# middle_and_top: of such lengths.
middle_and_top() { sort -n | awk '{ n[NR] = $1; last = $0 } END { print NR ? n[int((NR + 1) / 2)] ", " last : "-" }'; }

# row NAME PATH…
row() {
  local name=$1 count
  shift
  count=$(lines "$@")
  printf '%-24s %6d   %-42s %s\n' "$name" "$count" "$(lengths_of_files "$@" | middle_and_top)" \
    "$(lengths_of_functions "$@" | middle_and_top)"
}

PRODUCT=(agent catalogue service install progress c_interface bindings host reference_host tools demo examples bench scripts cmake dev CMakeLists.txt)
printf '%-24s %6s   %-42s %s\n' folder lines "file: median, longest" "function: median, longest"
for folder in agent catalogue service install progress c_interface bindings host reference_host tools/* \
  demo examples bench; do
  row "$folder/" "$folder"
done
row "scripts and build" scripts cmake dev CMakeLists.txt
row "product, all together" "${PRODUCT[@]}"
row "tests/" tests
echo "one line of tests for $(awk "BEGIN { printf \"%.1f\", $(lines "${PRODUCT[@]}") / $(lines tests) }") lines of product"
