# What the service offers to the benchmark: made once. Sourced by run.sh, behind bench/common.
OFFER=$RESULTS/offer
MODULES=40
CHECKS=256
FILES=(2 5 10 20 40)

# A package of a little more than 1 MB for each module, whose installation leaves a mark that its check looks for.
make_module() {
  local files=$OFFER/module.files mark="C:\\lab\\bench\\mark-$1"
  mkdir -p "$files"
  head -c 1000000 /dev/urandom >"$files/payload.bin"
  printf "Set-Content -Path '%s' -Value 'yes'\nexit 0\n" "$mark" >"$files/install.ps1"
  printf "if (Test-Path '%s') { exit 0 }\nexit 1\n" "$mark" >"$OFFER/m-$1.ps1"
  package "$OFFER/m-$1.cab" "$files"
}

# make_package NAME: 200 MB of what comes on standard input, signed.
make_package() {
  mkdir -p "$OFFER/$1.files"
  head -c 200000000 >"$OFFER/$1.files/payload"
  package "$OFFER/$1.cab" "$OFFER/$1.files"
  rm -r "$OFFER/$1.files"
}

make_all() {
  local number
  rm -rf "$OFFER"
  mkdir -p "$OFFER"
  for ((number = 1; number <= MODULES; number++)); do
    make_module "$number"
    head -c 100000 /dev/urandom >"$OFFER/data-$number.bin"
  done
  for ((number = 1; number <= CHECKS; number++)); do echo 'exit 0' >"$OFFER/$(printf 'S-%03d' "$number").ps1"; done
  seq -w 0 99999999 | make_package text
  make_package noise </dev/urandom
  head -c 500000000 /dev/urandom >"$OFFER/large.bin"
  make_catalogue >"$OFFER/catalogue.json"
}

# The titles of Titles.h.
make_catalogue() {
  jq -n --argjson modules "$MODULES" --argjson checks "$CHECKS" --arg files "${FILES[*]}" '
    def name(letter; number): "\(letter)-\("00\(number)"[-3:])";
    def title(letter; number; modules): {l1FruPn: name(letter; number), name: "Bench", modules: modules};
    def unit(number; files): {moduleFruPn: "M-\(number)", files: files};
    def one(letter; number; files): title(letter; number; [unit(1; files)]);
    [range(1; $modules + 1) | unit(.; ["m-\(.).cab", "m-\(.).ps1"])] as $packages |
    [range(1; 41) | title("T"; .; $packages)] +
    [range(1; $checks + 1) | one("S"; .; [name("S"; .) + ".ps1"])] +
    [$files | split(" ")[] | tonumber |
      one("F"; .; ["m-1.cab"] + [range(1; . - 1) | "data-\(.).bin"] + ["m-1.ps1"])] +
    [one("L"; 1; ["large.bin"])] | {sessionToken: "session-of-the-lab", titles: .}'
}

# make_offer: unless there is one by this script and the publisher's certificate.
make_offer() {
  local edition
  edition=$(cat bench/delivery/offer.sh "$PKI/cs.crt" | sha256sum)
  is_stamped "$OFFER/stamp" "$edition" && return 0
  step "packages" "$BUILD/log/bench-delivery.log" make_all
  stamp "$OFFER/stamp" "$edition"
}
