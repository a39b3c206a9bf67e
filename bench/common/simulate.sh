#!/usr/bin/env bash
# simulate.sh NAME [OPTION…]: a native simulation of bench/NAME prints its table, and its picture is drawn: without options
# the one in docs/, else build/bench/NAME.svg.
source scripts/common.sh
name=$1
shift
data=$BUILD/bench/$name.tsv
picture=docs/img/$name.svg
[ $# -eq 0 ] || picture=$BUILD/bench/$name.svg
mkdir -p "$BUILD/bench"
bash scripts/deps.sh gnuplot-nox
bash scripts/build.sh "$name"
rm -f "$data"
"$BUILD/native/bin/$name" --data "$data" "$@"
# There is none when it was asked for its options.
[ ! -f "$data" ] || gnuplot -e "data='$data'; picture='$picture'" "bench/$name/$name.gp"
