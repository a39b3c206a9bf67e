#!/usr/bin/env bash
# The installer as who deploys it has it, on the lab's PC: titles arrive without anybody's doing, an upgrade falls into the
# middle of a download, and an uninstallation leaves what it says.
source scripts/common.sh
source scripts/lab.sh
source scripts/cloud.sh
source tests/e2e/fixtures.sh
DEPLOYED=$BUILD/deployed
DATA=$LAB_C/ProgramData/Tolmar
PROGRAMS="$LAB_C/Program Files/Tolmar"
SOURCE_KEY='HKLM\SYSTEM\CurrentControlSet\Services\EventLog\Application\TolmarHost'

# installers: two, of versions that differ.
make_installers() {
  export SOURCE_DATE_EPOCH=1700000000
  rm -rf "$DEPLOYED"
  mkdir -p "$DEPLOYED"
  cmake --install "$BUILD/windows" --prefix "$DEPLOYED/layout" >/dev/null
  bash scripts/msi.sh "$DEPLOYED/layout" 1.0.0 "$DEPLOYED/old.msi"
  bash scripts/msi.sh "$DEPLOYED/layout" 1.0.1 "$DEPLOYED/new.msi"
}

# Packages come so slowly that there is time for an upgrade meanwhile.
offer_titles() {
  e2e_title "$DEPLOYED/cloud" prompt
  e2e_title "$DEPLOYED/cloud" late
  jq -n '{sessionToken: "session-of-the-lab",
    titles: ["LATE", "PROMPT" | {l1FruPn: "T-\(.)", name: ., modules: [{moduleFruPn: "M-\(.)",
      files: [ascii_downcase | "\(.).cab", "check-\(.).ps1"]}]}]}' >"$DEPLOYED/cloud/catalogue.json"
  cloud_start "$DEPLOYED/cloud" lab --file-rate 30000
}

# await SECONDS WHAT COMMAND…
await() {
  local end=$((SECONDS + $1)) what=$2
  shift 2
  until "$@"; do
    [ $SECONDS -lt $end ] || die "not in time: $what"
    sleep 0.2
  done
}

msi() { lab_wine 120 msiexec "$@" /qn; }
reg() { lab_wine 30 reg "$@" >/dev/null 2>&1; }
clear_policy() { reg delete 'HKLM\Software\Policies\Tolmar' /f || true; }
holds() { [[ "$(lab_wine 30 "$1" "${@:3}" 2>&1 | tr -d '\r')" == *"$2"* ]]; }
runs() { holds sc RUNNING query TolmarHost; }
gets() { cloud_received | jq "[.[] | select(.method == \"GET\" and (.path | endswith(\"/$1\")))] | length"; }
is_asked_for() { [ "$(gets "$1")" -gt 0 ]; }
is_installed() { cmp -s "$DEPLOYED/cloud/$1.files/payload.bin" "$LAB_C/lab/e2e/$1/payload.bin"; }
tell() { echo "  $* ($((SECONDS - BEGIN)) s)"; }

# left_over: what there is of the host.
left_over() {
  ls -d "$PROGRAMS" 2>/dev/null || true
  find "$DATA" -type f 2>/dev/null | grep -v "${1:-^$}" | sed "s|^$LAB_C/||" || true
  ! holds sc TolmarHost query TolmarHost || echo "the service"
  ! holds reg baseUrl query 'HKLM\SOFTWARE\Tolmar\Settings' || echo "settings"
  ! holds reg EventMessageFile query "$SOURCE_KEY" || echo "the event log's source"
}

# leaves NOTHING_BUT: fails when more is left over than that.
leaves() {
  local left
  left=$(left_over "${1:-}") || true
  [ -z "$left" ] || die "left over: $left"
}

install_old() {
  msi /i "$DEPLOYED/old.msi" "BASEURL=$CLOUD_URL" "TOKENURL=$CLOUD_URL/token" REALM=lab DEVICEID=PC-0001
}

set_up() {
  local key
  clear_policy
  # In four hours' time nobody wants to see it.
  for key in pollSeconds=20 pollSpreadSeconds=0; do
    reg add 'HKLM\Software\Policies\Tolmar' /v "${key%=*}" /t REG_DWORD /d "${key#*=}" /f
  done
  printf 'session-of-the-lab' | timeout 30 wine "$LAB_BIN/tolmarctl.exe" config set-token >/dev/null
  install_old
  runs || die "the service does not run"
  tell "installed, the service runs"
  holds "$PROGRAMS/tolmarctl.exe" '"source":"setup"' --json config show || die "the installer's properties are not in force"
}

upgrade() {
  local package
  # The service fetches its check script again before it goes on: what was left has a file more than is missing.
  await 60 "the second title's download" is_asked_for prompt.cab
  # As Windows' own installer knows from UPGRADINGPRODUCTCODE.
  TOLMAR_KEEP_DATA=1 msi /i "$DEPLOYED/new.msi"
  runs || die "the service does not run behind the upgrade"
  tell "upgraded in the middle of a download"
  await 120 "the second title" is_installed prompt
  is_installed late || die "the first title is gone"
  for package in late prompt; do
    [ "$(gets $package.cab)" -eq 1 ] || die "$package.cab was fetched anew: $(gets $package.cab) requests"
  done
  tell "both titles are there, no package was fetched twice"
}

uninstall() {
  msi /x "$DEPLOYED/new.msi"
  leaves /Logs/
  [ -f "$DATA/Logs/ZLT.log" ] || die "the logs are gone"
  tell "uninstalled, the logs are left"
  install_old
  msi /x "$DEPLOYED/old.msi" REMOVELOGS=1
  leaves
  tell "uninstalled without a trace"
}

finish() {
  [ -z "${LAB_RUNNING:-}" ] || clear_policy
  end_in_others_lab
}

trap finish EXIT
BEGIN=$SECONDS
bash scripts/deps.sh faketime msitools uuid-runtime wixl
# A run that was ended in the middle has left installations that nobody can tell from each other.
if [ -d "$PROGRAMS" ]; then
  lab_down
  rm -rf "$LAB"/prefix*
fi
make_installers
lab_up
rm -rf "$DATA" "$LAB_C/lab/e2e/prompt" "$LAB_C/lab/e2e/late"
offer_titles
set_up
upgrade
uninstall
