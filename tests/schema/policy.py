"""Looks at the Group Policy templates: policy.py FOLDER

Every key of the configuration has a policy, but for the secret and what is for labs; its value's kind and range are the
schema's; every text and every box that a policy names is there, and none is left over.
"""
import json
import pathlib
import re
import sys
import xml.etree.ElementTree as xml

NOT_FOR_POLICY = {"$schema", "sessionToken", "retryWaitScale"}
LARGEST_DECIMAL = 2 ** 32 - 1
folder = pathlib.Path(sys.argv[1])
keys = json.loads(pathlib.Path("docs/schema/configuration.json").read_text())["properties"]
admx = xml.parse(folder / "Tolmar.admx").getroot()
adml = xml.parse(folder / "en-US" / "Tolmar.adml").getroot()
complaints = []


def every(root, tag):
    return root.findall(".//{*}" + tag)


def ids(root, tag):
    found = [element.get("id") for element in every(root, tag)]
    complaints.extend(f"{tag} {name} is there twice" for name in set(found) if found.count(name) > 1)
    return set(found)


def kind(key):
    if "enum" in key:
        return "enum"
    if key["type"] == "integer":
        return "decimal" if key["maximum"] <= LARGEST_DECIMAL else "longDecimal"
    return {"string": "text", "array": "multiText", "boolean": "enabledValue"}[key["type"]]


def look_at(policy):
    name = policy.get("name")
    key = keys.get(name, {})
    element = next((part for part in policy.iter() if part.tag.split("}")[1] == (kind(key) if key else "")), None)
    if element is None:
        return complaints.append(f"{name}: not of the kind that its key is")
    if (policy if kind(key) == "enabledValue" else element).get("valueName") != name:
        complaints.append(f"{name}: its value has another name")
    if "minimum" in key and (element.get("minValue"), element.get("maxValue")) != (str(key["minimum"]), str(key["maximum"])):
        complaints.append(f"{name}: another range")
    if "enum" in key and [part.text for part in every(element, "string")] != key["enum"]:
        complaints.append(f"{name}: other words")
    boxes = {box.get("refId") for box in adml.findall(f".//{{*}}presentation[@id='{name}']/*")}
    if boxes != ({element.get("id")} if element.get("id") else set()):
        complaints.append(f"{name}: its boxes are {boxes}")


policies = every(admx, "policy")
for policy in policies:
    look_at(policy)
if (difference := {policy.get("name") for policy in policies} ^ (keys.keys() - NOT_FOR_POLICY)) or len(policies) != len(keys) - 3:
    complaints.append(f"keys without a policy, or the other way round: {difference}")
named = set(re.findall(r"\$\(string\.(\w+)\)", (folder / "Tolmar.admx").read_text()))
if named != ids(adml, "string"):
    complaints.append(f"texts that nobody has or nobody names: {named ^ ids(adml, 'string')}")
print("\n".join(complaints) or f"{len(policies)} policies")
sys.exit(bool(complaints))
