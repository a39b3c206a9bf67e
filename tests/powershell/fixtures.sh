# The demo's modules as packages unpack them, and what tolmarpack new makes, for genuine PowerShell. Sourced behind scripts/common.sh and scripts/lab.sh.

# powershell_fixtures OUT: a folder for each; a program of Wine's that does nothing stands for each file that its script
# installs.
powershell_fixtures() {
  local script out file
  rm -rf "$1"
  for script in demo/*/install.ps1; do
    out=$1/$(basename "${script%/*}")
    while read -r file; do
      mkdir -p "$out/$(dirname "$file")"
      cp "$LAB_C/windows/system32/net.exe" "$out/$file"
    done < <(grep -o '\$PSScriptRoot\\[^"]*' "$script" | sed 's,\\,/,g; s,^[^/]*/,,')
    cp "${script%/*}"/*.ps1 "$out/"
  done
  "$BUILD/native/bin/tolmarpack" new "$1/new" >/dev/null
}
