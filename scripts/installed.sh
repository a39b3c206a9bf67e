#!/usr/bin/env bash
# The package as one who embeds the agent has it: scripts/installed.sh headers | example
#   headers   installs it, compiles every header of it alone, with each compiler
#   example   builds the example that is in it, as its own project, and runs that against the simulator
source scripts/common.sh
source scripts/lab.sh
source scripts/cloud.sh
source tests/e2e/fixtures.sh
WINDOWS=$BUILD/windows
EMBED=$BUILD/embed
PACKAGE=$EMBED/package

install_package() {
  rm -rf "$PACKAGE"
  cmake --install "$WINDOWS" --prefix "$PACKAGE" >/dev/null
}

headers() {
  local compiler
  install_package
  for compiler in mingw clang-mingw; do
    echo "headers, $compiler"
    cmake --fresh -S tests/headers -B "$EMBED/headers-$compiler" -G Ninja \
      "-DCMAKE_TOOLCHAIN_FILE=$ROOT/cmake/toolchain-$compiler.cmake" \
      "-DTolmarAgent_DIR=$PACKAGE/lib/cmake/TolmarAgent" >/dev/null
    cmake --build "$EMBED/headers-$compiler"
  done
}

# The project is the package's copy, configured as on a machine that has nothing else of the agent.
build_example() {
  cmake --fresh -S "$PACKAGE/share/tolmar/example" -B "$EMBED/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_CXX_COMPILER=x86_64-w64-mingw32-g++-posix "-DTolmarAgent_ROOT=$PACKAGE"
  cmake --build "$EMBED/build"
}

# One title, whose installer takes long enough to be asked how it is getting on.
offer_title() {
  rm -rf "$EMBED/cloud"
  e2e_title "$EMBED/cloud" embedded 2
  jq -n '{sessionToken: "session-of-the-lab", titles: [{l1FruPn: "T-EMBEDDED", name: "Embedded", modules: [
    {moduleFruPn: "M-EMBEDDED", files: ["embedded.cab", "check-embedded.ps1"]}]}]}' >"$EMBED/cloud/catalogue.json"
  cloud_start "$EMBED/cloud" lab
}

example() {
  local output
  install_package
  build_example
  lab_up
  offer_title
  cloud_device embed lab
  rm -rf "$LAB_C/lab/e2e/embedded"
  output=$(lab_wine 120 "$EMBED/build/embed_example.exe" | tr -d '\r')
  cat <<<"$output"
  grep -q '"status" : "installing"' <<<"$output" || die "it did not tell how the installation was getting on"
  [ "$(tail -n 1 <<<"$output")" = 'T-EMBEDDED: installed' ] || die "it does not tell that the title is installed"
  cmp "$EMBED/cloud/embedded.files/payload.bin" "$LAB_C/lab/e2e/embedded/payload.bin"
}

OTHERS_LAB=${LAB_RUNNING:-}
finish() {
  cloud_stop
  [ -n "$OTHERS_LAB" ] || lab_down
}

trap finish EXIT
case "${1:-}" in
  headers | example) "$1" ;;
  *) die "usage: scripts/installed.sh headers | example" ;;
esac
