# A throw-away Windows PC made of Wine, in build/lab. Sourced behind scripts/common.sh.
source scripts/pki.sh
LAB=${LAB:-$BUILD/lab}
LAB_BIN=${LAB_BIN:-$BUILD/windows/bin}
export WINEPREFIX=$LAB/prefix WINEDEBUG=-all
export WINEDLLOVERRIDES='mshtml=;winemenubuilder.exe=d'
LAB_C=$WINEPREFIX/drive_c

# lab_wine SECONDS PROGRAM ARGUMENTS...: runs a Windows program, with its exit status (8 bits of it).
lab_wine() {
  timeout --foreground -k 5 "$1" wine "${@:2}" </dev/null
}

# lab_down: ends everything that runs in the prefix, and its server.
lab_down() {
  unset LAB_RUNNING
  [ -d "$WINEPREFIX" ] || return 0
  wineserver -k >/dev/null 2>&1 || return 0
  timeout 20 wineserver -w || wineserver -k9 || true
}

# The server stays up between programs: it is what makes their start quick. At its end it lists what killed programs have
# left in it.
lab_boot() {
  mkdir -p "$WINEPREFIX"
  wineserver -p 2>/dev/null
  timeout 180 wine wineboot >/dev/null 2>&1 </dev/null
}

# Without mscoree, whose part in this is to ask a person for Mono. Genuine .NET needs it, so the services that have come up
# without it end again.
lab_create() {
  rm -rf "$WINEPREFIX" "$LAB/trust.stamp"
  WINEDLLOVERRIDES="mscoree=;$WINEDLLOVERRIDES" lab_boot
  lab_down
  lab_boot
}

# lab_powershell scriptrunner|pwshhost: which program stands in the place of Windows PowerShell, in this prefix alone: the
# script runner, or genuine PowerShell's host (behind scripts/powershell.sh).
lab_powershell() {
  local program=$LAB_BIN/$1.exe folder=$LAB_C/windows/system32/WindowsPowerShell/v1.0
  if [ "$1" = pwshhost ]; then
    mkdir -p "$LAB_C/Program Files/PowerShell"
    ln -sfn "$BUILD/deps/powershell/7" "$LAB_C/Program Files/PowerShell/7"
    ln -sfn "$BUILD/deps/powershell/dotnet" "$LAB_C/Program Files/dotnet"
    # PowerShell asks each drive for its label; Wine complains aloud when it may not read the disk, but not over this one.
    ln -sfn /dev/null "$WINEPREFIX/dosdevices/z::"
  fi
  cmp -s "$program" "$folder/powershell.exe" && return 0
  mkdir -p "$folder"
  rm -f "$folder/powershell.exe"
  cp "$program" "$folder/powershell.exe"
}

# lab_choose_powershell: genuine PowerShell where it is to be had; tells which it is.
lab_choose_powershell() {
  local told
  if told=$(bash scripts/powershell.sh); then
    lab_powershell pwshhost
    echo "  scripts are run by PowerShell $told"
  else
    echo "  scripts are run by the lab's script runner, not by PowerShell: $told"
  fi
}

lab_trust() {
  local root
  root=$(pki_thumbprint "$PKI/ca.crt")
  is_stamped "$LAB/trust.stamp" "$root" && return 0
  lab_wine 60 "$LAB_BIN/labtrust.exe" "$PKI/ca.crt" >/dev/null || die "the lab's root was not accepted"
  stamp "$LAB/trust.stamp" "$root"
}

# lab_up: the PC, ready. A server that another run left behind is ended first, with all that hangs
# on it; a second call in the same script (or below it) finds the first one's.
lab_up() {
  local version
  [ "${LAB_RUNNING:-}" != "$WINEPREFIX" ] || return 0
  mkdir -p "$LAB"
  pki_make
  lab_down
  version=$(wine --version)
  if is_stamped "$LAB/prefix.stamp" "$version"; then
    lab_boot || die "the lab does not start: remove build/lab"
  else
    step "the lab's Windows" "$BUILD/log/prefix.log" lab_create
    stamp "$LAB/prefix.stamp" "$version"
  fi
  lab_powershell scriptrunner
  lab_trust
  export LAB_RUNNING=$WINEPREFIX
}

# cab_make OUT.cab FOLDER: packs all files of the folder, under names relative to it.
cab_make() {
  local out
  out=$(realpath -m "$1")
  mkdir -p "$(dirname "$out")"
  rm -f "$out"
  (cd "$2" && find . -type f -printf '%P\0' | LC_ALL=C sort -z | xargs -0 gcab -c -z "$out") >/dev/null
}

# cab_sign IN.cab OUT.cab [CERTIFICATE KEY AUTHORITY]: signs a package, as the lab's publisher.
cab_sign() {
  rm -f "$2"
  osslsigncode sign -h sha256 -certs "${3:-$PKI/cs.crt}" -key "${4:-$PKI/cs.key}" \
    -ac "${5:-$PKI/ca.crt}" -in "$1" -out "$2" >/dev/null
}
