"""Validates what the end-to-end tests printed and configured against docs/schema: check.py RUNS.jsonl

RUNS.jsonl has an object for each run of tolmarctl --json, and for events (tests/e2e/Lab.cpp). Also: every schema has seen an output and
refuses it once a field is lost, retyped or added; the configuration's schema, its reader and its documentation agree.
"""
import json
import pathlib
import re
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
            "run": set(), "report": {"ms", "code", "cause", "restart"}, "bundle": set(),
            "events": {"title", "name", "status", "cause", "reason", "publisher", "thumbprint", "script", "exitCode", "ms",
                       "output", "waitMs"}}
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
        yield ("events" if "event" in document else document.get("command") or document["type"]), document


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
    for what, altered in alterations(document, may_lack):
        if not errors(name, altered):
            complaints.append(f"{name}: passes with {what}")


def check_configurations(runs):
    for run in runs:
        said = run["errors"] + run["output"].replace('\\"', '"')  # The doctor complains in its output.
        is_refused = run["exitStatus"] != 0 and 'key "' in said
        found = errors("configuration", run["configuration"])
        if bool(found) != is_refused:
            complaints.append(f"configuration of {run['arguments']}: {found[:3] or run['errors']}")


def bare(text):
    """A default without the signs that JSON and Markdown put around it."""
    return re.sub(r'[`"\\]', "", text)


def check_keys():
    """What the host reads, what the schema has and what is documented is the same. @return the mandatory ones."""
    schema = SCHEMAS["configuration"]
    entries = {key: entry for key, entry in schema["properties"].items() if key != "$schema"}
    source = pathlib.Path("reference_host/configuration/Configuration.cpp").read_text()
    read = set(re.findall(r'\breader(?:\.\w+\(|, )"(\w+)"', source))
    text = pathlib.Path("docs/operations.md").read_text().partition("| key |")[2].partition("\n\n")[0]
    rows = dict(re.findall(r"^\| `(\w+)` \| ([^|]*?) \|", text, re.M))
    for key in read ^ entries.keys():
        complaints.append(f"{key}: is not both read by the host and in the configuration's schema")
    for key in rows.keys() ^ entries.keys():
        complaints.append(f"{key}: is not both in docs/operations.md and in the configuration's schema")
    for key, row in rows.items():
        default = json.dumps(entries.get(key, {}).get("default", row))
        if (row == "mandatory") != (key in schema["required"]) or bare(row) != bare(default):
            complaints.append(f"{key}: {row} in docs/operations.md, {default} in the schema")
    return {key for key, row in rows.items() if row != "mandatory"}


def main():
    for schema in SCHEMAS.values():
        Draft202012Validator.check_schema(schema)
    runs = [json.loads(line) for line in pathlib.Path(sys.argv[1]).read_text().splitlines()]
    seen = check_outputs(runs)
    check_configurations(runs)
    seen["configuration"] = max((run["configuration"] for run in runs if run["exitStatus"] == 0), key=len)
    may_lack = {**MAY_LACK, "configuration": check_keys()}
    for kind, document in seen.items():
        name = kind.split()[0]
        check_alterations(name, document, may_lack[name])
    print("\n".join(complaints))
    print(f"{len(runs)} runs, {len(seen)} schemas, {len(complaints)} complaints")
    sys.exit(bool(complaints))


main()
