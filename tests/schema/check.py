"""Validates what the end-to-end tests printed and configured against docs/schema: check.py RUNS.jsonl

RUNS.jsonl has an object for each run of tolmarctl --json, and for events (tests/e2e/Lab.cpp). Also: every schema has seen an output and
refuses it once a field is lost, retyped or added. That the configuration's schema has the host's keys says KeysTest.
"""
import json
import pathlib
import sys

from jsonschema import Draft202012Validator, RefResolver

from alterations import alterations

SCHEMAS = {path.stem: json.loads(path.read_text()) for path in pathlib.Path("docs/schema").glob("*.json")}
STORE = {schema["$id"]: schema for schema in SCHEMAS.values()}
TITLE = {"name", "preinstallSw"}
# What an output may lack. Named here again, so that a schema cannot lose what it requires unnoticed.
MAY_LACK = {"list": TITLE, "status": TITLE | {"progress"}, "configure": TITLE | {"progress"},
            "install": TITLE | {"restart", "cause", "why", "installerOutput"}, "progress": {"bytesPerSecond", "secondsLeft"},
            "plan": {"lease", "refusal"}, "doctor": set(), "explain": set(), "files": set(), "entitled": set(),
            "run": set(), "config-show": set(), "config-validate": set(), "config-set-token": set(), "service-run": set(),
            "service-status": {"nextRun", "lastRun", "ended", "cause", "tried", "again", "code", "why", "lease"},
            "report": {"ms", "code", "cause", "restart"}, "bundle": set(),
            "lint": set(), "verify": set(), "test": set(),
            "events": {"title", "name", "status", "cause", "reason", "publisher", "thumbprint", "script", "exitCode", "ms",
                       "output", "waitMs"}}
# Of which no type is wrong.
ANY_TYPE = {"config-show": {"value"}}
complaints = []


def errors(name, document):
    schema = SCHEMAS[name]
    return [f"{error.json_path}: {error.message[:200]}" for error in
            Draft202012Validator(schema, resolver=RefResolver("", schema, STORE)).iter_errors(document)]


def documents(run):
    """Name of the schema and document of each line that the run printed."""
    if not run["output"] and run["exitStatus"] not in (0, 1):
        return
    for line in run["output"].splitlines():
        document = json.loads(line)
        yield ("events" if "event" in document else document.get("command", document.get("type")).replace(" ", "-")), document


def richness(document):
    """Of a success, more is altered than of a failure, which may lack nearly everything."""
    return document.get("code", 0) == 0, len(json.dumps(document))


def check_outputs(runs):
    seen = {}
    for run in runs:
        for name, document in documents(run):
            found = errors(name, document) if name in SCHEMAS else ["there is no schema of it"]
            is_odd = "not as agreed" in run["errors"]
            if bool(found) != is_odd:
                complaints.append(f"{run['arguments']}: {found[:3] or 'is valid'}: {json.dumps(document)[:300]}")
            elif not found:
                kind = f"{name} {document['event']}" if name == "events" else name
                seen[kind] = max(seen.get(kind, {}), document, key=richness)
    for name in SCHEMAS.keys() - {kind.split()[0] for kind in seen} - {"common", "configuration"}:
        complaints.append(f"{name}: no output was seen")
    return seen


def check_alterations(name, document, may_lack):
    for what, altered in alterations(document, may_lack, ANY_TYPE.get(name, ())):
        if not errors(name, altered):
            complaints.append(f"{name}: passes with {what}")


def check_configurations(runs):
    for run in [run for run in runs if "configuration" in run]:  # Other programs than tolmarctl have none.
        said = run["errors"] + run["output"].replace('\\"', '"')  # The doctor complains in its output.
        is_refused = run["exitStatus"] != 0 and 'key "' in said
        found = errors("configuration", run["configuration"])
        if bool(found) != is_refused:
            complaints.append(f"configuration of {run['arguments']}: {found[:3] or run['errors']}")


def main():
    for schema in SCHEMAS.values():
        Draft202012Validator.check_schema(schema)
    runs = [json.loads(line) for line in pathlib.Path(sys.argv[1]).read_text().splitlines()]
    seen = check_outputs(runs)
    check_configurations(runs)
    seen["configuration"] = max((run["configuration"] for run in runs if run["exitStatus"] == 0 and "configuration" in run),
                                key=len)
    schema = SCHEMAS["configuration"]
    may_lack = {**MAY_LACK, "configuration": schema["properties"].keys() - set(schema["required"])}
    for kind, document in seen.items():
        name = kind.split()[0]
        check_alterations(name, document, may_lack[name])
    print("\n".join(complaints))
    print(f"{len(runs)} runs, {len(seen)} schemas, {len(complaints)} complaints")
    sys.exit(bool(complaints))


main()
