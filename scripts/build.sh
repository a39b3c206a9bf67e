#!/usr/bin/env bash
# Builds lanes: scripts/build.sh LANE…
#   product       the agent and its programs, for Windows               -> build/windows/bin
#   windows       the same with everything else that runs under Wine    -> build/windows/bin
#   stop          what ./dev bench stop runs under Wine                 -> build/windows/bin
#   cloudsim, herd  one native program                                  -> build/native/bin
#   native        cloudsim and the tests that stand around the lab      -> build/native/bin
#   asan, tsan    unit tests under address+undefined / thread sanitizer -> build/asan/bin, build/tsan/bin
source scripts/common.sh

configure() {
  local lane=$1
  shift
  [ -f "$BUILD/$lane/build.ninja" ] && return 0
  step "configuring $lane" "$BUILD/log/configure-$lane.log" cmake -S . -B "$BUILD/$lane" -G Ninja "$@"
}

# make LANE TARGETS…: no targets, everything.
make_lane() {
  local lane=$1 targets=()
  shift
  [ $# -eq 0 ] || targets=(--target "$@")
  step "building $lane" "$BUILD/log/build-$lane.log" cmake --build "$BUILD/$lane" "${targets[@]}"
}

sanitized() {
  local lane=$1 flags=$2
  shift 2
  configure "$lane" -DCMAKE_BUILD_TYPE= \
    -DCMAKE_CXX_FLAGS="-O1 -g1 -fsanitize=$flags -fno-sanitize-recover=all -fno-omit-frame-pointer"
  make_lane "$lane" "$@"
}

for_windows() {
  configure windows -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-mingw.cmake
  make_lane windows "$@"
}

native() {
  configure native -DCMAKE_BUILD_TYPE=Release
  make_lane native "$@"
}

for lane in "$@"; do
  case "$lane" in
    product) for_windows tolmarctl scriptrunner labtrust ;;
    windows) for_windows ;;
    stop) for_windows stop_bench scriptrunner labtrust ;;
    cloudsim | herd) native "$lane" ;;
    native) native cloudsim cloudsim_tests e2e_tests ;;
    asan) sanitized asan address,undefined agent_unit_tests host_portable_tests scriptrunner_tests fuzz_replay ;;
    tsan) sanitized tsan thread agent_unit_tests ;;
    *) die "unknown lane: $lane" ;;
  esac
done
