#!/usr/bin/env bash
# The agent against the parts under it, on the real parts: ./dev bench delivery [PART…], all of PARTS without.
source scripts/common.sh
source scripts/lab.sh
source scripts/cloud.sh
source scripts/measure.sh
ROUNDS=${ROUNDS:-5}
LIMIT=300
OFFER=$BUILD/bench/offer
PLACE=$LAB_C/lab/bench
SAMPLES=$BUILD/bench/samples
MODULES=40
CHECKS=256
FILES=(2 5 10 20 40)

PARTS=(install exchange status download extract footprint)

# A package of a little more than 1 MB for each module, whose installation leaves a mark that its check looks for.
make_module() {
  local files=$OFFER/module.files mark="C:\\lab\\bench\\mark-$1"
  mkdir -p "$files"
  head -c 1000000 /dev/urandom >"$files/payload.bin"
  printf "Set-Content -Path '%s' -Value 'yes'\nexit 0\n" "$mark" >"$files/install.ps1"
  printf "if (Test-Path '%s') { exit 0 }\nexit 1\n" "$mark" >"$OFFER/m-$1.ps1"
  cab_make "$OFFER/unsigned.cab" "$files"
  cab_sign "$OFFER/unsigned.cab" "$OFFER/m-$1.cab"
}

# make_package NAME: 200 MB of what comes on standard input, signed.
make_package() {
  mkdir -p "$OFFER/$1.files"
  head -c 200000000 >"$OFFER/$1.files/payload"
  cab_make "$OFFER/unsigned.cab" "$OFFER/$1.files"
  cab_sign "$OFFER/unsigned.cab" "$OFFER/$1.cab"
  rm -r "$OFFER/$1.files"
}

make_offer() {
  local number
  rm -rf "$OFFER"
  mkdir -p "$OFFER"
  for ((number = 1; number <= MODULES; number++)); do
    make_module "$number"
    head -c 100000 /dev/urandom >"$OFFER/data-$number.bin"
  done
  for ((number = 1; number <= CHECKS; number++)); do echo 'exit 0' >"$OFFER/$(printf 'S-%03d' "$number").ps1"; done
  seq -w 0 99999999 | make_package text
  make_package noise </dev/urandom
  head -c 500000000 /dev/urandom >"$OFFER/large.bin"
  make_catalogue >"$OFFER/catalogue.json"
  stamp "$OFFER/stamp" "$1"
}

# The titles of bench/delivery/Titles.h.
make_catalogue() {
  jq -n --argjson modules "$MODULES" --argjson checks "$CHECKS" --arg files "${FILES[*]}" '
    def name(letter; number): "\(letter)-\("00\(number)"[-3:])";
    def title(letter; number; modules): {l1FruPn: name(letter; number), name: "Bench", modules: modules};
    def unit(number; files): {moduleFruPn: "M-\(number)", files: files};
    def one(letter; number; files): title(letter; number; [unit(1; files)]);
    [range(1; $modules + 1) | unit(.; ["m-\(.).cab", "m-\(.).ps1"])] as $packages |
    [range(1; 41) | title("T"; .; $packages)] +
    [range(1; $checks + 1) | one("S"; .; [name("S"; .) + ".ps1"])] +
    [$files | split(" ")[] | tonumber |
      one("F"; .; ["m-1.cab"] + [range(1; . - 1) | "data-\(.).bin"] + ["m-1.ps1"])] +
    [one("L"; 1; ["large.bin"])] | {sessionToken: "session-of-the-lab", titles: .}'
}

start_cloud() {
  cloud_start "$OFFER" bench
  cloud_device bench bench
}

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

# anew PROGRAM ARGUMENT…: the same, to the program's samples alone. rounds: the same, as often as there are rounds.
anew() { rm -f "$SAMPLES" && sample "$@"; }
rounds() {
  local round
  rm -f "$SAMPLES"
  for ((round = 0; round < ROUNDS; round++)); do sample "$@" --rounds 1 --from "$round"; done
}

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

# curve TITLE NUMBERS OPTION…: the agent's time for each number, which goes to the last option.
curve() {
  local number
  for number in $2; do
    anew delivery_bench install --rounds 1 --agent-only "${@:3}" "$number"
    point "$1" s "$number" "$SAMPLES"
  done
}

measure_install() {
  rounds delivery_bench install
  row "installation of 20 titles × 2 modules × 1 MB" ms "≤ 1.05" "$SAMPLES"
  curve "installation, by titles" "1 5 10 20 40" --modules 1 --titles
  curve "installation, by modules of one title" "1 5 10 20 40" --titles 1 --modules
  curve "installation, by files of one module" "${FILES[*]}" --files
}

# One connection, kept for all the calls.
native_calls() {
  ask "hasEntitlement" '{"type":"hasEntitlement","parameters": { "deviceId":"PC-0001"}}' "&call=[1-200]" \
    -o /dev/null -w '%{time_total}\n' | sort -n | awk '{ v[NR] = $1 } END { printf "curl %.4f\n", 1000 * v[int((NR + 1) / 2)] }' \
    >>"$SAMPLES"
}

