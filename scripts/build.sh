#!/usr/bin/env bash
# Builds lanes: scripts/build.sh LANE…
#   product       the agent and its programs, for Windows               -> build/windows/bin
#   windows       the same with everything else that runs under Wine    -> build/windows/bin
#   stop          what ./dev bench stop runs under Wine                 -> build/windows/bin
#   soak          what ./dev soak runs under Wine                       -> build/windows/bin
#   delivery      what ./dev bench delivery runs under Wine             -> build/windows/bin
#   load          what ./dev bench load runs under Wine                 -> build/windows/bin
#   cloudsim, tolmarpack, herd, polls, micro, load-native  one native program        -> build/native/bin
#   native        cloudsim and the tests that stand around the lab      -> build/native/bin
#   native-all    everything that builds natively                       -> build/native/bin
#   clang, clang-windows  everything, by the second compiler            -> build/clang/bin, build/clang-windows/bin
#   coverage      unit tests that count what they run                   -> build/coverage/bin
#   asan, tsan    unit tests under address+undefined / thread sanitizer -> build/asan/bin, build/tsan/bin
source scripts/common.sh

# configure LANE OPTIONS…: warnings are errors in all of them.
configure() {
  local lane=$1
  shift
  set -- -DTOLMAR_WERROR=ON "$@"
  [ -f "$BUILD/$lane/build.ninja" ] && is_stamped "$BUILD/$lane/options.stamp" "$*" && return 0
  step "configuring $lane" "$BUILD/log/configure-$lane.log" cmake -S . -B "$BUILD/$lane" -G Ninja "$@"
  stamp "$BUILD/$lane/options.stamp" "$*"
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

# by_clang LANE OPTIONS…: configures it.
by_clang() {
  configure "$@" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
}

for lane in "$@"; do
  case "$lane" in
    product) for_windows tolmarctl tolmarpack cloudsim TolmarHost TolmarAgentC scriptrunner pwshhost labtrust ;;
    windows) for_windows ;;
    stop) for_windows stop_bench scriptrunner labtrust ;;
    soak) for_windows soak scriptrunner labtrust ;;
    delivery) for_windows delivery_bench idle_host tolmarctl scriptrunner labtrust ;;
    cloudsim | herd | polls | tolmarpack) native "$lane" ;;
    load) for_windows load_bench scriptrunner labtrust ;;
    micro) native micro_bench ;;
    load-native) native load_bench_native ;;
    native-all) native all fuzz_replay ;;
    clang)
      by_clang clang -DCMAKE_BUILD_TYPE=Release
      make_lane clang all fuzz_replay ;;
    clang-windows)
      configure clang-windows -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-clang-mingw.cmake
      make_lane clang-windows ;;
    coverage)
      by_clang coverage -DCMAKE_BUILD_TYPE= \
        "-DCMAKE_CXX_FLAGS=-fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic"
      make_lane coverage agent_unit_tests ;;
    native) native cloudsim e2e_tests tolmarpack ;;
    asan) sanitized asan address,undefined agent_unit_tests c_interface_tests host_portable_tests scriptrunner_tests tolmarctl_tests \
      tolmarhost_tests tolmarpack_tests cloudsim_tests fuzz_replay ;;
    tsan) sanitized tsan thread agent_unit_tests c_interface_tests ;;
    *) die "unknown lane: $lane" ;;
  esac
done
