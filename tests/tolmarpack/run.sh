#!/usr/bin/env bash
# tolmarpack as its users have it: the walk-through of docs/authoring.md, a package that fails in the lab, and what the
# native program and the host say of the same packages. RUNS.jsonl, when given, gets what it printed as JSON.
source scripts/common.sh
source scripts/lab.sh
source scripts/cloud.sh
source tests/host/fixtures.sh
RUNS=${1:-/dev/null}
FOLDER=$BUILD/authoring
export PATH=$BUILD/native/bin:$PATH

# said STATUS COMMAND…: standard output of a command that has to end so; kept for tests/schema/check.py.
said() {
  local status=0 output
  output=$("${@:2}") || status=$?
  [ "$status" -eq "$1" ] || die "status $status, not $1: ${*:2}: $output"
  jq -cn --arg arguments "${*:2}" --argjson status "$status" --arg output "$output" \
    '{$arguments, exitStatus: $status, $output, errors: ""}' >>"$RUNS"
  tr -d '\r' <<<"$output"
}

walk_through() (
  sed -n '/^```sh$/,/^```$/{/^```/d;p}' "$ROOT/docs/authoring.md" >walk.sh
  bash -euxo pipefail walk.sh 2>&1 | tee walk.log
  for line in 'no mistakes found' 'T-NOTES installs' 'detect again *installed' 'would unpack it'; do
    grep -q "$line" walk.log || die "the walk-through does not say: $line"
  done
  cp notes.cab before.cab
  tolmarpack build notes -o again.cab && tolmarpack build notes -o notes.cab && cmp again.cab notes.cab
  [ "$(jq -r '.titles[0].l1FruPn' cloud/catalogue.json)" = T-NOTES ] || die "the catalogue lacks the title"
  said 0 tolmarpack --json verify before.cab --ca publisher.crt
  said 0 tolmarpack --json lint notes before.cab >/dev/null
)

# Its check finds it everywhere, and its installer complains.
failing_package() (
  local document
  tolmarpack new broken
  printf 'exit 0\n' >broken/check-broken.ps1
  printf "param([string]\$command)\nWrite-Output 'the licence has run out'\nexit 3\n" >broken/install.ps1
  said 1 tolmarpack --json lint broken | jq -e '[.findings[].rule] == ["check-always"]'
  flock "$BUILD/trial.lock" tolmarpack test broken 2>refused.log && die "two trials share a lab"
  grep -q 'another trial is under way' refused.log
  document=$(said 1 tolmarpack --json test broken)
  jq -e '(.phases[0] | .phase == "detect" and (.good | not)) and
    (.phases[] | select(.phase == "installed") | (.good | not) and (.output | test("licence has run out")))' <<<"$document"
)

# verdicts: what both say of the packages of the host's tests, names of faults in the data apart.
verdicts() {
  local package parts='{taken, cause, signed, publisher, thumbprint, members: [.members[].name]}'
  lab_up
  host_fixtures "$BUILD/lab/fixtures" "$PKI"
  for package in "$BUILD"/lab/fixtures/*.cab; do
    diff <(tolmarpack --json verify "$package" --ca "$PKI/ca.crt" | jq "$parts") \
      <(lab_wine 60 "$LAB_BIN/tolmarpack.exe" --json verify "Z:${package//\//\\}" | jq "$parts") ||
      die "host and native program do not agree on $package"
  done
}

# on_windows: the same package and the same trial by the program for Windows, on the lab's PC.
on_windows() {
  local document
  rm -rf "$LAB_C/lab/pack" "$LAB_C/Program Files/notes" && mkdir -p "$LAB_C/lab/pack" "$FOLDER/new"
  (cd "$FOLDER/new" && tolmarpack new notes)
  cd "$LAB_C/lab/pack"
  lab_wine 60 "$LAB_BIN/tolmarpack.exe" new notes >/dev/null
  diff -r notes "$FOLDER/new/notes"
  document=$(lab_wine 120 "$LAB_BIN/tolmarpack.exe" --json test notes) || die "on Windows: $document"
  jq -e '.phases | all(.good) and ([.[] | select(.phase | test("^detect")) | .outcome] ==
    ["not installed", "installed", "installed"])' <<<"$document" >/dev/null || die "on Windows: $document"
  ! ls "$LAB_C"/users/*/Temp/tolmarpack-*/host.json 2>/dev/null || die "the trial has left its folder"
  cd "$ROOT"
}

rm -rf "$FOLDER" && mkdir -p "$FOLDER" && cd "$FOLDER"
walk_through
failing_package
cd "$ROOT"
trap end_in_others_lab EXIT
verdicts
on_windows
