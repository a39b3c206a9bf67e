#!/usr/bin/env bash
# ./dev release: what ./dev package makes, from the commit that stands here and nothing else, into build/release. Builds it
# twice, in two folders, and compares. Refuses a work tree with changes, a version without a chapter in the CHANGELOG, and
# a tag that names another version.
source scripts/common.sh
RELEASE=$BUILD/release
VERSION=$(cat VERSION)

check() {
  local changes tag
  changes=$(git status --porcelain)
  [ -z "$changes" ] || die $'the work tree has changes:\n'"$changes"
  grep -q "^## $VERSION\b" CHANGELOG.md || die "CHANGELOG.md has no chapter \"## $VERSION\""
  tag=$(git describe --exact-match --tags --match 'v*' 2>/dev/null || true)
  [ -n "$tag" ] || return 0
  [ "$tag" = "v$VERSION" ] || die "the tag is $tag, VERSION says $VERSION"
  ! grep -q "^## $VERSION (not released)" CHANGELOG.md || die "CHANGELOG.md says that $VERSION is not released"
}

# build FOLDER: a clone's package.
build() {
  git clone -q "$ROOT" "$1"
  git -C "$1" checkout -q --detach "$COMMIT"
  (cd "$1" && ./dev package)
}

check
COMMIT=$(git rev-parse HEAD)
rm -rf "$RELEASE"
mkdir -p "$RELEASE"
step "first build" "$BUILD/log/release-1.log" build "$RELEASE/one"
step "second build, in another folder" "$BUILD/log/release-2.log" build "$RELEASE/another"
cmp "$RELEASE/one/build/package/SHA256SUMS" "$RELEASE/another/build/package/SHA256SUMS" ||
  die "the two builds are not equal: compare $RELEASE/*/build/package"
mv "$RELEASE/one/build/package" "$RELEASE/$VERSION"
rm -rf "$RELEASE/one" "$RELEASE/another"
(cd "$RELEASE/$VERSION" && sha256sum --check --quiet SHA256SUMS && cat SHA256SUMS)
echo "release $VERSION of $COMMIT: $RELEASE/$VERSION"
