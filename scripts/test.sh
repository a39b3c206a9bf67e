#!/usr/bin/env bash
# Runs the tests: ./dev test [--unit] [--filter GTEST_FILTER], or ./dev test --lint. Last line: N passed, N failed.
source scripts/common.sh
source scripts/npm.sh
unit_only=no
lint_only=no
filter='*'
while [ $# -gt 0 ]; do
  case "$1" in
    --unit) unit_only=yes ;;
    --lint) lint_only=yes ;;
    --filter) filter=${2:?} && shift ;;
    *) die "usage: ./dev test [--unit] [--filter GTEST_FILTER] | --lint" ;;
  esac
  shift
done
passed=0
failed=0

# check NAME COMMAND…: one check that has no tests of its own to count.
check() {
  local name=$1 log="$BUILD/log/check-${1// /-}.log"
  shift
  mkdir -p "$BUILD/log"
  if "$@" >"$log" 2>&1; then
    passed=$((passed + 1)) && echo "  $name: ok"
  else
    failed=$((failed + 1)) && echo "  $name: FAILED" && tail -n 30 "$log"
  fi
}

# suite NAME COMMAND…: a GoogleTest program; its own counts are added. A program that dies (under Wine
# with status 0) counts as a failure.
suite() {
  local name=$1 log="$BUILD/log/test-${1// /-}.log" start=$SECONDS status=0 good bad
  shift
  mkdir -p "$BUILD/log"
  "$@" --gtest_brief=1 "--gtest_filter=$filter" >"$log" 2>&1 </dev/null || status=$?
  tr -d '\r' <"$log" >"$log.text"
  good=$(sed -n 's/^\[  PASSED  \] \([0-9]*\) tests\{0,1\}\..*/\1/p' "$log.text")
  bad=$(sed -n 's/^\[  FAILED  \] \([0-9]*\) tests\{0,1\}, listed below.*/\1/p' "$log.text")
  [ "${bad:-0}" -gt 0 ] || { [ "$status" -eq 0 ] && [ -n "$good" ]; } || bad=1
  passed=$((passed + ${good:-0}))
  failed=$((failed + ${bad:-0}))
  echo "  $name: ${good:-0} passed, ${bad:-0} failed ($((SECONDS - start)) s)"
  grep '^| ' "$log.text" || true
  [ "${bad:-0}" -eq 0 ] || tail -n 60 "$log.text"
}

