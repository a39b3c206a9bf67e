# Shared by the scripts: where things stand and how steps are told. Sourced with the repository as working folder.
set -euo pipefail
ROOT=$PWD
BUILD=$ROOT/build
JOBS=$(nproc)

die() { echo "error: $*" >&2; exit 1; }

# step NAME LOG COMMAND...: runs quietly, one line on success, the end of the log on failure.
step() {
  local name=$1 log=$2 start=$SECONDS
  shift 2
  mkdir -p "$(dirname "$log")"
  if "$@" >"$log" 2>&1; then
    echo "  $name ($((SECONDS - start)) s)"
  else
    echo "  $name: failed, the end of $log:" >&2
    tail -n 40 "$log" >&2
    return 1
  fi
}

# is_stamped FILE TEXT: true when an earlier run left this very stamp.
is_stamped() { [ -f "$1" ] && [ "$(cat "$1")" = "$2" ]; }
stamp() { mkdir -p "$(dirname "$1")" && printf '%s\n' "$2" >"$1"; }
