# Rounds, and how their samples become rows of one table and points of curves. Sourced behind scripts/common.sh.
# A part's rows stand in build/bench/PART.tsv, one a line:
#   what <TAB> agent <TAB> floor <TAB> unit <TAB> ratio <TAB> spread <TAB> target        ("-": there is none)
# and its curves in build/bench/PART.curve.tsv, one point a line:
#   curve, by what <TAB> unit <TAB> number on the axis <TAB> value
RESULTS=$BUILD/bench

# rounds COUNT COMMAND…: runs it so often; ROUND is the number of the round, from 0.
rounds() { for ((ROUND = 0; ROUND < $1; ROUND++)); do "${@:2}"; done; }

# median: of the numbers on standard input, the lower one in the middle.
median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

# begin_part NAME: the part that rows and points are of from now on.
begin_part() {
  PART=$RESULTS/$1
  mkdir -p "$RESULTS"
  rm -f "$PART".*tsv
}

# row WHAT UNIT TARGET FILE [AGENT [FLOOR]]: a row from the samples "NAME VALUE" in FILE, of the two names given (agent,
# floor). Medians of both; the ratio is the median of the pairs' ratios, the spread the least and the largest of them, or
# of the values where there is nothing to pair them with.
row() {
  awk -v what="$1" -v unit="$2" -v target="$3" -v left="${5:-agent}" -v right="${6:-floor}" '
    function order(a, n,   i, j, t) {
      for (i = 2; i <= n; i++) for (j = i; j > 1 && a[j - 1] > a[j]; j--) { t = a[j]; a[j] = a[j - 1]; a[j - 1] = t }
    }
    function median(a, n) { order(a, n); return n % 2 ? a[(n + 1) / 2] : (a[n / 2] + a[n / 2 + 1]) / 2 }
    function show(x) { return sprintf(x >= 100 ? "%.0f" : x >= 10 ? "%.1f" : x >= 1 ? "%.2f" : "%.3f", x) }
    { sub(/\r$/, "") }
    $1 == left { a[++n] = $2 }
    $1 == right { b[++m] = $2 }
    END {
      if (n == 0) exit 1
      for (i = 1; i <= n && i <= m; i++) ratios[++pairs] = a[i] / b[i]
      ratio = pairs ? sprintf("%.2f", median(ratios, pairs)) : "-"
      middle = show(median(a, n))
      spread = pairs ? sprintf("%.2f–%.2f", ratios[1], ratios[pairs]) : n > 1 ? show(a[1]) "–" show(a[n]) : "-"
      printf "%s\t%s\t%s\t%s\t%s\t%s\t%s\n", what, middle, m ? show(median(b, m)) : "-", unit, ratio, spread, target
    }' "$4" | tee -a "$PART.tsv" | as_table
}

# point CURVE UNIT NUMBER FILE [NAME]: a point of a curve, the median of the samples of that name (agent); those of a time
# in seconds are milliseconds.
point() {
  local value
  value=$(awk -v name="${5:-agent}" -v scale="$([ "$2" = s ] && echo 1000 || echo 1)" \
    '$1 == name { print $2 / scale }' "$4" | median)
  printf '%s\t%s\t%s\t%s\n' "$1" "$2" "$3" "$value" >>"$PART.curve.tsv"
  echo "  $1: $3: $value $2"
}

TABLE_HEAD='| what | agent | floor | unit | ratio | spread | target |
|---|--:|--:|---|--:|--:|--:|'

# as_table: rows of a .tsv as lines of a Markdown table.
as_table() { sed 's/\t/ | /g; s/^/| /; s/$/ |/'; }
