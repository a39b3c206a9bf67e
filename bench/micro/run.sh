#!/usr/bin/env bash
# What single steps of the agent cost, natively, in CPU time: ./dev bench micro [OPTION…], options of Google Benchmark.
source scripts/common.sh
source bench/common/measure.sh
SAMPLES=$BUILD/bench/micro.samples

# samples: the benchmark's repetitions, each "NAME VALUE", in microseconds; those over a reply, for each KiB of it. What an
# event takes beyond its copies is a sample of its own.
samples() {
  jq -r '.benchmarks[] | select(.error_occurred) | error("\(.name): \(.error_message)")' "$1"
  jq -r '[.benchmarks[] | select(.run_type == "iteration")] | group_by(.repetition_index)[] |
    (map({key: .name, value: (if .perKiB then 1e6 * .perKiB else .cpu_time / 1000 end)}) | from_entries) |
    . + {BeyondCopies: (.PacedProgressEvent - .CopiesOfProgressEvent), StatusAnswerMs: (.StatusAnswer / 1000),
      TextBothWays: (.["CallThroughC/64"] - .["CallOfCpp/64"]), TextOfMany: (.["CallThroughC/1024"] - .["CallOfCpp/1024"])} |
    to_entries[] | "\(.key) \(.value)"' "$1"
}

bash scripts/deps.sh
bash scripts/build.sh micro
mkdir -p "$RESULTS"
# In random order, so that what disturbs the machine for a while does not hit one of them alone.
step "repetitions" "$BUILD/log/bench-micro.log" "$BUILD/native/bin/micro_bench" --benchmark_repetitions="${ROUNDS:-9}" \
  --benchmark_enable_random_interleaving=true --benchmark_min_time=0.2 --benchmark_out="$SAMPLES.json" "$@"
samples "$SAMPLES.json" >"$SAMPLES"
begin_part micro
row "progress event that is paced away, beyond its two copies" µs "< 1" "$SAMPLES" BeyondCopies -
row "the two copies: module, title of 2 modules × 3 files" µs - "$SAMPLES" CopiesOfProgressEvent -
row "status answer for 1,000 titles, the last one asked for" ms "< 2" "$SAMPLES" StatusAnswerMs -
row "body of a download report" µs "< 1" "$SAMPLES" BodyOfDownloadReport -
row "reply parse per KiB, against jsoncpp alone" µs "≤ 1.05" "$SAMPLES" ReplyParse BareParse
row "the same, against jsoncpp on a text that is new each time" µs - "$SAMPLES" ReplyParse BareParseOfNewText
row "whole entitlement query per KiB, exchange left out, against one jsoncpp parse" µs - "$SAMPLES" EntitlementQuery BareParse
row "log line until it is text" µs - "$SAMPLES" LogRecordText -
row "call with a document through the C interface per KiB, against the C++ call" µs - "$SAMPLES" CallThroughC/64 CallOfCpp/64
row "its JSON text both ways, against one jsoncpp parse" µs "≤ 2.5" "$SAMPLES" TextBothWays ParseOfTitles/64
row "the same, 1,024 titles" µs "≤ 2.5" "$SAMPLES" TextOfMany ParseOfTitles/1024
