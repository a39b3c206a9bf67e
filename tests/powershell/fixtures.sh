# The demo's modules as packages unpack them, for genuine PowerShell. Sourced behind scripts/common.sh and scripts/lab.sh.

# powershell_fixtures OUT: a folder for each; a program of Wine's that does nothing stands for each file that is installed.
powershell_fixtures() {
  local module file files
  rm -rf "$1"
  while read -r module _ _ files; do
    mkdir -p "$1/$module"
    cp "demo/$module"/*.ps1 "$1/$module/"
    for file in $files; do cp "$LAB_C/windows/system32/net.exe" "$1/$module/${file##*/}"; done
  done < <(grep -v -e '^#' -e '^ *$' demo/payloads.txt)
}
