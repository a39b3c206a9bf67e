#!/usr/bin/env bash
# Group Policy templates of the configuration's schema: scripts/policy.sh FOLDER makes Tolmar.admx and en-US/Tolmar.adml
# there. Administrators copy them into their PolicyDefinitions.
source scripts/common.sh

# template WANT FILE
template() {
  jq -r --arg want "$1" -f installer/policy.jq docs/schema/configuration.json >"$2"
}

mkdir -p "${1:?usage: scripts/policy.sh FOLDER}/en-US"
template admx "$1/Tolmar.admx"
template adml "$1/en-US/Tolmar.adml"
