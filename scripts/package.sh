#!/usr/bin/env bash
# What is shipped, into build/package: a zip for who embeds the agent, an MSI for who deploys the host, what they are made
# of (CycloneDX) and sums. A commit gives the same bytes in every folder, whenever it is built: times are the commit's.
source scripts/common.sh
PACKAGE=$BUILD/package
VERSION=$(cat VERSION)
NAME=TolmarAgent-$VERSION-windows-x64-mingw
MSI=TolmarHost-$VERSION-x64.msi
BOM=TolmarAgent-$VERSION.cdx.json
PROGRAMS=(TolmarAgent.dll TolmarAgentC.dll TolmarReferenceHost.dll TolmarHost.exe tolmarctl.exe tolmarpack.exe
  cloudsim.exe)
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}

# fix FOLDER: nothing in it tells when or by whom it was made.
fix() {
  chmod -R u=rwX,go=rX "$1"
  find "$1" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
}

layout() {
  rm -rf "$PACKAGE"
  cmake --install "$BUILD/windows" --prefix "$PACKAGE/$NAME"
  bash scripts/policy.sh "$PACKAGE/$NAME/share/tolmar/policy"
  fix "$PACKAGE/$NAME"
}

make_zip() {
  (cd "$PACKAGE" && find "$NAME" -type f | LC_ALL=C sort | TZ=UTC zip -X -q -@ "$NAME.zip")
}

# debian PACKAGE: its version here.
debian() { dpkg-query -W -f '${Version}' "$1"; }

# component NAME LICENCE PACKAGE WHAT: a library, as Debian has packaged what it was built from.
component() {
  jq -n --arg name "$1" --arg licence "$2" --arg package "$3" --arg version "$(debian "$3")" --arg what "$4" '{
    type: "library", "bom-ref": $name, name: $name, version: $version, description: $what,
    licenses: [{expression: $licence}], purl: "pkg:deb/debian/\($package)@\($version | @uri)"}'
}

tool() { jq -n --arg name "$1" --arg version "$(debian "$2")" '{type: "application", name: $name, version: $version}'; }

libraries() {
  component jsoncpp MIT libjsoncpp-dev 'linked into TolmarAgent.dll, TolmarReferenceHost.dll and the programs'
  component CLI11 BSD-3-Clause libcli11-dev 'headers, in the programs'
  component utfcpp BSL-1.0 libutfcpp-dev 'headers, in TolmarReferenceHost.dll'
  component cpp-httplib MIT libcpp-httplib-dev 'header, in cloudsim.exe'
  component zlib Zlib libz-mingw-w64-dev 'linked into cloudsim.exe'
  component libstdc++ 'GPL-3.0-or-later WITH GCC-exception-3.1' g++-mingw-w64-x86-64-posix 'libstdc++-6.dll'
  component libgcc 'GPL-3.0-or-later WITH GCC-exception-3.1' gcc-mingw-w64-x86-64-posix-runtime 'libgcc_s_seh-1.dll'
  component winpthreads 'MIT AND BSD-3-Clause-Clear' mingw-w64-x86-64-dev 'libwinpthread-1.dll, and the start-up code of all'
}

# programs: each file of ours and each DLL beside them, with its sum.
programs() {
  local file
  for file in "$PACKAGE/$NAME"/bin/*; do
    jq -n --arg name "$(basename "$file")" --arg version "$VERSION" --arg sum "$(sha256sum <"$file" | cut -d ' ' -f 1)" \
      '{type: "file", "bom-ref": $name, name: $name, hashes: [{alg: "SHA-256", content: $sum}]}
        + if $name | test("^(Tolmar|tolmar|cloudsim)") then {version: $version} else {} end'
  done
}

make_bom() {
  jq -n --slurpfile libraries <(libraries) --slurpfile programs <(programs) \
    --slurpfile tools <(tool g++-mingw-w64 g++-mingw-w64-x86-64-posix; tool binutils-mingw-w64 binutils-mingw-w64-x86-64
      tool cmake cmake; tool wixl wixl; tool zip zip) \
    --arg time "$(date -u -d "@$SOURCE_DATE_EPOCH" +%FT%TZ)" --arg version "$VERSION" --arg commit "$COMMIT" \
    --arg serial "$(uuidgen --sha1 --namespace @url --name "$NAME $COMMIT")" '{
      bomFormat: "CycloneDX", specVersion: "1.5", serialNumber: "urn:uuid:\($serial)", version: 1,
      metadata: {timestamp: $time, tools: {components: $tools}, component: {type: "application", "bom-ref": "TolmarAgent",
        name: "TolmarAgent", version: $version, properties: [{name: "commit", value: $commit}]}},
      components: ($programs + $libraries),
      dependencies: [{ref: "TolmarAgent", dependsOn: ($programs + $libraries | map(."bom-ref"))}]}' >"$PACKAGE/$BOM"
}

sums() { (cd "$PACKAGE" && sha256sum -- *.zip *.msi *.json >SHA256SUMS); }

bash scripts/deps.sh faketime msitools uuid-runtime wixl zip
bash scripts/build.sh product
COMMIT=$(git rev-parse HEAD)
step "files" "$BUILD/log/package.log" layout
for program in "${PROGRAMS[@]}"; do [ -f "$PACKAGE/$NAME/bin/$program" ] || die "$program is not in the package"; done
step "zip" "$BUILD/log/zip.log" make_zip
step "MSI" "$BUILD/log/msi.log" bash scripts/msi.sh "$PACKAGE/$NAME" "$VERSION" "$PACKAGE/$MSI"
step "bill of materials" "$BUILD/log/bom.log" make_bom
rm -r "${PACKAGE:?}/$NAME"
sums
ls -s --block-size=KiB "$PACKAGE"
