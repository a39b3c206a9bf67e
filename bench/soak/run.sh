#!/usr/bin/env bash
# Crashes and long runs on the real parts: ./dev soak [--kills N] [--installs N] [--seed N]. Kills hosts in the middle of
# installations and looks whether the next one puts all right, then installs again and again in one process. Prints the
# tables of docs/quality.md. 0 leaves a part out; a case is tried again with --seed of its line, --kills 1 --installs 0.
source scripts/common.sh
source bench/common/lab.sh
SOAK=$BUILD/soak
LAB_SOAK=$LAB_C/lab/soak
kills=100 installs=500 seed=1
while [ $# -gt 0 ]; do
  case "$1" in
    --kills) kills=${2:?} && shift ;;
    --installs) installs=${2:?} && shift ;;
    --seed) seed=${2:?} && shift ;;
    *) die "usage: ./dev soak [--kills N] [--installs N] [--seed N]" ;;
  esac
  shift
done

# install_script PART MODULE PAUSE: notes that it begins, and leaves half an installation for a while.
install_script() {
  local folder="C:\\lab\\soak\\$1" target="C:\\lab\\soak\\$1\\target\\$2"
  cat <<TEXT
param([string]\$command)
if (\$command -ne 'install') { exit 2 }
Add-Content -Path '$folder\\notes\\$2.begun' -Value 'x'
New-Item -ItemType Directory -Force -Path '$target' | Out-Null
Copy-Item -Path (Join-Path \$PSScriptRoot 'payload.bin') -Destination '$target' -Force
Start-Sleep -Milliseconds $3
Set-Content -Path '$target\\installed' -Value 'yes'
exit 0
TEXT
}

# check_script PART MODULE PAUSE: notes that it ends.
check_script() {
  local folder="C:\\lab\\soak\\$1"
  cat <<TEXT
Start-Sleep -Milliseconds $3
Add-Content -Path '$folder\\notes\\$2.checked' -Value 'x'
if ((Test-Path '$folder\\target\\$2\\installed') -and (Test-Path '$folder\\target\\$2\\payload.bin')) { exit 0 }
exit 1
TEXT
}

# module PART TITLE MODULE PAUSE BYTES: its package and check; the device gets to know what is to be there in the end.
# Half of the payload is text, so that unpacking takes a while.
module() {
  local files=$SOAK/$1/$3.files expected=$LAB_SOAK/$1/expected/$2
  mkdir -p "$files" "$expected"
  { head -c "$(($5 / 2))" /dev/urandom && seq 99999999 | head -c "$(($5 / 2))" || true; } >"$files/payload.bin"
  cp "$files/payload.bin" "$expected/$3.bin"
  install_script "$1" "$3" "$4" >"$files/install.ps1"
  check_script "$1" "$3" "$4" >"$SOAK/$1/check-$3.ps1"
  package "$SOAK/$1/$3.cab" "$files"
}

# catalogue PART FAULTS: of the modules that are there.
catalogue() {
  (cd "$LAB_SOAK/$1/expected" && ls -d -- */*.bin) | jq -R 'capture("(?<title>.*)/(?<module>.*).bin")' |
    jq -s --argjson faults "$2" '{sessionToken: "session-of-the-lab", faults: $faults,
      titles: [group_by(.title)[] | {l1FruPn: .[0].title, name: .[0].title,
        modules: [.[] | {moduleFruPn: .module, files: ["\(.module).cab", "check-\(.module).ps1"]}]}]}' \
      >"$SOAK/$1/catalogue.json"
}

make_titles() {
  rm -rf "$SOAK" "$LAB_SOAK"
  module kill T-ONE M-A 300 4000000
  module kill T-ONE M-B 300 4000000
  module kill T-TWO M-C 300 4000000
  catalogue kill '[{"on": "file:M-B.cab", "delayMs": 500}]'
  module steady T-SMALL M-SMALL 0 100000
  catalogue steady '[]'
}

# run PART SECONDS OPTION…: one part, against its own catalogue.
run() {
  local status=0
  cloud_start "$SOAK/$1" soak
  cloud_configuration "soak/$1" soak
  lab_wine "$2" "$LAB_BIN/soak.exe" "$1" "C:\\lab\\soak\\$1" "${@:3}" | sed -u 's|\r$||' || status=$?
  cloud_stop
  return "$status"
}

lab_begin soak cloudsim
step "packages" "$BUILD/log/soak.log" make_titles
wrong=0
[ "$kills" -eq 0 ] || run kill $((300 + 60 * kills)) --kills "$kills" --seed "$seed" || wrong=1
[ "$installs" -eq 0 ] || run steady $((300 + 10 * installs)) --installs "$installs" || wrong=1
[ "$wrong" -eq 0 ] || echo "WRONG: see above; logs of the last case in $LAB_SOAK"
exit "$wrong"
