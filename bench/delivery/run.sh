#!/usr/bin/env bash
# The agent against the parts under it, on the real parts: ./dev bench delivery [PART…], all of PARTS without.
source scripts/common.sh
source bench/common/lab.sh
source bench/common/measure.sh
source bench/delivery/offer.sh
source bench/delivery/outside.sh
source bench/delivery/parts.sh
ROUNDS=${ROUNDS:-5}
LIMIT=300
PLACE=$LAB_C/lab/bench
SAMPLES=$RESULTS/samples

PARTS=(install reading exchange status download extract footprint)

# sample PROGRAM ARGUMENT…: the program's samples are added to $SAMPLES. Now and then Wine's BITS service falls silent for
# good (its RPC server waits for a call that has ended): a PC that is started anew goes on.
sample() {
  local try
  for try in 1 2 3; do
    if lab_wine "$LIMIT" "$LAB_BIN/$1.exe" "${@:2}" >"$SAMPLES.new"; then
      cat "$SAMPLES.new" >>"$SAMPLES"
      return 0
    fi
    echo "  again: $*" >&2
    lab_down
    lab_up
  done
  die "$*: see $PLACE/log"
}

# anew PROGRAM ARGUMENT…: the same, to the program's samples alone.
anew() { rm -f "$SAMPLES" && sample "$@"; }

# sample_round PART: one round of the part, as rounds has it.
sample_round() { sample delivery_bench "$1" --rounds 1 --from "$ROUND"; }

lab_begin delivery cloudsim
make_offer
cloud_start "$OFFER" bench
cloud_device bench bench
[ $# -gt 0 ] || set -- "${PARTS[@]}"
for part in "$@"; do
  begin_part "$part"
  "measure_$part"
done
