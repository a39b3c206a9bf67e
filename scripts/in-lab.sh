#!/usr/bin/env bash
# Runs a command in a lab that is made for it and gone behind it: scripts/in-lab.sh COMMAND ARGUMENT…
# The command finds LAB_C (the device's disk), LAB_BIN, NATIVE_BIN and PKI in its environment. It keeps its working folder.
folder=$PWD
cd "$(dirname "$0")/.." || exit
source scripts/common.sh
LAB=$BUILD/trial
source scripts/lab.sh
source scripts/cloud.sh
for program in "$LAB_BIN/tolmarctl.exe" "$LAB_BIN/scriptrunner.exe" "$LAB_BIN/pwshhost.exe" "$LAB_BIN/labtrust.exe" \
  "$NATIVE_BIN/cloudsim"; do
  [ -f "$program" ] || die "${program#"$ROOT/"} is not there: ./dev build product cloudsim"
done
gone() {
  lab_down
  rm -rf "$LAB"
}
trap gone EXIT
rm -rf "$LAB"
lab_up >&2
lab_choose_powershell >&2
export LAB_C LAB_BIN NATIVE_BIN PKI TOLMARPACK_LAB=$LAB
cd "$folder"
"$@"
