# The parts: each gets its samples and makes its rows and points of them. Sourced by run.sh.

# curve TITLE NUMBERS OPTION…: the agent's time for each number, which goes to the last option.
curve() {
  local number
  for number in $2; do
    anew delivery_bench install --rounds 1 --agent-only "${@:3}" "$number"
    point "$1" s "$number" "$SAMPLES"
  done
}

measure_install() {
  rm -f "$SAMPLES"
  rounds "$ROUNDS" sample_round install
  row "installation of 20 titles × 2 modules × 1 MB" ms "≤ 1.05" "$SAMPLES"
  curve "installation, by titles" "1 5 10 20 40" --modules 1 --titles
  curve "installation, by modules of one title" "1 5 10 20 40" --titles 1 --modules
  curve "installation, by files of one module" "${FILES[*]}" --files
}

reading_round() {
  clocked floor sample delivery_bench reading
  clocked agent lab_wine "$LIMIT" "$LAB_BIN/tolmarctl.exe" --json list
}

measure_reading() {
  rm -f "$SAMPLES"
  rounds "$((4 * ROUNDS))" reading_round
  row "tolmarctl list, against a program of these calls alone" ms "≤ +100 ms" "$SAMPLES"
  row "tolmarctl list, against these calls within it" ms - "$SAMPLES" agent calls
}

exchange_round() {
  sample_round exchange
  native_calls
}

measure_exchange() {
  rm -f "$SAMPLES"
  rounds "$ROUNDS" exchange_round
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
  anew delivery_bench status --rounds 1 --titles 200
  row "check scripts at once, query of 200 titles" processes - "$SAMPLES" scripts none
  row "their memory, at most" MiB - "$SAMPLES" script-memory none
  for number in 1 16 64 128 256; do
    anew delivery_bench status --rounds 1 --titles "$number"
    point "installed-state query, by titles" s "$number" "$SAMPLES"
    point "threads of an installed-state query, by titles" threads "$number" "$SAMPLES" threads
  done
}

measure_download() {
  local before
  before=$(services_cpu)
  anew delivery_bench download --rounds "$ROUNDS"
  # Each round fetches half a gigabyte twice.
  awk -v a="$before" -v b="$(services_cpu)" -v gb="$ROUNDS" 'BEGIN { print "services", (b - a) / gb }' >>"$SAMPLES"
  awk '$1 == "cpu-agent" { print "host", 2 * $2 }' "$SAMPLES" >"$SAMPLES.cpu"
  rounds "$ROUNDS" fetch_by_curl
  row "500 MB through DownloadFiles, against BITS alone" ms "≤ 1.03" "$SAMPLES"
  row "the same, against curl outside Wine" ms - "$SAMPLES" agent curl
  row "CPU per GB downloaded: host process" s - "$SAMPLES.cpu" host
  row "CPU per GB downloaded: BITS, Wine's server" s - "$SAMPLES" services none
}

extraction_round() {
  sample delivery_bench extract "C:\\lab\\bench\\$1.cab"
  clocked floor unpack "$1"
  clocked checked verify_and_unpack "$1"
}

# extraction NAME KIND
extraction() {
  rm -f "$SAMPLES"
  rounds "$ROUNDS" extraction_round "$1"
  row "check and extraction of 200 MB, $2, against cabextract" ms "≤ 1.5" "$SAMPLES"
  row "the same, against cabextract and osslsigncode verify" ms - "$SAMPLES" agent checked
  row "the first one of a process, against cabextract" ms - "$SAMPLES" first
  awk '$1 == "cpu" { print "cpu", 5 * $2 }' "$SAMPLES" >"$SAMPLES.cpu"
  row "CPU per GB unpacked, $2" s - "$SAMPLES.cpu" cpu
  row "memory for it, at most, $2" MiB - "$SAMPLES" peak-rise none
}

measure_extract() {
  cp "$OFFER/text.cab" "$OFFER/noise.cab" "$PLACE"
  extraction text "text"
  extraction noise "incompressible"
}

footprint_round() {
  sample idle_host
  sample delivery_bench first-exchange
}

measure_footprint() {
  rm -f "$SAMPLES"
  rounds "$ROUNDS" footprint_round
  x86_64-w64-mingw32-strip -o "$BUILD/bench/stripped.dll" "$LAB_BIN/TolmarAgent.dll"
  stat -c 'size %s' "$BUILD/bench/stripped.dll" | awk '{ print $1, $2 / 1024 }' >>"$SAMPLES"
  row "start-up to the end of Initialize, against its exchanges alone" ms - "$SAMPLES" start
  row "memory of its own, idle agent, against the empty host" MiB - "$SAMPLES" agent-own host-own
  row "memory in all, idle agent, against the empty host" MiB - "$SAMPLES" agent-resident host-resident
  row "threads, idle agent, against the empty host" threads - "$SAMPLES" agent-threads host-threads
  row "TolmarAgent.dll, stripped" KiB - "$SAMPLES" size none
}
