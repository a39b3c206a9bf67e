# The simulator of the cloud service, for scripts. Sourced behind scripts/common.sh, with TLS and a device behind
# scripts/lab.sh.
NATIVE_BIN=${NATIVE_BIN:-$BUILD/native/bin}
CLOUD=
CLOUD_URL=

# cloud_start FOLDER REALM [OPTION…]: serves FOLDER/catalogue.json over TLS on a free port; CLOUD_URL tells where. What it
# has to say goes to FOLDER/cloudsim.log.
cloud_start() {
  cloud_start_plain "$@" --tls-cert "$PKI/tls.crt" --tls-key "$PKI/tls.key"
}

# cloud_start_plain FOLDER REALM [OPTION…]: the same without TLS.
cloud_start_plain() {
  local folder=$1 tries
  rm -f "$folder/port"
  "$NATIVE_BIN/cloudsim" --catalogue "$folder/catalogue.json" --port 0 --port-file "$folder/port" --realm "$2" "${@:3}" \
    >"$folder/cloudsim.log" 2>&1 &
  CLOUD=$!
  for ((tries = 0; tries < 100; tries++)); do
    # The address is announced behind the port.
    if [ -s "$folder/port" ] && CLOUD_URL=$(sed -n 's/^cloudsim: listening on //p' "$folder/cloudsim.log") && [ -n "$CLOUD_URL" ]; then
      return 0
    fi
    kill -0 "$CLOUD" 2>/dev/null || break
    sleep 0.1
  done
  cat "$folder/cloudsim.log" >&2
  return 1
}

# cloud_stop: answers that it is still sitting on need not be waited for.
cloud_stop() {
  [ -n "$CLOUD" ] || return 0
  kill -KILL "$CLOUD" 2>/dev/null || true
  wait "$CLOUD" 2>/dev/null || true
  CLOUD=
}

# cloud_received: what came to it over TLS, as JSON.
cloud_received() {
  curl -sS --fail --max-time 30 --cacert "$PKI/ca.crt" "$CLOUD_URL/received"
}

# end_all_at_exit COMMAND: however the script ends, the simulator and the PC end with it; a failure runs COMMAND before
# (":" does nothing).
end_all_at_exit() {
  # shellcheck disable=SC2064 # the command is known now
  trap "end_all $1" EXIT
  trap 'exit 130' INT TERM
}
end_all() {
  local status=$?
  trap - EXIT
  [ "$status" -eq 0 ] || "$1"
  cloud_stop
  lab_down
  exit "$status"
}

# end_in_others_lab: the simulator ends; the PC only when no script above this one has begun it.
OTHERS_LAB=${LAB_RUNNING:-}
end_in_others_lab() {
  cloud_stop
  [ -n "$OTHERS_LAB" ] || lab_down
}

# cloud_configuration NAME REALM [FILTER]: programs that are started from here on find a device of this cloud in the lab's
# C:\lab\NAME: the host's configuration, changed by a filter of jq, its downloads and logs.
cloud_configuration() {
  local folder="C:\\lab\\${1//\//\\}"
  mkdir -p "$LAB_C/lab/$1"
  jq -n --arg url "$CLOUD_URL" --arg realm "$2" --arg folder "$folder" '{baseUrl: $url, tokenUrl: "\($url)/token",
    realm: $realm, deviceId: "PC-0001", sessionToken: "session-of-the-lab", downloadFolder: "\($folder)\\download",
    logFolder: "\($folder)\\log"}' | jq "${3:-.}" >"$LAB_C/lab/$1/host.json"
  export TOLMAR_HOST_CONFIG="$folder\\host.json"
}

# cloud_device NAME REALM [FILTER]: the same, a fresh one.
cloud_device() {
  rm -rf "$LAB_C/lab/$1"
  cloud_configuration "$@"
}
