#!/usr/bin/env bash
# Does a cloud service work with the agent? ./dev conform URL [OPTION…] (--help); TOLMAR_SESSION_TOKEN holds the session
# token. A report with a line a rule; status 1 when one fails.
source scripts/common.sh
bash scripts/deps.sh --only python3-jsonschema python3-yaml
exec /usr/bin/python3 tools/conform/conform.py "$@"
