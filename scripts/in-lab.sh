#!/usr/bin/env bash
# Runs a command in a lab that is made for it and gone behind it: scripts/in-lab.sh COMMAND ARGUMENT…
# The command finds LAB_C (the device's disk), LAB_BIN, NATIVE_BIN and PKI in its environment. It keeps its working folder.
folder=$PWD
cd "$(dirname "$0")/.." || exit
source scripts/common.sh
# That the lab is not to be had is no word on the package: tolmarpack ends with 1 when that is not good.
die() { echo "error: $*" >&2; exit 2; }
LAB=$BUILD/trial
source scripts/lab.sh
source scripts/cloud.sh
for program in "$LAB_BIN/tolmarctl.exe" "$LAB_BIN/scriptrunner.exe" "$LAB_BIN/pwshhost.exe" "$LAB_BIN/labtrust.exe" \
  "$NATIVE_BIN/cloudsim"; do
  [ -f "$program" ] || die "${program#"$ROOT/"} is not there: ./dev build product cloudsim"
done
# Whoever holds this file has the lab; what starts below does not, since the wineserver may outlive it.
exec 9>"$BUILD/trial.lock"
flock -n 9 || die "another trial is under way"
gone() {
  lab_down
  rm -rf "$LAB"
}
trap gone EXIT
rm -rf "$LAB"
lab_up >&2 9>&-
lab_choose_powershell >&2 9>&-
export LAB_C LAB_BIN NATIVE_BIN PKI TOLMARPACK_LAB=$LAB
cd "$folder"
"$@" 9>&-
