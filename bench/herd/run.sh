#!/usr/bin/env bash
# How well retry waits spread a fleet that meets an outage: ./dev bench herd [OPTION…] (--help lists them). Prints a table
# and draws a picture: without options the one in docs/, else build/bench/herd.svg.
source scripts/common.sh
data=$BUILD/bench/herd.tsv
picture=docs/img/herd.svg
[ $# -eq 0 ] || picture=$BUILD/bench/herd.svg
mkdir -p "$BUILD/bench"
bash scripts/deps.sh gnuplot-nox
bash scripts/build.sh herd
rm -f "$data"
"$BUILD/native/bin/herd" --data "$data" "$@"
# There is none when it was asked for its options.
[ ! -f "$data" ] || gnuplot -e "data='$data'; picture='$picture'" bench/herd/herd.gp
