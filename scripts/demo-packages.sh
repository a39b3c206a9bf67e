#!/usr/bin/env bash
# The demo's titles: fetches the programs, packs and signs them into build/demo/cloud. Does it again only when a
# script, a program or the signing certificate changed.
source scripts/common.sh
source scripts/lab.sh
DEMO=$BUILD/demo
NPM_PACKAGES=$DEMO/npm

# fetch_package NAME@VERSION SHA256: leaves the package's path in FETCHED; it is fetched once.
fetch_package() {
  local name
  FETCHED=$NPM_PACKAGES/${1//[@\/]/_}.tgz
  if ! [ -f "$FETCHED" ]; then
    mkdir -p "$NPM_PACKAGES/new"
    name=$(npm pack --silent --pack-destination "$NPM_PACKAGES/new" "$1")
    mv "$NPM_PACKAGES/new/${name##*/}" "$FETCHED"
  fi
  sha256sum --quiet -c - <<<"$2  $FETCHED" || die "$1 is not the package that was reviewed"
}

# pack_module MODULE PACKAGE SHA256 FILES...: the signed CAB (program and install.ps1) and the check script.
pack_module() {
  local module=$1 stage=$DEMO/stage/$1 file
  fetch_package "$2" "$3"
  mkdir -p "$stage" "$DEMO/cloud/$module"
  for file in "${@:4}"; do
    tar -xzf "$FETCHED" -O "package/$file" >"$stage/$(basename "$file")"
  done
  cp "demo/$module/install.ps1" "$stage/"
  cp "demo/$module/check-$module.ps1" "$DEMO/cloud/$module/"
  cab_make "$DEMO/stage/$module.cab" "$stage"
  cab_sign "$DEMO/stage/$module.cab" "$DEMO/cloud/$module/$module.cab"
}

pack_modules() {
  local words
  rm -rf "$DEMO/cloud" "$DEMO/stage"
  while read -ra words; do
    pack_module "${words[@]}" </dev/null
  done < <(grep -v -e '^#' -e '^ *$' demo/payloads.txt)
}

pki_make
inputs=$(cat demo/payloads.txt demo/*/*.ps1 scripts/demo-packages.sh "$PKI/cs.crt" | sha256sum)
is_stamped "$DEMO/packages.stamp" "$inputs" && exit 0
pack_modules
stamp "$DEMO/packages.stamp" "$inputs"
