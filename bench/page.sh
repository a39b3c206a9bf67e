#!/usr/bin/env bash
# Runs the benchmarks that docs/performance.md tells of, and writes its table and its picture anew.
source scripts/common.sh
source bench/common/measure.sh
BENCHMARKS=(delivery micro load)
PARTS=(install reading exchange status download extract footprint micro load) # of all of them, in the table's order
PAGE=docs/performance.md

# gathered KIND: the parts' files of that kind, one behind the other.
gathered() {
  local part
  for part in "${PARTS[@]}"; do
    [ ! -f "$RESULTS/$part$1" ] || cat "$RESULTS/$part$1"
  done
}

# draw: what was gathered, as bench/performance.gp wants it.
draw() {
  awk -F'\t' -v OFS='\t' '$5 != "-" { split($6, spread, "–"); gsub(/[^0-9.]/, "", $7)
    print $1, $5, spread[1], spread[2], $7 }' "$RESULTS/rows" >"$RESULTS/ratios"
  gathered .curve.tsv | awk -F'\t' -v OFS='\t' '
    !($1 in points) { names[++count] = axis = $1; sub(/.*, by /, "", axis); heads[count] = $1 OFS $2 OFS axis }
    { points[$1] = points[$1] $3 OFS $4 "\n" }
    END { for (i = 1; i <= count; i++) printf "%s%s\n%s", (i > 1 ? "\n\n" : ""), heads[i], points[names[i]] }' >"$RESULTS/curves"
  gnuplot -e "ratios='$RESULTS/ratios'; curves='$RESULTS/curves'; picture='docs/img/performance.svg'" bench/performance.gp
}

machine() {
  local model
  model=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)
  echo "Measured on $(date -u +%F): $model, $(nproc) cores, Linux $(uname -r), $(wine --version 2>/dev/null). \`./dev bench\`, $1 s."
}

# Replaces what stands between the page's two marks.
write_page() {
  sed -i -e "/<!-- measured -->/,/<!-- end -->/{/<!-- measured -->/{p;r $1" -e '};/<!-- end -->/!d}' "$PAGE"
}

rm -f "$RESULTS"/*.tsv
for benchmark in "${BENCHMARKS[@]}"; do bash "bench/$benchmark/run.sh"; done
bash scripts/deps.sh gnuplot-nox
gathered .tsv >"$RESULTS/rows"
draw
{ machine "$SECONDS" && echo && echo "$TABLE_HEAD" && as_table <"$RESULTS/rows"; } >"$RESULTS/table.md"
write_page "$RESULTS/table.md"
echo
cat "$RESULTS/table.md"
