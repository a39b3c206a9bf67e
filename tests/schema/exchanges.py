"""Holds docs/protocol.yaml against what agent and simulator said to each other: exchanges.py EXCHANGES.jsonl

EXCHANGES.jsonl has the simulator's record of the end-to-end tests, an exchange a line (tests/e2e/Lab.cpp). Also: every
request has been seen, and the description refuses each once a field is lost, retyped or added.
"""
import json
import pathlib
import re
import sys
from urllib.parse import parse_qs

from alterations import alterations

sys.path.append("tools/conform")
from protocol import Protocol  # noqa: E402

PROTOCOL = Protocol("docs/protocol.yaml", strict=True)
# What a document may lack. Named here again, so that the description cannot lose what it requires unnoticed.
MAY_LACK = {"hasPreinstallSw", "preinstallSw", "name", "moduleList"}
# These replace the reply, or all of it but its beginning.
REPLACES_REPLY = {"garbage", "reply", "dropAfter", "status"}
complaints = []


def mended(raw):
    """The one exception: a part number with a quotation mark goes into the body as it stands, which is no JSON then."""
    escaped = re.sub(r'("(?:l1FruPn|moduleFruPn)":")(.*?)("[,}])',
                     lambda match: match[1] + match[2].replace('"', '\\"') + match[3], raw)
    return json.loads(escaped) if escaped != raw else None


def flaws(exchange):
    operation = PROTOCOL.operation(exchange["method"], exchange["path"])
    if operation is None:
        return ["has no description"]
    query = {key: values[0] for key, values in parse_qs(exchange["query"], keep_blank_values=True).items()}
    body = exchange.get("body")
    found = []
    if "rawBody" in exchange:
        body = mended(exchange["rawBody"])
        found += [] if body and exchange["status"] == 400 else ["body is not JSON"]
    if exchange["type"] == "token":
        body = {"sessionToken": "left out of the record"}
    if "fault" not in exchange and exchange["authorised"] != (exchange["status"] not in (401, 403, 404)):
        found.append(f"status {exchange['status']}, authorised: {exchange['authorised']}")
    found += PROTOCOL.flaws_of_request(operation, query, exchange.get("headers", {}), body)
    reply = exchange.get("reply")
    is_file = exchange["type"] == "file" and exchange["status"] in (200, 206, 416)
    if reply is None and not is_file and exchange.get("fault") not in REPLACES_REPLY:
        found.append("reply is not on record")
    if exchange.get("fault") == "status":
        return found
    return found + PROTOCOL.flaws_of_reply(operation, exchange["status"], exchange["replyHeaders"], reply)



def check_alterations(exchange):
    """Only where a description says what is in it: of a refusal it says nothing."""
    operation = PROTOCOL.operation(exchange["method"], exchange["path"])
    parts = [("body", lambda body: PROTOCOL.flaws_of_request(operation, {"deviceId": "PC"}, exchange["headers"], body)),
             ("reply", lambda body: PROTOCOL.flaws_of_reply(operation, 200, exchange["replyHeaders"], body))]
    for name, judge in parts:
        if name == "body" and exchange["type"] == "token":
            continue
        for what, altered in alterations(exchange[name], MAY_LACK):
            if not judge(altered):
                complaints.append(f"{exchange['type']}: {name} passes with {what}")


def main():
    exchanges = [json.loads(line) for line in pathlib.Path(sys.argv[1]).read_text().splitlines()]
    richest, seen = {}, set()
    for exchange in exchanges:
        found = flaws(exchange)
        if found:
            complaints.append(f"{exchange['method']} {exchange['path']}: {found[:3]}: {json.dumps(exchange)[:300]}")
            continue
        name = PROTOCOL.operation(exchange["method"], exchange["path"])["operationId"]
        if exchange["status"] in (200, 206) or exchange["path"] == "/":
            seen.add(name)
        if exchange["status"] == 200 and "reply" in exchange:
            richest[name] = max(richest.get(name, exchange), exchange, key=lambda one: len(json.dumps(one)))
    complaints.extend(f"{operation['operationId']}: was not seen" for _, _, operation in PROTOCOL.operations()
                      if operation["operationId"] not in seen)
    for exchange in richest.values():
        check_alterations(exchange)
    if not any("rawBody" in exchange for exchange in exchanges):
        complaints.append("a quotation mark in a part number was not seen")
    print("\n".join(complaints[:20]))
    print(f"{len(exchanges)} exchanges, {len(complaints)} complaints")
    sys.exit(bool(complaints))


main()