# The DLL exports the class and the three records, nothing else.
exports_are_the_api() {
  local names foreign
  names=$(x86_64-w64-mingw32-objdump -p "$BUILD/windows/bin/TolmarAgent.dll" |
    sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' | awk '/^\t\[/ { print $NF }' | c++filt)
  [ -n "$names" ] || return 1
  foreign=$(grep -vE '^(TolmarAgent|SoftwarePackage|SoftwareModule|ModuleFile)::' <<<"$names" || true)
  echo "$foreign"
  [ -z "$foreign" ] && grep -q '^TolmarAgent::GetInstance()$' <<<"$names"
}

version_resource_is_current() {
  local dll
  for dll in TolmarAgent TolmarAgentC; do
    tr -d '\0' <"$BUILD/windows/bin/$dll.dll" | LC_ALL=C grep -aF "FileVersion$(cat VERSION)" >/dev/null || return 1
  done
}

policies_are_the_keys() {
  bash scripts/policy.sh "$BUILD/policy" && /usr/bin/python3 tests/schema/policy.py "$BUILD/policy"
}

readme_shows_the_examples() {
  local shown
  for shown in cpp:embed/Main.cpp c:c/Main.c go:go/main.go; do
    diff <(sed -n "/^\`\`\`${shown%%:*}$/,/^\`\`\`$/p" README.md | sed '1d;$d') "examples/${shown#*:}" || return 1
  done
}

# Both compilers, both lanes, then everything that reads sources; what the second compiler makes must work as well.
lint() {
  local lane tool
  for lane in native-all windows clang clang-windows; do check "no warnings, $lane" bash scripts/build.sh "$lane"; done
  for tool in tidy tidy-windows cppcheck shellcheck; do check "$tool" bash scripts/lint.sh "$tool"; done
  source scripts/lab.sh
  trap lab_down EXIT
  lab_up
  suite "agent by clang" "$BUILD/clang/bin/agent_unit_tests"
  suite "agent by clang, on Wine" lab_wine 120 "$BUILD/clang-windows/bin/agent_unit_tests.exe"
}

# Genuine PowerShell, in the script runner's place until the end: scripts by themselves, then a delivery with all parts.
genuine_powershell() {
  local told
  if ! told=$(bash scripts/powershell.sh); then
    echo "  left out: $told"
    return
  fi
  source tests/powershell/fixtures.sh
  powershell_fixtures "$BUILD/lab/scripts"
  lab_powershell pwshhost
  suite "scripts under PowerShell $told" env "TOLMAR_SCRIPTS=Z:${BUILD//\//\\}\\lab\\scripts" \
    timeout 600 wine "$bin/powershell_tests.exe"
  [ "$filter" != '*' ] || filter='Delivery.First*:Delivery.Second*:Report.NamesEach*' suite "delivery under PowerShell $told" \
    env "E2E_FOLDER=$BUILD/e2e" "E2E_BIN=$bin" "$BUILD/native/bin/e2e_tests"
  lab_powershell scriptrunner
}

finish() {
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ]
  exit
}

bash scripts/deps.sh
if [ "$lint_only" = yes ]; then
  lint
  finish
fi
echo "build"
bash scripts/build.sh asan tsan windows native
source scripts/lab.sh
trap lab_down EXIT
lab_up

echo "checks"
check "format" bash scripts/format.sh --check
[ "$unit_only" = yes ] || check "clang-tidy" bash scripts/lint.sh tidy
check "behaviour table" bash scripts/behaviour.sh
check "who includes whom" bash scripts/includes.sh
check "service's description" npm_tool redocly lint docs/protocol.yaml --config docs/redocly.yaml
check "exported names" exports_are_the_api
check "README's examples" readme_shows_the_examples
check "version resource" version_resource_is_current
check "policy templates" policies_are_the_keys
[ "$unit_only" = yes ] || check "installed headers" bash scripts/installed.sh headers

echo "native lane"
suite "agent, address and undefined sanitizers" "$BUILD/asan/bin/agent_unit_tests"
suite "agent, thread sanitizer" setarch -R "$BUILD/tsan/bin/agent_unit_tests"
suite "C interface, address and undefined sanitizers" "$BUILD/asan/bin/c_interface_tests"
suite "C interface, thread sanitizer" setarch -R "$BUILD/tsan/bin/c_interface_tests"
suite "reference host, portable" "$BUILD/asan/bin/host_portable_tests"
check "fuzzing's inputs" "$BUILD/asan/bin/fuzz_replay" tests/fuzz/corpus
suite "script runner, portable" "$BUILD/asan/bin/scriptrunner_tests"
suite "tolmarctl, portable" "$BUILD/asan/bin/tolmarctl_tests"
suite "tolmarpack" "$BUILD/asan/bin/tolmarpack_tests"
suite "service, portable" "$BUILD/asan/bin/tolmarhost_tests"
suite "cloud simulator" "$BUILD/asan/bin/cloudsim_tests"

check "conformance" bash tests/conform/run.sh

echo "Windows lane"
bin=$BUILD/windows/bin
source tests/host/fixtures.sh
host_fixtures "$BUILD/lab/fixtures" "$BUILD/lab/pki"
export TOLMAR_FIXTURES="Z:${BUILD//\//\\}\\lab\\fixtures"
suite "agent on Wine" lab_wine 120 "$bin/agent_unit_tests.exe"
suite "C interface on Wine" lab_wine 120 "$bin/c_interface_tests.exe"
suite "reference host, portable, on Wine" lab_wine 120 "$bin/host_portable_tests.exe"
suite "reference host on Wine" lab_wine 300 "$bin/host_windows_tests.exe"
# Once more without what works around Wine, and without what Wine then cannot do.
beyond_wine=HttpRequest.TellsWhyThereWasNoExchange:HttpRequest.AFetchedFileIsWholeOrNotThere
beyond_wine+=:DownloadAgentTest.AServerThatFallsSilentIsGivenUp:DownloadAgentTest.StopsAtOnceWhoeverAsksForIt
beyond_wine+=:DownloadAgentTest.AJobThatADeadProcessHasLeftIsOutOfTheWay
[ "$filter" != '*' ] || filter="HttpRequest.*:DownloadAgentTest.*:BitsTest.*:FileSystem*:Log*:Event*-$beyond_wine" \
  suite "reference host as on Windows" env TOLMAR_AS_ON_WINDOWS=1 timeout 120 wine "$bin/host_windows_tests.exe"
suite "script runner on Wine" lab_wine 120 "$bin/scriptrunner_tests.exe"
suite "tolmarctl, portable, on Wine" lab_wine 120 "$bin/tolmarctl_tests.exe"
suite "tolmarpack on Wine" lab_wine 120 "$bin/tolmarpack_tests.exe"
suite "service, portable, on Wine" lab_wine 120 "$bin/tolmarhost_tests.exe"

if [ "$unit_only" = no ]; then
  echo "end to end"
  # Looks at the report's page and the console; hosts in other languages.
  bash scripts/deps.sh chromium golang-go lld mono-mcs
  npm_packages
  source tests/e2e/fixtures.sh
  e2e_fixtures "$BUILD/e2e"
  runs=$BUILD/e2e/runs.jsonl
  exchanges=$BUILD/e2e/exchanges.jsonl
  rm -f "$runs" "$exchanges"
  suite "agent, host, cloud" env "NODE_PATH=$NPM/node_modules" "E2E_FOLDER=$BUILD/e2e" "E2E_BIN=$bin" "E2E_RUNS=$runs" \
    "E2E_EXCHANGES=$exchanges" "$BUILD/native/bin/e2e_tests"
  check "packages, from an author's folder to a device" bash tests/tolmarpack/run.sh "$runs"
  # Debian's own Python, which has Debian's modules. Of some tests alone not every schema has an output.
  if [ "$filter" = '*' ]; then
    check "schemas" /usr/bin/python3 tests/schema/check.py "$runs"
    check "service's description, exchanges" /usr/bin/python3 tests/schema/exchanges.py "$exchanges"
  fi
  check "installed package's example" bash scripts/installed.sh example
  check "installed package's hosts in other languages" bash scripts/installed.sh hosts
  check "installer" bash scripts/deployed.sh
  echo "genuine PowerShell"
  genuine_powershell
fi

finish
