#!/usr/bin/env bash
# Draws the pictures of docs/ from their text sources and builds the reference of the public headers: ./dev docs
source scripts/common.sh
bash scripts/deps.sh doxygen graphviz mscgen
mkdir -p docs/img "$BUILD/docs"

draw() {
  local source name
  for source in docs/pictures/*; do
    name=$(basename "${source%.*}")
    case "$source" in
      *.dot) dot -Tsvg "$source" -o "docs/img/$name.svg" ;;
      *.msc) mscgen -T svg -i "$source" -o "docs/img/$name.svg" ;;
    esac
  done
  # What follows from other arrows is left out.
  bash scripts/includes.sh --dot | tred | dot -Tsvg -o docs/img/rooms.svg
}

step "pictures: docs/img" "$BUILD/log/docs-pictures.log" draw
step "reference: build/docs/html/index.html" "$BUILD/log/docs-reference.log" doxygen docs/Doxyfile
