#!/usr/bin/env bash
# How well retry waits spread a fleet that meets an outage: ./dev bench herd [OPTION…] (--help lists them). Prints a table
# and draws a plot: without options the one in docs/, else build/bench/herd.svg unless --plot names another.
source scripts/common.sh
plot=docs/img/herd.svg
[ $# -eq 0 ] || plot=$BUILD/bench/herd.svg
mkdir -p "$(dirname "$plot")"
bash scripts/deps.sh
bash scripts/build.sh herd
exec "$BUILD/native/bin/herd" --plot "$plot" "$@"
