#!/usr/bin/env bash
# Installs what is missing: Debian packages, those of the arguments too, and the libraries that Debian has no MinGW builds
# of (into build/deps). With --only: Debian packages, those of the arguments alone.
source scripts/common.sh
source scripts/npm.sh

PACKAGES=(ca-certificates cabextract clang clang-format clang-tidy cmake cppcheck curl dpkg-dev g++
  g++-mingw-w64-x86-64-posix gcab git googletest libbenchmark-dev libclang-rt-14-dev libcli11-dev
  libcpp-httplib-dev libfuzzer-14-dev libgcab-dev libgmock-dev jq libgtest-dev libjsoncpp-dev libssl-dev libutfcpp-dev libz-mingw-w64-dev
  llvm   make ninja-build openssl osslsigncode pkg-config python3-jsonschema python3-yaml shellcheck wine wine64 xz-utils zlib1g-dev)
ONLY=no
if [ "${1:-}" = --only ]; then ONLY=yes && PACKAGES=("${@:2}"); else PACKAGES+=("$@"); fi
DEPS=$BUILD/deps
PREFIX=$DEPS/mingw
LOGS=$DEPS/log

missing_packages() {
  local package
  for package in "${PACKAGES[@]}"; do
    dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || echo "$package"
  done
  [ "$ONLY" = yes ] || command -v npm >/dev/null || printf 'nodejs\nnpm\n'
}

install_packages() {
  local as_root=() list
  list=$(missing_packages)
  [ -n "$list" ] || return 0
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || die "these Debian packages are missing and need root to install: ${list//$'\n'/ }"
    as_root=(sudo)
  fi
  step "Debian's package lists" "$LOGS/apt-update.log" "${as_root[@]}" apt-get update
  # shellcheck disable=SC2086
  step "Debian packages:" "$LOGS/apt-install.log" "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends $list
}

# Source packages come through lists of our own; the system's are not touched.
fetch_sources() {
  local lists=$DEPS/apt folder options package sources
  mkdir -p "$lists/parts" "$lists/lists/partial" "$DEPS/src"
  if [ -f /etc/apt/sources.list.d/debian.sources ]; then
    sed 's/^Types:.*/Types: deb-src/' /etc/apt/sources.list.d/debian.sources >"$lists/parts/s.sources"
  else
    sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$lists/parts/s.list"
  fi
  options=(-o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$lists/parts"
    -o "Dir::State::lists=$lists/lists" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache=
    -o APT::Sandbox::User=root)
  apt-get "${options[@]}" update
  for package in libjsoncpp cpp-httplib; do
    (cd "$DEPS/src" && apt-get "${options[@]}" source --download-only "$package")
    sources=("$DEPS/src/$package"_*.dsc)
    folder=$DEPS/src/${package#lib}
    rm -rf "$folder"
    dpkg-source --no-check -x "${sources[-1]}" "$folder"
  done
}

# cross_build NAME SOURCE OPTIONS...: builds and installs one library into the prefix.
cross_build() {
  local name=$1 source=$2
  shift 2
  cmake -S "$source" -B "$DEPS/build/$name" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/toolchain-mingw.cmake" -DCMAKE_INSTALL_PREFIX="$PREFIX" "$@"
  cmake --build "$DEPS/build/$name" -j "$JOBS"
  cmake --install "$DEPS/build/$name"
}

# Of headers alone: CLI11, utfcpp and cpp-httplib, which Debian has split into a header and a library.
copy_headers() {
  mkdir -p "$PREFIX/include" "$PREFIX/lib/cmake"
  cp "$DEPS/src/cpp-httplib/httplib.h" "$PREFIX/include/"
  cp -r /usr/include/CLI /usr/include/utf8cpp "$PREFIX/include/"
  cp -r "$(dirname "$(dpkg -L libcli11-dev | grep CLI11Config.cmake)")" "$PREFIX/lib/cmake/CLI11"
}

build_libraries() {
  local versions
  versions=$(dpkg-query -W -f '${Package} ${Version};' g++-mingw-w64-x86-64-posix googletest libcli11-dev \
    libcpp-httplib-dev libjsoncpp-dev libutfcpp-dev)
  is_stamped "$PREFIX/stamp" "$versions" && return 0
  rm -rf "$PREFIX" "$DEPS/build"
  step "sources of jsoncpp and cpp-httplib" "$LOGS/sources.log" fetch_sources
  step "jsoncpp for Windows" "$LOGS/jsoncpp.log" cross_build jsoncpp "$DEPS/src/jsoncpp" \
    -DBUILD_SHARED_LIBS=OFF -DBUILD_OBJECT_LIBS=OFF -DJSONCPP_WITH_TESTS=OFF \
    -DJSONCPP_WITH_POST_BUILD_UNITTEST=OFF
  step "GoogleTest for Windows" "$LOGS/googletest.log" cross_build googletest /usr/src/googletest
  step "CLI11, utfcpp and cpp-httplib for Windows" "$LOGS/headers.log" copy_headers
  stamp "$PREFIX/stamp" "$versions"
}

install_packages
[ "$ONLY" = yes ] && exit
build_libraries
npm_grammar
