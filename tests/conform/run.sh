#!/usr/bin/env bash
# ./dev conform passes on the simulator, and finds each deviation that is planted into it: tests/conform/run.sh, from
# scripts/test.sh. Prints a row a deviation.
source scripts/common.sh
folder=$BUILD/conform
export TOLMAR_SESSION_TOKEN=session-of-the-test

# offer FILES: the catalogue of a title with two modules, the second of which has these files (a JSON array).
offer() {
  mkdir -p "$folder"
  head -c 30000 /dev/urandom >"$folder/a.cab"
  echo 'exit 0' >"$folder/check-a.ps1"
  jq -n --arg token "$TOLMAR_SESSION_TOKEN" --argjson files "$1" '{sessionToken: $token, titles: [{l1FruPn: "T-A", name: "A",
    modules: [{moduleFruPn: "M-A", files: ["a.cab"]}, {moduleFruPn: "M-B", files: $files}]}]}' >"$folder/catalogue.json"
}

# serve OPTION…
serve() {
  local tries
  rm -f "$folder/port"
  "$BUILD/native/bin/cloudsim" --catalogue "$folder/catalogue.json" --port 0 --port-file "$folder/port" "$@" >/dev/null &
  cloud=$!
  # shellcheck disable=SC2064 # the number is known now
  trap "kill $cloud" EXIT
  for ((tries = 0; tries < 100; tries++)); do [ -s "$folder/port" ] && break; sleep 0.1; done
  url=http://localhost:$(cat "$folder/port")
}

# expect NAME RULES [OPTION…]: these rules fail (a regular expression for all of their names), and no other.
expect() {
  local name=$1 rules=$2 failed status=0
  shift 2
  bash scripts/conform.sh "$url" "$@" >"$folder/report" || status=$?
  failed=$(sed -n 's/^FAILED *\([^ ]*\).*/\1/p' "$folder/report" | paste -sd ' ')
  printf '%-40s %s\n' "$name" "${failed:-none fails}"
  [[ $failed =~ ^($rules)$ ]] && [ "$status" -eq "$([ -z "$failed" ] && echo 0 || echo 1)" ] && return 0
  cat "$folder/report"
  return 1
}

# planted NAME RULES FAULT
planted() {
  curl -sS --fail -X PUT -d "[$3]" "$url/faults" >/dev/null
  expect "$1" "$2"
}

offer '["check-a.ps1"]'
serve --url-seconds 2
expect "the simulator" "" --address-seconds 2
grep -q '^23 rules hold, 0 fail, 0 skipped' "$folder/report"
planted "a token that says no end" token.exchange '{"on":"token","reply":"{\"jwt\":\"a.e30.b\"}"}'
planted "a code that is a text" hasEntitlement '{"on":"hasEntitlement","reply":"{\"result\":{\"code\":\"0\",\"hasEntitlement\":true}}"}'
planted "a list that changes" entitlement.repeat '{"on":"entitlement","call":2,"reply":"{\"result\":{\"code\":0,\"swList\":[]}}"}'
planted "a report refused" "downloadProgress report.progress" '{"on":"downloadProgress","resultCode":5}'
planted "a token that is not looked at" request.token '{"on":"installProgress","call":1,"status":200}'
planted "other bytes than the list's CRC" file.get '{"on":"file:check-a.ps1","garbage":true}'
planted "a transfer that breaks off" file.get '{"on":"file:check-a.ps1","call":1,"dropAfter":3}'
planted "addresses that are over at once" "file.head file.get address.renewal" '{"on":"downloadRequest","expired":true}'
kill "$cloud"
offer '["check-a.ps1", "a.cab"]'
serve --url-seconds 300
expect "one name twice; addresses that stay" "downloadRequest address.expiry" --address-seconds 1
