# What is done and measured outside Wine, for comparison. Sourced by run.sh.

# clocked NAME COMMAND…: adds how long the command takes, in milliseconds.
clocked() {
  local begin=$EPOCHREALTIME
  "${@:2}" >/dev/null
  awk -v n="$1" -v a="$begin" -v b="$EPOCHREALTIME" 'BEGIN { printf "%s %.3f\n", n, 1000 * (b - a) }' >>"$SAMPLES"
}

# ask TYPE BODY [MORE-OF-THE-URL [OPTION…]]: a request of the service by curl.
ask() {
  TOKEN=${TOKEN:-$(curl -sS --cacert "$PKI/ca.crt" -d '{"sessionToken":"session-of-the-lab"}' "$CLOUD_URL/token" | jq -r .jwt)}
  curl -sS --cacert "$PKI/ca.crt" -H 'Content-Type: application/json' -H "token: $TOKEN" -d "$2" "${@:4}" \
    "$CLOUD_URL/mp/zlt/v2/$1?deviceId=PC-0001${3:-}"
}

# CPU seconds that the lab's servers have used: the download engine and the other services, and Wine's own.
services_cpu() {
  local environ
  for environ in /proc/[0-9]*/environ; do
    ! grep -qzFx "WINEPREFIX=$WINEPREFIX" "$environ" 2>/dev/null || cat "${environ%environ}stat" 2>/dev/null || true
  done | sed 's/.*) //' | awk -v hz="$(getconf CLK_TCK)" '{ sum += $12 + $13 } END { print sum / hz }'
}

# The has-entitlement query by curl. One connection, kept for all the calls.
native_calls() {
  ask "hasEntitlement" '{"type":"hasEntitlement","parameters": { "deviceId":"PC-0001"}}' "&call=[1-200]" \
    -o /dev/null -w '%{time_total}\n' | median | awk '{ printf "curl %.4f\n", 1000 * $1 }' >>"$SAMPLES"
}

# The large file by curl.
fetch_by_curl() {
  local url
  url=$(ask downloadRequest '{"type":"downloadRequest","parameters":{"l1FruPn":"L-001","moduleFruPn":"M-1"}}' |
    jq -r '.result.fileList[0].downloadUrl')
  clocked curl curl -sSf --cacert "$PKI/ca.crt" -o "$PLACE/large.bin" "$url"
  rm "$PLACE/large.bin"
}

# Both deletions belong to what is timed, as the one under Wine does not: it costs some milliseconds.
unpack() {
  cabextract -q -d "$PLACE/unpacked" "$PLACE/$1.cab" 2>/dev/null
  rm -r "$PLACE/unpacked"
}

verify_and_unpack() { osslsigncode verify -CAfile "$PKI/ca.crt" -in "$PLACE/$1.cab" 2>/dev/null && unpack "$1"; }
