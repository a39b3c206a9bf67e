#!/usr/bin/env bash
# Applies the small faults of tests/mutations.txt to a copy of the sources, one at a time, and reports which of them
# the agent's tests do not see: ./dev mutate [--only N]. Status 1: a fault lives, does not build or no longer fits.
source scripts/common.sh
WORK=$BUILD/mutate
LIST=tests/mutations.txt
PARTS=(CMakeLists.txt VERSION cmake agent catalogue service install progress host reference_host tests/unit tests/posix)
LIMIT=30 # seconds that the tests may take: many times what they need
only=
case "${1:-}" in
  '') ;;
  --only) [[ ${2:-} =~ ^[1-9][0-9]*$ ]] || die "--only takes a number above 0"; only=$2 ;;
  *) die "usage: ./dev mutate [--only N]" ;;
esac

# Only what differs is copied, as new: the builds compile that and nothing else.
copy_sources() {
  local wanted file
  wanted=$(git ls-files -co --exclude-standard -- "${PARTS[@]}" | sort | while read -r file; do ls "$file" 2>/dev/null; done)
  mkdir -p "$WORK/tree" "$WORK/log"
  (cd "$WORK/tree" && find . -type f -printf '%P\n' | sort | comm -23 - <(echo "$wanted") | xargs -r rm --)
  while read -r file; do
    cmp -s "$file" "$WORK/tree/$file" || install -D -m 644 "$file" "$WORK/tree/$file"
  done <<<"$wanted"
}

# mutant N: writes the changed file into the copy. Prints lane, file, what and why, with tabs between.
mutant() {
  perl -CSD -0777 - "$LIST" "$1" "$WORK/tree" <<'PERL'
my ($list, $number, $tree) = @ARGV;
sub slurp { open my $in, '<', $_[0] or die "$_[0]: $!\n"; return scalar <$in>; }
my (undef, @blocks) = split /^@/m, slurp($list);
my $block = $blocks[$number - 1];
my ($lane, $file, $what) = $block =~ /^(\w*) (\S+) \| (.*)$/m or die "unreadable: $block";
my $old = join '\s*\n\s*', map { quotemeta } $block =~ /^- *(.*?) *$/mg;
my $new = join "\n", $block =~ /^\+ *(.*)$/mg;
my ($why) = $block =~ /^= *(.*)$/m;
my $text = slurp($file);
my $fits = () = $text =~ /$old/g;
print join("\t", $lane || 'plain', $file, $what, $why // ''), "\n";
exit 3 if $old eq '' or $fits != 1;
$text =~ s/$old/$new/;
open my $out, '>', "$tree/$file" or die "$file: $!\n";
print $out $text;
PERL
}

# build LANE, run LANE: "plain", or "tsan" for what only the thread sanitizer can see.
build() {
  local flags=-O0
  [ "$1" = plain ] || flags="-O1 -g1 -fsanitize=thread"
  [ -f "$WORK/$1/build.ninja" ] ||
    cmake -S "$WORK/tree" -B "$WORK/$1" -G Ninja -DCMAKE_BUILD_TYPE=None "-DCMAKE_CXX_FLAGS=$flags" || return 1
  cmake --build "$WORK/$1" --target agent_unit_tests -j "${MUTATE_JOBS:-$JOBS}"
}

# A fault can make the tests wait for ever or fill the memory. timeout kills the whole group that it makes. Whether the
# thread sanitizer meets a race is a matter of luck: it gets several chances.
run() (
  local command=("$WORK/$1/bin/agent_unit_tests" --gtest_brief=1 --gtest_fail_fast) times=8 i
  [ "$1" = plain ] && times=1 && ulimit -v 4000000 || command=(env TSAN_OPTIONS=halt_on_error=1 setarch -R "${command[@]}")
  for ((i = 0; i < times; ++i)); do timeout -s KILL "$LIMIT" "${command[@]}" || exit; done
)

# judge N LANE WHY: builds and runs the mutant, prints the verdict.
judge() {
  local log=$WORK/log/$1 status=0 seen
  build "$2" >"$log.build" 2>&1 || { echo "did not build"; return; }
  run "$2" >"$log.run" 2>&1 </dev/null || status=$?
  case $status in
    0) echo "survived${3:+, explained: $3}" ;;
    137) echo "killed: hung" ;;
    *)
      seen=$(grep -oE 'FAILED  \] [A-Za-z]+\.[A-Za-z]+|ThreadSanitizer: [a-z -]*[a-z]' "$log.run" | head -n 1)
      seen=${seen#*] }
      echo "killed: ${seen:-crash, status $status}" ;;
  esac
}

copy_sources
for lane in plain $(sed -n 's/^@\([a-z][a-z]*\) .*/\1/p' "$LIST" | sort -u); do
  step "building $lane" "$WORK/log/build-$lane" build "$lane"
  step "tests without a fault, $lane" "$WORK/log/run-$lane" run "$lane"
done
killed=0 survived=0 explained=0 broken=0 before=
trap '[ -z "$before" ] || cp "$before" "$WORK/tree/$before"' EXIT
for number in ${only:-$(seq "$(grep -c '^@' "$LIST")")}; do
  status=0
  row=$(mutant "$number") || status=$?
  IFS=$'\t' read -r lane file what why <<<"$row"
  [ -z "$before" ] || [ "$before" = "$file" ] || cp "$before" "$WORK/tree/$before"
  before=$file
  [ "$status" -eq 0 ] && verdict=$(judge "$number" "$lane" "$why") || verdict="fits no place or several"
  case "$verdict" in
    killed*) killed=$((killed + 1)) ;;
    survived*) survived=$((survived + 1)) && [ -z "$why" ] || explained=$((explained + 1)) ;;
    *) broken=$((broken + 1)) ;;
  esac
  printf '%4d %s: %s\n       %s\n' "$number" "$file" "$what" "$verdict"
done
echo "mutants: $killed killed, $survived survived ($explained explained), $broken not tried"
[ $((survived - explained + broken)) -eq 0 ]
