#!/usr/bin/env bash
# Lines that are not blank, by what they are for.
source scripts/common.sh
lines() { git ls-files -z -- "$@" | grep -zE '\.(cpp|h|sh|ps1|cmake)$|CMakeLists.txt|^dev$' | xargs -0 -r cat | grep -cv '^[[:space:]]*$' || true; }
agent=$(lines agent catalogue service install progress)
host=$(lines host reference_host)
tools=$(lines tools demo examples bench)
build=$(lines scripts cmake dev CMakeLists.txt)
tests=$(lines tests)
product=$((agent + host + tools + build))
printf '%-28s %6d\n' "agent" "$agent" "host and reference host" "$host" "tools, demo, benchmarks" "$tools" \
  "scripts and build" "$build" "product, all together" "$product" "tests" "$tests"
echo "one line of tests for $(awk "BEGIN { printf \"%.1f\", $product / $tests }") lines of product"
