#!/usr/bin/env bash
# What the simulator can take, and whether a fleet behaves as the model says: ./dev bench drive. 10,000 devices with the
# agent's whole conversation over TLS and without; then a fleet that meets an outage, beside the model's figures for it.
# With options: cloudsim drive against the bench's simulator over TLS, once (cloudsim drive --help).
source scripts/common.sh
source scripts/lab.sh
source scripts/cloud.sh
OFFER=$BUILD/bench/drive
export TOLMAR_SESSION_TOKEN=session-of-the-bench

# Three titles, four modules, as in the demo, with packages of 20 kB: what is measured is requests, not the network.
make_offer() {
  local name
  mkdir -p "$OFFER"
  for name in a b c d; do
    head -c 20000 /dev/urandom >"$OFFER/$name.cab"
    echo 'exit 0' >"$OFFER/check-$name.ps1"
  done
  jq -n --arg token "$TOLMAR_SESSION_TOKEN" '
    def one($name): {moduleFruPn: "M-\($name)", files: ["\($name).cab", "check-\($name).ps1"]};
    def title($name; $modules): {l1FruPn: "T-\($name)", name: $name, modules: $modules | map(one(.))};
    {sessionToken: $token, titles: [title("A"; ["a", "b"]), title("C"; ["c"]), title("D"; ["d"])]}' >"$OFFER/catalogue.json"
}

drive() { "$NATIVE_BIN/cloudsim" drive "$CLOUD_URL" --ca "$PKI/ca.crt" "$@"; }

# serve [--plain]: a fresh simulator, over TLS or without.
serve() {
  cloud_stop
  if [ "${1:-}" = --plain ]; then cloud_start_plain "$OFFER" bench; else cloud_start "$OFFER" bench; fi
}

faults() { curl -sS --fail --cacert "$PKI/ca.crt" -X PUT -d "$1" "$CLOUD_URL/faults" >/dev/null; }

# outage DEVICES SCALE: all begin within a model's minute, at the start of an outage of ten; then the same by the model.
outage() {
  local devices=$1 scale=$2 driver
  serve --plain
  faults '[{"on":"entitlement","status":503}]'
  drive --devices "$devices" --list-only --wait-scale "$scale" --workers 100 --json "$OFFER/outage.json" \
    --rate "$(jq -n "$devices / (60 * $scale)")" >"$OFFER/outage.txt" &
  driver=$!
  sleep "$(jq -n "600 * $scale")"
  faults '[]'
  wait "$driver"
  jq -r --argjson scale "$scale" '(.seconds / $scale) as $s | "measured: \(.kinds[] | select(.kind == "entitlement").requests) queries, \(
    .complete) of \(.devices) devices served, the last after \($s | floor) s of the model (\(.seconds) s)"' "$OFFER/outage.json"
  "$NATIVE_BIN/herd" --devices "$devices" --capacity 1000000 | sed -n 's/^| \(ours[^|]*\)|[^|]*|[^|]*| *\([0-9,]*\) *| *\([0-9.]*\) *| *\([0-9:]*\) *|.*/model (\1): \2 queries, \3 % served, the last after \4/p'
}

bash scripts/deps.sh
bash scripts/build.sh cloudsim herd
pki_make
trap cloud_stop EXIT
make_offer
serve
if [ $# -gt 0 ]; then
  drive "$@"
  exit
fi
echo "10,000 devices, whole conversation, over TLS:"
drive --devices 10000 --json "$OFFER/tls.json"
echo && echo "the same, spread over two minutes:"
serve
drive --devices 10000 --rate 83.4 --json "$OFFER/spread.json"
echo && echo "the same at once, without TLS:"
serve --plain
drive --devices 10000 --json "$OFFER/plain.json"
echo && echo "an outage of ten minutes, twenty times as quick:"
outage 2000 0.05
