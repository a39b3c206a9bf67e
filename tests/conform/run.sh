#!/usr/bin/env bash
# ./dev conform passes on the simulator, and finds each deviation that is planted into it: tests/conform/run.sh, from
# scripts/test.sh. Prints a row a deviation.
source scripts/common.sh
source scripts/cloud.sh
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

# expect NAME RULES [OPTION…]: these rules fail (a regular expression for all of their names), and no other.
expect() {
  local name=$1 rules=$2 failed status=0
  shift 2
  bash scripts/conform.sh "$CLOUD_URL" "$@" >"$folder/report" || status=$?
  failed=$(sed -n 's/^FAILED *\([^ ]*\).*/\1/p' "$folder/report" | paste -sd ' ')
  printf '%-40s %s\n' "$name" "${failed:-none fails}"
  [[ $failed =~ ^($rules)$ ]] && [ "$status" -eq "$([ -z "$failed" ] && echo 0 || echo 1)" ] && return 0
  cat "$folder/report"
  return 1
}

# planted NAME RULES FAULT
planted() {
  curl -sS --fail -X PUT -d "[$3]" "$CLOUD_URL/faults" >/dev/null
  expect "$1" "$2"
}

trap cloud_stop EXIT
offer '["check-a.ps1"]'
cloud_start_plain "$folder" conform --url-seconds 2
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
planted "replies of other kinds" "downloadRequest downloadRequest.refusal address.form file.head file.get address.signature address.renewal" \
  '{"on":"downloadRequest","call":3,"reply":"[1]"},
   {"on":"downloadRequest","reply":"{\"result\":{\"code\":0,\"fileList\":[{\"name\":\"a\",\"crc\":\"00000000\",\"size\":1,\"downloadUrl\":\"//[\"}]}}"}'
cloud_stop
offer '[]'
cloud_start_plain "$folder" conform
expect "a module without files" ""
cloud_stop
offer '["check-a.ps1", "a.cab"]'
cloud_start_plain "$folder" conform --url-seconds 300
expect "one name twice; addresses that stay" "downloadRequest address.expiry" --address-seconds 1
