#!/usr/bin/env bash
# Draws the pictures of docs/ from their text sources, builds the reference of the public headers and the page of the
# service's description: ./dev docs
source scripts/common.sh
source scripts/npm.sh
bash scripts/deps.sh doxygen graphviz
mkdir -p docs/img "$BUILD/docs"

draw() {
  local source
  for source in docs/pictures/*.dot; do dot -Tsvg "$source" -o "docs/img/$(basename "$source" .dot).svg"; done
  # What follows from other arrows is left out.
  bash scripts/includes.sh --dot | tred | dot -Tsvg -o docs/img/rooms.svg
}

# The service's description as one page, which asks nobody for anything: what it would fetch is put into it.
protocol() {
  npm_tool redocly build-docs docs/protocol.yaml --disableGoogleFont -o "$BUILD/docs/protocol.html"
  perl -0pi -e 'BEGIN { local $/; open my $in, "<", shift or die; $viewer = <$in> }
    s|<script src="https[^"]*redoc[^"]*"[^>]*></script>|<script>$viewer</script>|' \
    "$NPM/node_modules/redoc/bundles/redoc.standalone.js" "$BUILD/docs/protocol.html"
}

step "pictures: docs/img" "$BUILD/log/docs-pictures.log" draw
step "service: build/docs/protocol.html" "$BUILD/log/docs-protocol.log" protocol
step "reference: build/docs/html/index.html" "$BUILD/log/docs-reference.log" doxygen docs/Doxyfile
