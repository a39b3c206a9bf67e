#!/usr/bin/env bash
# The package as one who embeds the agent has it: scripts/installed.sh headers | example | hosts
#   headers   installs it, compiles every header of it alone, with each compiler; holds the C interface to its promises
#   example   builds the example that is in it, as its own project, and runs that against the simulator
#   hosts     the same with the hosts in other languages
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
  interface
}

# The interface is what it has promised to be: declarations, structures and the DLL's names.
interface() {
  local promised=tests/c_interface/version-1.c
  x86_64-w64-mingw32-gcc-posix -std=c99 -Wall -Wextra -Wpedantic -Werror -Wno-unused-function -fsyntax-only \
    -DTOLMAR_C_API= -I "$PACKAGE/include" "$promised"
  diff <(grep -oE '\btolmar_[a-z0-9_]+\(' "$promised" | tr -d '(' | sort) \
    <(x86_64-w64-mingw32-objdump -p "$PACKAGE/bin/TolmarAgentC.dll" |
      sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' | awk '/^\t\[/ { print $NF }' | sort)
}

# build_project NAME: an example of the package, configured as on a machine that has nothing else of the agent.
build_project() {
  cmake --fresh -S "$PACKAGE/share/tolmar/$1" -B "$EMBED/$1" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_C_COMPILER=x86_64-w64-mingw32-gcc-posix \
    -DCMAKE_CXX_COMPILER=x86_64-w64-mingw32-g++-posix "-DTolmarAgent_ROOT=$PACKAGE"
  cmake --build "$EMBED/$1"
}

# One title, whose installer takes long enough to be asked how it is getting on.
offer_title() {
  rm -rf "$EMBED/cloud"
  e2e_title "$EMBED/cloud" embedded 2
  jq -n '{sessionToken: "session-of-the-lab", titles: [{l1FruPn: "T-EMBEDDED", name: "Embedded", modules: [
    {moduleFruPn: "M-EMBEDDED", files: ["embedded.cab", "check-embedded.ps1"]}]}]}' >"$EMBED/cloud/catalogue.json"
  cloud_start "$EMBED/cloud" lab
}

# delivers GOING LAST PROGRAM ARGUMENT…: it installs the title on a fresh device; a line like GOING tells how that goes, a
# LAST one what has come of it.
delivers() {
  local going=$1 last=$2 output
  shift 2
  cloud_device embed lab
  rm -rf "$LAB_C/lab/e2e/embedded"
  output=$(lab_wine 120 "$@" | tr -d '\r')
  cat <<<"$output"
  grep -q "$going" <<<"$output" || die "it did not tell how the installation was getting on"
  tail -n 1 <<<"$output" | grep -q "$last" || die "it does not tell that the title is installed"
  cmp "$EMBED/cloud/embedded.files/payload.bin" "$LAB_C/lab/e2e/embedded/payload.bin"
}

begin() {
  install_package
  lab_up
  offer_title
}

example() {
  begin
  build_project example
  delivers '"status" : "installing"' '^T-EMBEDDED: installed$' "$EMBED/example/embed_example.exe"
}

# The same C for Visual C++'s kind of program; of its library it gets what it needs.
build_for_visualc() {
  local stand_ins=$ROOT/tests/c_interface/visualc file
  for file in "$PACKAGE/share/tolmar/examples/c/Main.c" "$stand_ins/start.c"; do
    clang --target=x86_64-pc-windows-msvc -std=c99 -Wall -Wextra -Wpedantic -Werror -O1 -ffreestanding \
      -isystem "$stand_ins" -I "$PACKAGE/include" -c "$file" -o "$EMBED/visualc/$(basename "$file" .c).obj"
  done
  llvm-dlltool -m i386:x86-64 -d "$stand_ins/msvcrt.def" -l "$EMBED/visualc/msvcrt.lib"
  lld-link /machine:x64 /subsystem:console "/out:$EMBED/visualc/visualc_example.exe" "$EMBED"/visualc/*.obj \
    "$EMBED/visualc/msvcrt.lib" "$PACKAGE/lib/TolmarAgentC.lib"
}

build_for_go() {
  (cd "$PACKAGE/share/tolmar/examples/go" && export GOOS=windows GOARCH=amd64 CGO_ENABLED=0 GOPROXY=off GOFLAGS=-mod=mod &&
    go vet . tolmar && go build -o "$EMBED/go/go_example.exe" .)
}

# With .NET for Windows beside it, where an SDK is here that gets hold of one.
build_for_csharp() {
  dotnet publish --nologo -warnaserror --runtime win-x64 --self-contained -o "$EMBED/csharp" \
    "$PACKAGE/share/tolmar/examples/csharp"
}

# Of a C# host at least the syntax is checked.
csharp() {
  if command -v dotnet >/dev/null && build_for_csharp; then
    delivers "$1" '"status":"installed"' "$EMBED/csharp/csharp_example.exe" 'C:\lab\embed\host.json'
  else
    echo "C#: syntax only"
    mcs -warnaserror -out:"$EMBED/csharp/syntax.exe" "$PACKAGE/share/tolmar/examples/csharp/Program.cs"
  fi
}

# refuses_configuration PROGRAM: of a text that is none it tells what is wrong.
refuses_configuration() {
  local said
  echo '{"baseUrl": 5}' >"$LAB_C/lab/embed/wrong.json"
  said=$(lab_wine 60 "$1" 'C:\lab\embed\wrong.json' 2>&1) && die "it starts with a wrong configuration"
  echo "$said"
  grep -q '^the text that the host gives: key "baseUrl" ' <<<"$said" || die "it does not tell which key is wrong"
}

hosts() {
  local kind going='^T-EMBEDDED: installing'
  begin
  build_project examples/c
  for kind in visualc go csharp; do
    rm -rf "${EMBED:?}/$kind"
    mkdir -p "$EMBED/$kind"
    cp "$PACKAGE"/bin/*.dll "$EMBED/$kind"
  done
  build_for_visualc
  build_for_go
  delivers "$going" '"status":"installed"' "$EMBED/examples/c/c_example.exe"
  delivers "$going" '"status":"installed"' "$EMBED/visualc/visualc_example.exe"
  delivers "$going" '^T-EMBEDDED: installed$' "$EMBED/go/go_example.exe" 'C:\lab\embed\host.json'
  csharp "$going"
  refuses_configuration "$EMBED/go/go_example.exe"
}

trap end_in_others_lab EXIT
case "${1:-}" in
  headers | example | hosts) "$1" ;;
  *) die "usage: scripts/installed.sh headers | example | hosts" ;;
esac
