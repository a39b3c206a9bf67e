#!/usr/bin/env bash
# How long a stop takes, phase by phase: ./dev bench stop [PHASE…]. Prints a Markdown table, as docs/operations.md has it.
source scripts/common.sh
source bench/common/lab.sh
source bench/common/measure.sh
WANTED=" $* "
ROUNDS=${ROUNDS:-3}
STOP=$RESULTS/stop
LAB_STOP=$LAB_C/lab/stop
LIMIT=10
TRIAL=0

# phase|title|what the cloud service does wrong|the phase in words|what bounds the time
phases() {
  cat <<'TEXT'
request|quick|[{"on": "downloadRequest", "delayMs": 3000}]|request in flight (answered after 3 s)|the answer, else the request's time-outs; a stop does not reach it
retry-wait|quick|[{"on": "downloadRequest", "status": 503}]|wait before a retry|CleanUp ends it, the cancel handle does not
download|quick|[{"on": "file:package.cab", "delayMs": 60000}]|download|the stop is waited for beside the job, which is let rest or cancelled then
extraction|big|[]|extraction of 200 MB|CleanUp ends it; by the handle, the rest of the package, the check and the pause before the second deletion
installer|slow|[]|installer (60 s)|the check, at most its grace; the pause before the second deletion: the installer holds its folder
check|hung|[]|check script (60 s)|the end of its process tree
deletion|quick|[]|deletion of a download folder in use|the pause before the second deletion, 1 s
TEXT
}

# A script that tells that it runs, beside itself, and takes a minute.
long_script() {
  printf "Set-Content -Path (Join-Path \$PSScriptRoot 'running') -Value 'yes'\nStart-Sleep -Seconds 60\nexit 0\n"
}

# title NAME: its signed package from NAME.files, and a check that finds nothing unless there is one already.
title() {
  local folder=$STOP/$1
  [ -f "$folder/check.ps1" ] || { mkdir -p "$folder" && echo 'exit 1' >"$folder/check.ps1"; }
  [ -f "$STOP/$1.files/install.ps1" ] || echo 'exit 0' >"$STOP/$1.files/install.ps1"
  package "$folder/package.cab" "$STOP/$1.files"
}

make_titles() {
  local name
  rm -rf "$STOP"
  for name in quick big slow hung; do mkdir -p "$STOP/$name.files" "$STOP/$name"; done
  long_script >"$STOP/slow.files/install.ps1"
  long_script >"$STOP/hung/check.ps1"
  # Text, so that the package is small to fetch and long to unpack.
  seq -w 0 99999999 | head -c 200000000 >"$STOP/big.files/payload.txt"
  for name in quick big slow hung; do title "$name"; done
}

# start_cloud TITLE FAULTS
start_cloud() {
  jq -n --arg title "$1" --argjson faults "$2" '{sessionToken: "session-of-the-lab", faults: $faults,
    titles: [{l1FruPn: "T-STOP", name: "Stop", preinstallSw: true, modules: [
      {moduleFruPn: "M-STOP", files: ["\($title)/package.cab", "\($title)/check.ps1"]}]}]}' >"$STOP/catalogue.json"
  cloud_start "$STOP" bench
}

# trial PHASE WAY: two numbers, until the operation and until CleanUp was back ("-": none). A device that is not
# registered starts no pre-install worker.
trial() {
  local name=$((++TRIAL)) registered=false
  [ "$2" = worker ] && registered=true
  cloud_device "stop/$name" bench ".registered = $registered"
  lab_wine 180 "$LAB_BIN/stop_bench.exe" "$1" "$2" "C:\\lab\\stop\\$name" --limit "$LIMIT" | tr -d '\r' ||
    die "phase $1, way $2: see $LAB_STOP/$name/log"
}

# time_of COLUMN FILE: the median of the trials' lines.
time_of() {
  local value
  value=$(cut -d ' ' -f "$1" "$2" | median)
  [ "$value" -lt $((LIMIT * 1000)) ] && echo "$value" || echo "> $((LIMIT * 1000))"
}

measure_phase() {
  local way
  start_cloud "$2" "$3"
  for way in cancel worker cleanup; do rounds "$ROUNDS" trial "$1" "$way" >"$STOP/$1-$way"; done
  cloud_stop
  printf '| %s | %s | %s | %s | %s |\n' "$4" "$(time_of 1 "$STOP/$1-cancel")" \
    "$(time_of 2 "$STOP/$1-worker")" "$(time_of 1 "$STOP/$1-cleanup")" "$5"
}

lab_begin stop cloudsim
rm -rf "$LAB_STOP"
step "packages" "$BUILD/log/bench-stop.log" make_titles
echo "Milliseconds from the stop until control is back, median of $ROUNDS, on Wine:"
echo
echo "| phase | cancel handle | CleanUp, the agent's own worker | CleanUp alone, the host's operation | bound by |"
echo "|---|---|---|---|---|"
while IFS='|' read -r phase title faults words bound; do
  [[ $WANTED != "  " && $WANTED != *" $phase "* ]] || measure_phase "$phase" "$title" "$faults" "$words" "$bound"
done < <(phases)
echo
echo "CleanUp itself is back, while the host's operation runs on, after at most $(cut -d ' ' -f 2 "$STOP"/*-cleanup | sort -n | tail -n 1) ms"
