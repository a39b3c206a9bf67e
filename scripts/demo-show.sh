# How the demo shows what came out: each reads standard input. Sourced by demo.sh.

show_entitled() {
  jq -r '"  code \(.code), entitled: \(.hasEntitlement)"'
}

# show_titles [preinstall]: the titles of an answer, or those for set-up only.
show_titles() {
  local document title name status preinstall wanted=${1:-all}
  document=$(cat)
  jq -r '"  code \(.code)"' <<<"$document"
  jq -r --arg wanted "$wanted" '.result.swList[]? | select($wanted == "all" or .preinstallSw) | [.l1FruPn, .name, .status // "", if .preinstallSw then "pre-install" else "" end] |
    join("|")' <<<"$document" |
    while IFS='|' read -r title name status preinstall; do
      printf '  %-12s %-18s %-14s %s\n' "$title" "$name" "$status" "$preinstall" | sed 's/ *$//'
    done
}

show_progress() { sed -u 's/^/  /'; }

show_value() { tr -d '\r' | grep -w Entitled | sed 's/^ */  /'; }

# show_received FROM TO: how much of what came in all; and in which order, equal neighbours drawn together, for the
# records from number FROM (0 is the first) to before TO.
show_received() {
  jq -r --argjson from "$1" --argjson to "$2" '
    def drawn: reduce .[] as $t ([]; if length > 0 and .[-1].t == $t then .[-1].n += 1 else . + [{t: $t, n: 1}] end);
    def times: if .n > 1 then "\(.t) x\(.n)" else .t end;
    [.[] | if (.path | test("/files/")) then "file \(.method)" else (.type // .path) end] |
    (group_by(.) | map({t: .[0], n: length} | times) | "all: " + join(", ")),
    (.[$from:$to] | drawn | map(times) | "during install: " + join(" > "))' |
    fold -s -w 110 | sed 's/^\(all\|during\)/  &/; t; s/^/    /'
}

# show_log COUNT: the last records of the agent's log.
show_log() {
  grep '^[0-9]' "$TOLMAR_DATA/Log/TolmarAgent.log" | tail -n "$1" | tr -d '\r' | cut -c 1-140 | sed 's/^/  /'
}

# What helps to find out why a step failed.
show_failure() {
  {
    echo "demo: failed at: $STEP"
    show_log 25 2>/dev/null || true
    grep ' E ' "$TOLMAR_DATA/Log/ZLT.log" 2>/dev/null | tail -n 5 | cut -c 1-200 | sed 's/^/  /' || true
    if [ -s "$LAB_C/windows/temp/scriptrunner.log" ]; then
      echo "  refused or failed scripts:"
      sed 's/^/  /' "$LAB_C/windows/temp/scriptrunner.log"
    fi
  } >&2
}
