#!/usr/bin/env bash
# The demo's titles: fetches the programs, and has tolmarpack publish them in build/demo/cloud. Does it again only when a
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

# stage_module MODULE PACKAGE SHA256 FILES...: the package's folder, with the programs in its payload.
stage_module() {
  local stage=$DEMO/stage/$1 file
  fetch_package "$2" "$3"
  mkdir -p "$stage/payload"
  cp "demo/$1"/* "$stage/"
  for file in "${@:4}"; do
    tar -xzf "$FETCHED" -O "package/$file" >"$stage/payload/$(basename "$file")"
  done
}

# Titles and modules come in the order of payloads.txt.
publish_modules() {
  local words stages=()
  rm -rf "$DEMO/cloud" "$DEMO/stage"
  while read -ra words; do
    stage_module "${words[@]}" </dev/null
    stages+=("$DEMO/stage/${words[0]}")
  done < <(grep -v -e '^#' -e '^ *$' demo/payloads.txt)
  "$BUILD/native/bin/tolmarpack" lint "${stages[@]}"
  "$BUILD/native/bin/tolmarpack" publish "${stages[@]}" --catalogue "$DEMO/cloud/catalogue.json" \
    --cert "$PKI/cs.crt" --key "$PKI/cs.key" --chain "$PKI/ca.crt"
}

pki_make
inputs=$(cat demo/payloads.txt demo/*/* scripts/demo-packages.sh "$PKI/cs.crt" | sha256sum)
is_stamped "$DEMO/packages.stamp" "$inputs" && exit 0
publish_modules
stamp "$DEMO/packages.stamp" "$inputs"
