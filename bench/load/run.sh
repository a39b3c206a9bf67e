#!/usr/bin/env bash
# The agent under many threads, on Wine: ./dev bench load. How long 64 threads that wait to send a request again take to
# come back from a stop, beside 64 that only wait for an event (and natively, for comparison); what a log line costs that
# 8 threads write at once.
source scripts/common.sh
source bench/common/lab.sh
source bench/common/measure.sh
ROUNDS=${ROUNDS:-20}
THREADS=64
OFFER=$RESULTS/load
SAMPLES=$RESULTS/load.samples

# Every query is refused, as by a service that is down.
make_catalogue() {
  jq -n '{sessionToken: "session-of-the-lab", titles: [], faults: [
    {on: "entitlement", status: 503}, {on: "downloadRequest", status: 503}]}' >"$OFFER/catalogue.json"
}

# A device that is not registered asks nothing when the agent starts.
fresh_device() { cloud_device load load '.registered = false'; }

# load_bench ARGUMENT…: its samples.
load_bench() {
  lab_wine 120 "$LAB_BIN/load_bench.exe" "$@" | tr -d '\r' || die "load_bench $*: see $LAB_C/lab/load/log"
}

# An agent ends with its stop, so each round is a process.
stop_round() {
  fresh_device
  load_bench stop "$THREADS" 'C:\lab\load\log\TolmarAgent.log'
}

# stop_row WHAT SHARE TARGET FILE: the time that this share of the threads is back after, of all rounds together; the
# spread is that of the single rounds.
stop_row() {
  jq -rRn --arg what "$1" --argjson share "$2" --arg target "$3" --argjson threads "$THREADS" '
    def quantile: sort | .[(length * $share | ceil) - 1];
    def show: 100 * . | round / 100;
    [inputs | split(" ") | {name: .[0], ms: (.[1] | tonumber)}] |
    map(select(.name == "agent").ms) as $agent | map(select(.name == "floor").ms) as $floor |
    [range(0; $agent | length; $threads) | $agent[.:. + $threads] | quantile] as $rounds |
    [$what, ($agent | quantile | show), ($floor | quantile | show), "ms", "-",
      "\($rounds | min | show)–\($rounds | max | show)", $target] | @tsv' "$4" | tee -a "$PART.tsv" | as_table
}

# stop_rows PLACE TARGET FILE
stop_rows() {
  stop_row "stop of $THREADS waiting threads, $1, p50" 0.5 - "$3"
  stop_row "stop of $THREADS waiting threads, $1, p99" 0.99 "$2" "$3"
  stop_row "stop of $THREADS waiting threads, $1, worst" 1 - "$3"
}

lab_begin load cloudsim load-native
mkdir -p "$OFFER"
make_catalogue
cloud_start "$OFFER" load
begin_part load
rounds "$ROUNDS" stop_round >"$SAMPLES"
stop_rows Wine "< 10" "$SAMPLES"
rounds "$ROUNDS" "$NATIVE_BIN/load_bench_native" "$THREADS" >"$SAMPLES.native"
stop_rows native - "$SAMPLES.native"
fresh_device
rounds 5 load_bench log 8 >"$SAMPLES.log"
row "log line, 8 threads at once, against appending its bytes" µs - "$SAMPLES.log"
