#!/usr/bin/env bash
# The installer of the host: scripts/msi.sh LAYOUT VERSION OUT.msi, from what cmake --install has laid out. wixl makes it;
# what that has no words for is added behind it. The clock stands still at SOURCE_DATE_EPOCH meanwhile.
source scripts/common.sh
LAYOUT=$(realpath "$1") VERSION=$2 OUT=$(realpath -m "$3")
STAGE=$OUT.stage

# uuid PURPOSE: Windows tells packages from each other by such codes, so other files have others.
uuid() { uuidgen --sha1 --namespace @url --name "Tolmar Host $VERSION $CONTENTS $1" | tr '[:lower:]' '[:upper:]'; }

at_its_time() { faketime -f "$(date -u -d "@$SOURCE_DATE_EPOCH" '+%F %T')" "$@"; }

rm -rf "$STAGE" "$OUT"
mkdir -p "$STAGE"
cp -r "$LAYOUT/bin" "$STAGE"
(cd "$LAYOUT/share/tolmar" && tail -n +1 licences/*.txt) >"$STAGE/licences.txt"
find "$STAGE" -exec touch -d "@$SOURCE_DATE_EPOCH" {} +
CONTENTS=$(cat "$STAGE"/licences.txt "$STAGE"/bin/* installer/* | sha256sum)
(cd "$STAGE" && at_its_time wixl -a x64 -D "Version=$VERSION" -D "ProductCode=$(uuid product)" -o "$OUT" \
  "$ROOT/installer/Tolmar.wxs")
while read -r query; do at_its_time msibuild "$OUT" -q "$query"; done <installer/tables.sql
at_its_time msibuild "$OUT" -i installer/MsiLockPermissionsEx.idt
at_its_time msibuild "$OUT" -s "Tolmar Host $VERSION" Tolmar 'x64;1033' "{$(uuid package)}"
rm -r "$STAGE"
