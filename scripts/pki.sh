# The lab's own keys and certificates, in build/lab/pki. Sourced behind scripts/common.sh.
PKI=$BUILD/lab/pki
PKI_DAYS=365

# pki_authority NAME SUBJECT: a root that signs itself.
pki_authority() {
  openssl req -x509 -newkey rsa:2048 -nodes -sha256 -days "$PKI_DAYS" -subj "/CN=$2" \
    -keyout "$1.key" -out "$1.crt" -addext basicConstraints=critical,CA:TRUE,pathlen:0 \
    -addext keyUsage=critical,keyCertSign,cRLSign
}

# pki_extensions USAGE [ALTERNATIVE_NAME]: those of a certificate for one purpose.
pki_extensions() {
  echo basicConstraints=critical,CA:FALSE
  echo keyUsage=critical,digitalSignature
  echo "extendedKeyUsage=$1"
  [ -z "${2:-}" ] || echo "subjectAltName=$2"
}

# pki_leaf NAME SUBJECT AUTHORITY USAGE [ALTERNATIVE_NAME]
pki_leaf() {
  openssl req -new -newkey rsa:2048 -nodes -sha256 -subj "/CN=$2" -keyout "$1.key" -out "$1.csr" &&
    openssl x509 -req -sha256 -days "$PKI_DAYS" -in "$1.csr" -CA "$3.crt" -CAkey "$3.key" \
      -CAcreateserial -extfile <(pki_extensions "${@:4}") -out "$1.crt" &&
    rm "$1.csr"
}

pki_generate() (
  umask 077
  rm -rf "$PKI" && mkdir -p "$PKI" && cd "$PKI" &&
    pki_authority ca "Lab root" &&
    pki_leaf tls localhost ca serverAuth DNS:localhost &&
    pki_leaf cs "Lab publisher" ca codeSigning &&
    pki_authority stranger-ca "Root that nobody trusts" &&
    pki_leaf stranger "Stranger" stranger-ca codeSigning
)

# pki_is_fresh: true when everything is there and lasts another week.
pki_is_fresh() {
  local name
  for name in ca tls cs stranger-ca stranger; do
    [ -f "$PKI/$name.key" ] || return 1
    openssl x509 -in "$PKI/$name.crt" -noout -checkend $((7 * 24 * 3600)) >/dev/null 2>&1 || return 1
  done
}

# pki_make: makes the certificates unless they are there.
#   ca        the root that the lab trusts           tls       for cloudsim, localhost
#   cs        signs packages                         stranger  signs packages, but nobody trusts
#   stranger-ca, which signed it
pki_make() {
  pki_is_fresh || step "keys and certificates" "$BUILD/log/pki.log" pki_generate
}

# pki_thumbprint CERTIFICATE: its SHA-256 thumbprint, 64 lower-case hex digits.
pki_thumbprint() {
  openssl x509 -in "$1" -outform DER | sha256sum | cut -c 1-64
}
