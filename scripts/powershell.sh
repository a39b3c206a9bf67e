#!/usr/bin/env bash
# Fetches genuine PowerShell for the lab, and the .NET that it runs on: three NuGet packages, into build/deps/powershell.
# Prints its version; where it is not to be had it prints why instead, and ends with 1.
source scripts/common.sh
POWERSHELL=$BUILD/deps/powershell
LOG=$BUILD/deps/log/powershell.log
PROJECT=scripts/powershell.proj
# The packages that were reviewed, by SHA-256; PowerShell 7.6 runs on .NET 10.
HASHES='209e79ebaa158f173088aa4f8c912a877d42fc076b2f85e94f2d5bb8e53db061  powershell
0f63dee7ca4383cb16848966f81e439399e2058e1671ebe27e5eaf4b200e8691  microsoft.netcore.app.runtime.win-x64
68bce56d2402969d82ac77fbd2b2a54f55fda86ea060366e6ddb832353dab80a  microsoft.windowsdesktop.app.runtime.win-x64'

missing() {
  echo "$*"
  exit 1
}

# In a copy of the project, beside which NuGet writes files of its own.
fetch() {
  export DOTNET_CLI_TELEMETRY_OPTOUT=1 DOTNET_NOLOGO=1
  rm -rf "$POWERSHELL"
  mkdir -p "$POWERSHELL"
  cp "$PROJECT" "$POWERSHELL/"
  timeout 300 dotnet restore "$POWERSHELL/powershell.proj" --packages "$POWERSHELL/packages"
}

# package NAME: where it was unpacked.
package() { echo "$POWERSHELL/packages/$1"/*; }

are_reviewed() {
  local hash name
  while read -r hash name; do
    sha256sum --quiet -c - <<<"$hash  $(echo "$(package "$name")"/*.nupkg)" || return 1
  done <<<"$HASHES"
}

# framework NAME: puts a part of .NET where an installation of it has it.
framework() {
  local source version
  source=$(package "${1,,}.runtime.win-x64")
  version=${source##*/}
  mkdir -p "$POWERSHELL/dotnet/shared/$1/$version" "$POWERSHELL/dotnet/host/fxr/$version"
  mv "$source"/runtimes/win-x64/lib/*/* "$source"/runtimes/win-x64/native/* "$POWERSHELL/dotnet/shared/$1/$version/"
  mv "$POWERSHELL/dotnet/shared/$1/$version"/hostfxr.dll "$POWERSHELL/dotnet/host/fxr/$version/" 2>/dev/null || true
}

# As on a PC: Program Files\PowerShell\7 and Program Files\dotnet.
lay_out() {
  framework Microsoft.NETCore.App
  framework Microsoft.WindowsDesktop.App
  mv "$(package powershell)"/tools/*/any/win "$POWERSHELL/7"
  chmod -R u+rwX,go+rX "$POWERSHELL"
  rm -rf "$POWERSHELL/packages" "$POWERSHELL/obj"
}

inputs=$(cat "$PROJECT" scripts/powershell.sh | sha256sum)
version=$(sed -n 's/.*Include="PowerShell" Version="\[\(.*\)\]".*/\1/p' "$PROJECT")
if ! is_stamped "$POWERSHELL/stamp" "$inputs"; then
  command -v dotnet >/dev/null || missing "no .NET SDK on this machine"
  mkdir -p "${LOG%/*}"
  fetch >"$LOG" 2>&1 || missing "its NuGet packages are not to be had (${LOG#"$ROOT/"})"
  are_reviewed >>"$LOG" 2>&1 || missing "its NuGet packages are not those that were reviewed (${LOG#"$ROOT/"})"
  lay_out >>"$LOG" 2>&1 || missing "its NuGet packages hold something else than expected (${LOG#"$ROOT/"})"
  stamp "$POWERSHELL/stamp" "$inputs"
fi
echo "$version"
