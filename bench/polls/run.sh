#!/usr/bin/env bash
# How a fleet of services polls: ./dev bench polls [OPTION…] (--help lists them). Prints a table and draws a picture:
# without options the one in docs/, else build/bench/polls.svg.
source scripts/common.sh
data=$BUILD/bench/polls.tsv
picture=docs/img/polls.svg
[ $# -eq 0 ] || picture=$BUILD/bench/polls.svg
mkdir -p "$BUILD/bench"
bash scripts/deps.sh gnuplot-nox
bash scripts/build.sh polls
rm -f "$data"
"$BUILD/native/bin/polls" --data "$data" "$@"
# There is none when it was asked for its options.
[ ! -f "$data" ] || gnuplot -e "data='$data'; picture='$picture'" bench/polls/polls.gp
