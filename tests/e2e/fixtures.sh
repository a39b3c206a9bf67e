# The end-to-end tests' packages: sourced after scripts/common.sh and scripts/lab.sh.

# A title that installs a payload to C:\lab\e2e\NAME; WAIT: seconds that its installer takes before, LINGER: behind, CODE:
# its exit code.
e2e_title() {
  local out=$1 name=$2 wait=${3:-0} linger=${4:-0} code=${5:-0} target="C:\\lab\\e2e\\$2"
  mkdir -p "$out/$name.files"
  head -c 300000 /dev/urandom >"$out/$name.files/payload.bin"
  cat >"$out/$name.files/install.ps1" <<TEXT
param([string]\$command)
if (\$command -ne 'install') { exit 2 }
Start-Sleep -Seconds $wait
New-Item -ItemType Directory -Force -Path '$target' | Out-Null
Copy-Item -Path (Join-Path \$PSScriptRoot 'payload.bin') -Destination '$target' -Force
Write-Output '$name is in its place'
Start-Sleep -Seconds $linger
exit $code
TEXT
  printf "if (Test-Path '%s\\\\payload.bin') { exit 0 }\nexit 1\n" "$target" >"$out/check-$name.ps1"
  cab_make "$out/$name-unsigned.cab" "$out/$name.files"
  cab_sign "$out/$name-unsigned.cab" "$out/$name.cab"
}

# A name whose every sign means something to one shell or another. The tests have it too.
E2E_ODD="a & b; \$(exit 1) %TEMP% it's ü"

# flip IN OUT: one byte in the middle of the data is another one.
e2e_flip() {
  local middle=$(($(stat -c %s "$1") / 2)) byte
  cp "$1" "$2"
  byte=$(od -An -tu1 -j "$middle" -N 1 "$2")
  printf '%b' "\\x$(printf %02x $((byte ^ 1)))" | dd of="$2" bs=1 seek="$middle" conv=notrunc status=none
}

e2e_fixtures() {
  local out=$1 pki=$BUILD/lab/pki name
  is_stamped "$out/stamp" "$(sha256sum tests/e2e/fixtures.sh "$pki/cs.crt")" && return 0
  rm -rf "$out"
  mkdir -p "$out"
  for name in alpha beta gamma; do e2e_title "$out" "$name"; done
  e2e_title "$out" slow 120
  e2e_title "$out" lingering 0 120
  e2e_title "$out" restart 0 0 3010
  e2e_title "$out" missing && printf "Write-Output 'no such program'\nexit 3\n" >"$out/check-missing.ps1"
  e2e_title "$out" unsigned && mv "$out/unsigned-unsigned.cab" "$out/unsigned.cab"
  e2e_title "$out" tampered && e2e_flip "$out/tampered.cab" "$out/flipped" && mv "$out/flipped" "$out/tampered.cab"
  : >"$out/empty.cab" && cp "$out/check-alpha.ps1" "$out/check-empty.ps1"
  truncate -s 500M "$out/large.cab" && cp "$out/check-alpha.ps1" "$out/check-large.ps1"
  cp "$out/alpha.cab" "$out/$E2E_ODD.cab" && cp "$out/check-alpha.ps1" "$out/check-$E2E_ODD.ps1"
  e2e_title "$out" stranger
  cab_sign "$out/stranger-unsigned.cab" "$out/stranger.cab" "$pki/stranger.crt" "$pki/stranger.key" "$pki/stranger-ca.crt"
  stamp "$out/stamp" "$(sha256sum tests/e2e/fixtures.sh "$pki/cs.crt")"
}
