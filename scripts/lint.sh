#!/usr/bin/env bash
# One static check of the sources: scripts/lint.sh CHECK. Behind the lanes that scripts/build.sh makes.
#   tidy            clang-tidy, what builds natively    cppcheck    the product, and what it is told to overlook
#   tidy-windows    clang-tidy, what only Windows has   shellcheck  the scripts
# clang-tidy looks again at a file that passed only when it, a header of the repository that it reads or the configuration
# changes; cppcheck keeps results of its own.
source scripts/common.sh
PRODUCT=(agent c_interface catalogue service install progress host reference_host tools bench examples)
export TIDY=$BUILD/tidy

# sources LANE: the product's sources that the lane compiles, one a line.
sources() {
  local folders
  folders=$(IFS='|' && echo "${PRODUCT[*]}")
  jq -r --arg root "$ROOT/" '.[].file | ltrimstr($root)' "$BUILD/$1/compile_commands.json" |
    grep -E "^($folders)/.*\.(c|cpp)$" | sort -u
}

# keyed: each source with a key over all that it reads before it.
keyed() {
  perl -MDigest::SHA=sha256_hex -ne '
    sub slurp { open my $in, "<", $_[0] or die "$_[0]: $!\n"; local $/; return scalar <$in>; }
    sub gather {
      my ($file, $seen) = @_;
      gather($_, $seen) for $seen->{$file}++ ? () : grep { -f } slurp($file) =~ /^#include "(.+)"/mg;
    }
    chomp;
    my %seen = (".clang-tidy", 1);
    gather($_, \%seen);
    print sha256_hex(join "\0", $_, map { slurp($_) } sort keys %seen), " $_\n"'
}

# tidy_one LANE KEY FILE
tidy_one() {
  [ ! -f "$TIDY/$2" ] || return 0
  clang-tidy --quiet -p "$TIDY/$1" "$3" 2>/dev/null && touch "$TIDY/$2"
}
export -f tidy_one

# tidy LANE: the files that standard input names. A source that several programs compile is looked at once.
tidy() {
  mkdir -p "$TIDY/$1"
  jq 'unique_by(.file)' "$BUILD/$1/compile_commands.json" >"$TIDY/$1/compile_commands.json"
  keyed | xargs -P "$JOBS" -L 1 bash -c "tidy_one $1 \$0 \$1"
}

cpp_check() {
  mkdir -p "$BUILD/cppcheck"
  cppcheck --quiet --std=c++20 --language=c++ --platform=win64 --library=windows -I . -DTOLMAR_API= -DZLT_API= \
    --enable=warning,style,performance,portability --suppressions-list=scripts/cppcheck.txt --error-exitcode=1 \
    --template='{file}:{line}: {id}: {message}' -j "$JOBS" --cppcheck-build-dir="$BUILD/cppcheck" "${PRODUCT[@]}"
}

case "${1:-}" in
  tidy) sources native | tidy native ;;
  tidy-windows) comm -13 <(sources native) <(sources clang-windows) | tidy clang-windows ;;
  cppcheck) cpp_check ;;
  shellcheck) git ls-files -co --exclude-standard -z dev .ci/run '*.sh' | xargs -0 shellcheck --severity=info ;;
  *) die "usage: scripts/lint.sh tidy|tidy-windows|cppcheck|shellcheck" ;;
esac
