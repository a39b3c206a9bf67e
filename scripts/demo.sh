#!/usr/bin/env bash
# Delivers three genuine Windows programs through the real agent DLL, over HTTPS, on this one machine: ./dev demo [--watch].
# With --watch at a pace that can be followed in the simulator's console, which stays open at the end.
source scripts/common.sh
WATCH=${1:-}
[ -z "$WATCH" ] || [ "$WATCH" = --watch ] || die "usage: ./dev demo [--watch]"
DEMO=$BUILD/demo
source scripts/lab.sh
source scripts/cloud.sh
source scripts/demo-show.sh

TOLMAR_DATA=$LAB_C/ProgramData/Tolmar
STEP=start

prepare() {
  bash scripts/deps.sh
  bash scripts/build.sh product cloudsim tolmarpack
  lab_up
  step "signed packages" "$BUILD/log/packages.log" bash scripts/demo-packages.sh
  lab_choose_powershell
}

# The PC as before the first delivery: no program, no registry value, no log.
reset_pc() {
  local title folder rest
  while IFS='|' read -r title folder rest; do
    rm -rf "${LAB_C:?}/Program Files/$folder"
  done < <(programs)
  rm -rf "$TOLMAR_DATA"
  rm -f "$LAB_C/windows/temp/scriptrunner.log"
  lab_wine 30 reg delete 'HKLM\Software\Corvan' /f >/dev/null 2>&1 || true
}

start_cloud() {
  jq --arg token "$1" '. + {sessionToken: $token, devices: ["PC-0001"]}' "$DEMO/cloud/catalogue.json" >"$DEMO/catalogue.json"
  mv "$DEMO/catalogue.json" "$DEMO/cloud/"
  cloud_start "$DEMO/cloud" demo ${WATCH:+--console-port 0 --file-rate 400000}
}

# Time to look, for who watches: at most so many seconds, or until Enter.
pause() {
  [ -z "$WATCH" ] || read -r -t "$1" || true
}

# The session token and its like are for this run alone.
configure_host() {
  mkdir -p "$TOLMAR_DATA"
  jq -n --arg url "$CLOUD_URL" --arg token "$1" --arg publisher "$(pki_thumbprint "$PKI/cs.crt")" '{
    baseUrl: $url, realm: "demo", deviceId: "PC-0001", sessionToken: $token, tokenUrl: "\($url)/token",
    registered: true, downloadFolder: "C:\\ProgramData\\Tolmar\\Download",
    logFolder: "C:\\ProgramData\\Tolmar\\Log", requireSignedPackages: true,
    trustedPublishers: [$publisher]}' >"$TOLMAR_DATA/host.json"
  export TOLMAR_HOST_CONFIG='C:\ProgramData\Tolmar\host.json'
}

# tolmarctl SECONDS ARGUMENTS...: its output, in Unix lines.
tolmarctl() {
  lab_wine "$1" "$LAB_BIN/tolmarctl.exe" "${@:2}" | tr -d '\r'
}

# What each title brings: title, folder, program, argument that makes it tell what it is.
programs() {
  echo 'T-ARCHIVER|Archiver|7za.exe|i'
  echo 'T-RESOURCES|Resource Editor|rcedit-x64.exe|-h'
  echo 'T-BUNDLER|Script Bundler|esbuild.exe|--version'
}

run_programs() {
  local title folder program argument output
  while IFS='|' read -r title folder program argument; do
    output=$(lab_wine 60 "C:\\Program Files\\$folder\\$program" "$argument" | tr -d '\r')
    printf '  %-24s%s\n' "$program $argument" "$(grep -m 1 . <<<"$output" | cut -c 1-70)"
    RAN=$((RAN + 1))
  done < <(programs)
}

begin() {
  pause 3
  STEP=$1
  echo "== $1"
}

end_all_at_exit show_failure

begin "Preparing: dependencies, build, the lab's Windows, keys, packages"
prepare
reset_pc
mkdir -p "$DEMO/cloud"
SESSION_TOKEN=$(openssl rand -hex 24)

begin "The cloud service starts"
start_cloud "$SESSION_TOKEN"
configure_host "$SESSION_TOKEN"
echo "  $CLOUD_URL, $(jq '.titles | length' "$DEMO/cloud/catalogue.json") titles in its catalogue"
if [ -n "$WATCH" ]; then
  echo "  Watch: $(sed -n 's/^cloudsim: console at //p' "$DEMO/cloud/cloudsim.log") (Enter, or in 20 s: it goes on)"
  pause 20
fi

begin "tolmarctl entitled"
tolmarctl 120 --json entitled | show_entitled
echo "  (Starting the agent asked the service already, and began the pre-install in the background:"
echo "  the next command waits for it, as the PC's set-up does.)"

begin "tolmarctl configure (the device is set up: pre-install titles only)"
tolmarctl 150 --json configure --timeout 120 | show_titles preinstall

begin "tolmarctl list"
tolmarctl 120 --json list | show_titles

begin "tolmarctl status"
tolmarctl 180 --json status | show_titles

begin "tolmarctl install (all titles, whether installed or not)"
FROM=$(cloud_received | jq length)
tolmarctl 400 install | show_progress
TO=$(cloud_received | jq length)

begin "tolmarctl status"
tolmarctl 180 --json status | tee "$DEMO/status.json" | show_titles

begin "The installed programs run"
RAN=0
run_programs

begin "Registry: HKLM\\Software\\Corvan\\ZLT\\Entitlement"
lab_wine 30 reg query 'HKLM\Software\Corvan\ZLT\Entitlement' /v Entitled | show_value

begin "What the cloud service received"
cloud_received | tee "$DEMO/received.json" | show_received "$FROM" "$TO"

begin "The end of the agent's log"
show_log 8
echo "  (Every start looks after the pre-install titles too; a host that ends stops that look, whatever stage it is at.)"

STEP="counting what is installed and ran"
TITLES=$(jq '.titles | length' "$DEMO/cloud/catalogue.json")
INSTALLED=$(jq '[.result.swList[] | select(.status == "installed")] | length' "$DEMO/status.json")
echo
echo "demo: $INSTALLED of $TITLES titles installed"
if [ -n "$WATCH" ]; then
  echo "The console stays open until Ctrl-C."
  wait "$CLOUD" || true
fi
[ "$INSTALLED" -eq "$TITLES" ] && [ "$RAN" -eq "$TITLES" ]
