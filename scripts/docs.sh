#!/usr/bin/env bash
# Draws the pictures of docs/ from their text sources and builds the reference of the public headers: ./dev docs
source scripts/common.sh
bash scripts/deps.sh doxygen graphviz
mkdir -p docs/img "$BUILD/docs"

draw() {
  local source
  for source in docs/pictures/*.dot; do dot -Tsvg "$source" -o "docs/img/$(basename "$source" .dot).svg"; done
  # What follows from other arrows is left out.
  bash scripts/includes.sh --dot | tred | dot -Tsvg -o docs/img/rooms.svg
}

step "pictures: docs/img" "$BUILD/log/docs-pictures.log" draw
step "reference: build/docs/html/index.html" "$BUILD/log/docs-reference.log" doxygen docs/Doxyfile
