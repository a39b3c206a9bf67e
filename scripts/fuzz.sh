#!/usr/bin/env bash
# Fuzzes the readers of everything that comes from outside: ./dev fuzz [--seconds N] [TARGET…]
# Without targets: all, one after the other, N seconds (default 60) each. Findings are kept in build/fuzz/findings.
source scripts/common.sh
FUZZ=$BUILD/fuzz
SOURCES=$ROOT/tests/fuzz
seconds=60
targets=()
while [ $# -gt 0 ]; do
  case "$1" in
    --seconds) [[ ${2:-} =~ ^[1-9][0-9]*$ ]] || die "--seconds takes a number above 0"; seconds=$2 && shift ;;
    -*) die "usage: ./dev fuzz [--seconds N] [TARGET…]" ;;
    *) [ -d "$SOURCES/corpus/$1" ] || die "no target $1; there are: $(ls -x -w 0 "$SOURCES/corpus")"; targets+=("$1") ;;
  esac
  shift
done
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(ls "$SOURCES/corpus")

FLAGS="-fsanitize=fuzzer-no-link,address,undefined,float-cast-overflow -fno-sanitize-recover=all"
INSTRUMENTED=(-G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
  "-DCMAKE_CXX_FLAGS=$FLAGS -fno-omit-frame-pointer")

# The JSON library too: the fuzzer sees into what is instrumented only.
build_jsoncpp() {
  cmake -S "$BUILD/deps/src/jsoncpp" -B "$FUZZ/jsoncpp" "${INSTRUMENTED[@]}" -DCMAKE_INSTALL_PREFIX="$FUZZ/prefix" \
    -DBUILD_SHARED_LIBS=OFF -DBUILD_OBJECT_LIBS=OFF -DJSONCPP_WITH_TESTS=OFF -DJSONCPP_WITH_POST_BUILD_UNITTEST=OFF &&
    cmake --build "$FUZZ/jsoncpp" -j "$JOBS" &&
    cmake --install "$FUZZ/jsoncpp"
}

build_targets() {
  cmake -S . -B "$FUZZ/lane" "${INSTRUMENTED[@]}" -DTOLMAR_FUZZ=ON "-DCMAKE_PREFIX_PATH=$FUZZ/prefix" &&
    cmake --build "$FUZZ/lane" -j "$JOBS" --target "${targets[@]/#/fuzz_}"
}

# figure LOG NAME: one of libFuzzer's final figures.
figure() { sed -n "s/^stat::$2: *//p" "$1"; }

# fuzz_one TARGET: runs it and prints its row. The corpus grows in build/fuzz; what is checked in is its start.
fuzz_one() {
  local target=$1 log=$FUZZ/log/$1.log corpus=$FUZZ/corpus/$1 status=0 before after edges
  mkdir -p "$FUZZ/log" "$corpus" "$FUZZ/findings"
  before=$(find "$FUZZ/findings" -name "$target-*" | wc -l)
  ASAN_OPTIONS=malloc_context_size=4 "$FUZZ/lane/bin/fuzz_$target" -max_total_time="$seconds" -print_final_stats=1 \
    -timeout=10 -rss_limit_mb=2048 -dict="$SOURCES/words.dict" -artifact_prefix="$FUZZ/findings/$target-" \
    "$corpus" "$SOURCES/corpus/$target" >"$log" 2>&1 </dev/null || status=$?
  after=$(find "$FUZZ/findings" -name "$target-*" | wc -l)
  edges=$(sed -n 's/^#[0-9].* cov: \([0-9]*\) .*/\1/p' "$log" | tail -n 1)
  printf '| %-22s | %11s | %7s | %5s | %6s | %8s |\n' "$target" "$(figure "$log" number_of_executed_units)" \
    "$(figure "$log" average_exec_per_sec)" "${edges:-0}" "$(find "$corpus" -type f | wc -l)" $((after - before))
  [ "$status" -eq 0 ] || found+=("$target")
}

# tell TARGET: what was found, and what to do with it.
tell() {
  local input
  echo
  grep -hE '^does not hold: |^SUMMARY: |runtime error: ' "$FUZZ/log/$1.log" | head -n 3
  input=$(sed -n 's/.*Test unit written to //p' "$FUZZ/log/$1.log" | tail -n 1)
  [ -n "$input" ] || { echo "$1 ended without an input: see $FUZZ/log/$1.log" && return; }
  echo "  run it again:  $FUZZ/lane/bin/fuzz_$1 $input"
  echo "  once it is fixed, keep it:  cp $input tests/fuzz/corpus/$1/NAME-OF-THE-FAULT"
}

bash scripts/deps.sh
versions=$(dpkg-query -W -f '${Package} ${Version};' clang libjsoncpp-dev)
if ! is_stamped "$FUZZ/prefix/stamp" "$versions"; then
  rm -rf "$FUZZ/jsoncpp" "$FUZZ/prefix" "$FUZZ/lane"
  step "jsoncpp, instrumented" "$BUILD/log/fuzz-jsoncpp.log" build_jsoncpp
  stamp "$FUZZ/prefix/stamp" "$versions"
fi
step "fuzz targets" "$BUILD/log/build-fuzz.log" build_targets

found=()
printf '| %-22s | %11s | %7s | %5s | %6s | %8s |\n' target executions "per s" edges corpus findings
echo "|------------------------|------------:|--------:|------:|-------:|---------:|"
for target in "${targets[@]}"; do fuzz_one "$target"; done
for target in "${found[@]}"; do tell "$target"; done
[ ${#found[@]} -eq 0 ]
