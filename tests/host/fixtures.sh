# Makes the packages that the reference host's tests unpack. Sourced.

# _sign IN OUT CRT KEY CA
_sign() {
  rm -f "$2"
  osslsigncode sign -h sha256 -certs "$3" -key "$4" -ac "$5" -in "$1" -out "$2" >/dev/null
}

# _damage FILE OFFSET: changes one byte for certain.
_damage() {
  local byte
  byte=$(od -An -tu1 -j "$2" -N 1 "$1")
  printf '%b' "$(printf '\\x%02x' $((byte ^ 255)))" | dd of="$1" bs=1 seek="$2" conv=notrunc status=none
}

# _far: a name as long as a cabinet takes.
_far() { printf '%0120d/%0120d/far.txt' 1 2; }

# _contents FOLDER: what the packages hold. The large file does not compress, so that it takes several blocks.
_contents() {
  mkdir -p "$1/tools/deep" "$1/$(dirname "$(_far)")"
  printf 'Write-Output "installed"\n' >"$1/install.ps1"
  printf 'one\n' >"$1/tools/one.txt"
  printf 'two\n' >"$1/tools/deep/two.txt"
  printf 'far\n' >"$1/$(_far)"
  printf 'out\n' >"$1/ab_evil.txt"
  printf 'upper\n' >"$1/CASE.txt"
  printf 'lower\n' >"$1/cosy.txt"
  head -c 200000 /dev/zero | openssl enc -aes-128-ctr -K 00 -iv 00 2>/dev/null >"$1/large.bin"
}

# host_fixtures OUTDIR PKIDIR: PKIDIR holds what pki_make makes.
host_fixtures() (
  set -e
  mkdir -p "$1/contents"
  out=$(cd "$1" && pwd)
  pki=$(cd "$2" && pwd)
  _contents "$out/contents"
  cd "$out/contents"
  ours=("$pki/cs.crt" "$pki/cs.key" "$pki/ca.crt")
  gcab -c -z ../unsigned.cab install.ps1 large.bin
  gcab -c -z ../nested-unsigned.cab install.ps1 tools/one.txt tools/deep/two.txt "$(_far)"
  gcab -c -z ../evil-unsigned.cab install.ps1 ab_evil.txt
  gcab -c -z ../twice-unsigned.cab CASE.txt cosy.txt
  cd ..
  LC_ALL=C sed -i 's/ab_evil\.txt/..\\evil.txt/' evil-unsigned.cab
  LC_ALL=C sed -i 's/cosy\.txt/case.txt/' twice-unsigned.cab
  cp unsigned.cab corrupt-unsigned.cab
  _damage corrupt-unsigned.cab $(($(stat -c %s unsigned.cab) - 1000))
  head -c 1000 unsigned.cab >cut.cab
  _sign unsigned.cab signed.cab "${ours[@]}"
  _sign nested-unsigned.cab nested.cab "${ours[@]}"
  _sign evil-unsigned.cab traversal.cab "${ours[@]}"
  _sign twice-unsigned.cab twice.cab "${ours[@]}"
  _sign corrupt-unsigned.cab corrupt.cab "${ours[@]}"
  _sign unsigned.cab stranger.cab "$pki/stranger.crt" "$pki/stranger.key" "$pki/stranger-ca.crt"
  _sign unsigned.cab usage.cab "$pki/tls.crt" "$pki/tls.key" "$pki/ca.crt"
  cp signed.cab tampered.cab
  _damage tampered.cab 5000
  cp signed.cab appended.cab
  printf 'appended' >>appended.cab
  rm -- *-unsigned.cab
  openssl x509 -in "$pki/cs.crt" -outform DER | sha256sum | head -c 64 >publisher.txt
)
