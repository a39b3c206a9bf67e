#!/usr/bin/env bash
# Which lines and branches of the agent do its unit tests run? ./dev coverage prints a table per folder and what was not
# run. Status 1: below 95 % of the lines or 90 % of the branches.
source scripts/common.sh
COVERAGE=$BUILD/coverage
PROGRAM=$COVERAGE/bin/agent_unit_tests

measure() {
  rm -f "$COVERAGE"/*.profraw
  LLVM_PROFILE_FILE=$COVERAGE/%p.profraw "$PROGRAM" --gtest_brief=1 </dev/null &&
    llvm-profdata merge -o "$COVERAGE/all.profdata" "$COVERAGE"/*.profraw
}

# tell FOLDER…: lcov's records in, table and list out. A branch is one outcome of one condition; the even ones are "true".
tell() {
  awk -v root="$ROOT/" -v order="$*" '
    function share(part, whole) { return whole ? sprintf("%.1f %%", 100 * part / whole) : "-" }
    function row(name) {
      printf "| %-9s | %5d | %5d | %7s | %8d | %5d | %7s |\n", name, lines[name], run[name],
        share(run[name], lines[name]), branches[name], taken[name], share(taken[name], branches[name])
    }
    function missed(line, what) { list = list sprintf("%s:%d: %s\n", file, line, what) }
    /^SF:/ { file = substr($0, 4 + length(root)); folder = file; sub("/.*", "", folder) }
    /^DA:/ {
      split(substr($0, 4), field, ",")
      ++lines[folder]; ++lines["all"]
      if (field[2] > 0) { ++run[folder]; ++run["all"] } else missed(field[1], "not run")
    }
    /^BRDA:/ {
      split(substr($0, 6), field, ",")
      ++branches[folder]; ++branches["all"]
      if (field[4] > 0) { ++taken[folder]; ++taken["all"] } else missed(field[1], field[3] % 2 ? "never false" : "never true")
    }
    END {
      print "| folder    | lines |   run |         | branches | taken |         |"
      print "|-----------|------:|------:|--------:|---------:|------:|--------:|"
      count = split(order " all", names, " ")
      for (i = 1; i <= count; ++i) row(names[i])
      printf "%s", list
      exit !(lines["all"] > 0 && run["all"] >= 0.95 * lines["all"] && taken["all"] >= 0.90 * branches["all"])
    }'
}

[ $# -eq 0 ] || die "usage: ./dev coverage"
bash scripts/deps.sh
bash scripts/build.sh coverage
step "agent's unit tests" "$BUILD/log/coverage.log" measure
folders=(agent catalogue service install progress)
llvm-cov export -format=lcov "$PROGRAM" -instr-profile="$COVERAGE/all.profdata" "${folders[@]/#/$ROOT/}" |
  tell "${folders[@]}"