measure_exchange() {
  local round
  rm -f "$SAMPLES"
  for ((round = 0; round < ROUNDS; round++)); do
    sample delivery_bench exchange --rounds 1 --from "$round"
    native_calls
  done
  row "has-entitlement query, against curl outside Wine" ms "≤ 1.5" "$SAMPLES" agent curl
  row "has-entitlement query, against bare WinHTTP" ms - "$SAMPLES"
  row "bare WinHTTP, against curl outside Wine" ms - "$SAMPLES" floor curl
}

measure_status() {
  local number
  anew delivery_bench status --rounds "$ROUNDS" --titles 64
  row "installed state of 64 titles" ms "≤ 1.1" "$SAMPLES"
  anew delivery_bench status --rounds "$ROUNDS" --titles 64 --fresh
  row "the same, scripts to be fetched" ms "≤ 1.1" "$SAMPLES"
  for number in 1 16 64 128 256; do
    anew delivery_bench status --rounds 1 --titles "$number"
    point "installed-state query, by titles" s "$number" "$SAMPLES"
    point "threads of an installed-state query, by titles" threads "$number" "$SAMPLES" threads
  done
}

# The same file by curl, outside Wine.
fetch_by_curl() {
  local url
  url=$(ask downloadRequest '{"type":"downloadRequest","parameters":{"l1FruPn":"L-001","moduleFruPn":"M-1"}}' |
    jq -r '.result.fileList[0].downloadUrl')
  clocked curl curl -sSf --cacert "$PKI/ca.crt" -o "$PLACE/large.bin" "$url"
  rm "$PLACE/large.bin"
}

measure_download() {
  local round before
  before=$(services_cpu)
  anew delivery_bench download --rounds "$ROUNDS"
  # Each round fetches half a gigabyte twice.
  awk -v a="$before" -v b="$(services_cpu)" -v gb="$ROUNDS" 'BEGIN { print "services", (b - a) / gb }' >>"$SAMPLES"
  awk '$1 == "cpu-agent" { print "host", 2 * $2 }' "$SAMPLES" >"$SAMPLES.cpu"
  for ((round = 0; round < ROUNDS; round++)); do fetch_by_curl; done
  row "500 MB through DownloadFiles, against BITS alone" ms "≤ 1.03" "$SAMPLES"
  row "the same, against curl outside Wine" ms - "$SAMPLES" agent curl
  row "CPU per GB downloaded: host process" s - "$SAMPLES.cpu" host
  row "CPU per GB downloaded: BITS, Wine's server" s - "$SAMPLES" services none
}

# extraction NAME KIND
extraction() {
  local round
  rm -f "$SAMPLES"
  for ((round = 0; round < ROUNDS; round++)); do
    sample delivery_bench extract "C:\\lab\\bench\\$1.cab"
    clocked floor unpack "$1"
    clocked checked verify_and_unpack "$1"
  done
  row "check and extraction of 200 MB, $2, against cabextract" ms "≤ 1.5" "$SAMPLES"
  row "the same, against cabextract and osslsigncode verify" ms - "$SAMPLES" agent checked
  row "the first one of a process, against cabextract" ms - "$SAMPLES" first
  awk '$1 == "cpu" { print "cpu", 5 * $2 }' "$SAMPLES" >"$SAMPLES.cpu"
  row "CPU per GB unpacked, $2" s - "$SAMPLES.cpu" cpu
  row "memory for it, at most, $2" MiB - "$SAMPLES" peak-rise none
}

# Both deletions belong to what is timed, as the one under Wine does not: it costs some milliseconds.
unpack() {
  cabextract -q -d "$PLACE/unpacked" "$PLACE/$1.cab" 2>/dev/null
  rm -r "$PLACE/unpacked"
}

verify_and_unpack() { osslsigncode verify -CAfile "$PKI/ca.crt" -in "$PLACE/$1.cab" 2>/dev/null && unpack "$1"; }

measure_extract() {
  cp "$OFFER/text.cab" "$OFFER/noise.cab" "$PLACE"
  extraction text "text"
  extraction noise "incompressible"
}

measure_footprint() {
  local round
  rm -f "$SAMPLES"
  for ((round = 0; round < ROUNDS; round++)); do
    sample idle_host
    sample delivery_bench first-exchange
  done
  x86_64-w64-mingw32-strip -o "$BUILD/bench/stripped.dll" "$LAB_BIN/TolmarAgent.dll"
  stat -c 'size %s' "$BUILD/bench/stripped.dll" | awk '{ print $1, $2 / 1024 }' >>"$SAMPLES"
  row "start-up to the end of Initialize, against its exchanges alone" ms - "$SAMPLES" start
  row "memory of its own, idle agent, against the empty host" MiB - "$SAMPLES" agent-own host-own
  row "memory in all, idle agent, against the empty host" MiB - "$SAMPLES" agent-resident host-resident
  row "threads, idle agent, against the empty host" threads - "$SAMPLES" agent-threads host-threads
  row "TolmarAgent.dll, stripped" KiB - "$SAMPLES" size none
}

end_all_at_exit :
bash scripts/deps.sh
bash scripts/build.sh delivery cloudsim
lab_up
edition=$(cat "$0" "$PKI/cs.crt" | sha256sum)
is_stamped "$OFFER/stamp" "$edition" || step "packages" "$BUILD/log/bench-delivery.log" make_offer "$edition"
start_cloud
[ $# -gt 0 ] || set -- "${PARTS[@]}"
for part in "$@"; do
  begin_part "$part"
  "measure_$part"
done
