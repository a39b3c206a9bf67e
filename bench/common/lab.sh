# The lab, for benchmarks. Sourced behind scripts/common.sh.
source scripts/lab.sh
source scripts/cloud.sh

# lab_begin LANE…: builds the lanes and starts the PC, which ends with the script.
lab_begin() {
  end_all_at_exit :
  bash scripts/deps.sh
  bash scripts/build.sh "$@"
  lab_up
}

# package OUT.cab FOLDER: the folder's files, signed by the lab's publisher.
package() {
  cab_make "$1.unsigned" "$2"
  cab_sign "$1.unsigned" "$1"
  rm "$1.unsigned"
}
