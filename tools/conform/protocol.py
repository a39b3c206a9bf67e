"""docs/protocol.yaml as a judge of exchanges: do a request and its reply fit the description?"""
import pathlib
import re

import yaml
from jsonschema import Draft202012Validator, RefResolver


def closed(node, is_part=False):
    """A copy of a schema in which no object may have a member that has no description.

    is_part: it stands in allOf, if or then, whose owner is closed instead.
    """
    if isinstance(node, list):
        return [closed(element, is_part) for element in node]
    if not isinstance(node, dict):
        return node
    copied = {key: closed(value, key in ("allOf", "if", "then")) for key, value in node.items()}
    if not is_part and ("allOf" in node or "$ref" in node or node.get("type") == "object"):
        copied["unevaluatedProperties"] = False
    return copied


class Protocol:
    """The description; strict: nothing that it does not name may be in a reply either."""

    def __init__(self, path, strict=False):
        self.document = yaml.safe_load(pathlib.Path(path).read_text())
        if strict:  # A definition is closed where it is used: it may be a part there.
            schemas = self.document["components"]["schemas"]
            self.document = closed(self.document)
            self.document["components"]["schemas"] = {name: closed(schema, True) for name, schema in schemas.items()}
        self.resolver = RefResolver("", self.document)
        self.patterns = [(re.compile(re.sub(r"\\{\w+\\}", "[^/]+", re.escape(path))), method, operation)
                         for path, method, operation in self.operations()]

    def resolved(self, node):
        """What a component's reference stands for."""
        return self.resolver.resolve(node["$ref"])[1] if "$ref" in node else node

    def operations(self):
        """(path, method, operation) of each, parameters of its path included."""
        for path, item in self.document["paths"].items():
            for method in item.keys() & {"get", "head", "post"}:
                yield path, method, {**item[method],
                                     "parameters": item.get("parameters", []) + item[method].get("parameters", [])}

    def operation(self, method, path):
        """The operation that a request is for, or None."""
        return next((operation for pattern, verb, operation in self.patterns
                     if verb == method.lower() and pattern.fullmatch(path)), None)

    def flaws(self, schema, value, what):
        """What is wrong with a value, a text each."""
        return [f"{what}{error.json_path[1:]}: {error.message[:160]}" for error in
                Draft202012Validator(schema, resolver=self.resolver).iter_errors(value)]

    def flaws_of_values(self, entries, given, what):
        """entries: name to description of parameters or headers; given: name to text."""
        flaws = [f"{what} {name} is missing" for name, entry in entries.items()
                 if entry.get("required") and name not in given]
        for name in given.keys() & entries.keys():
            schema = self.resolved(entries[name]["schema"])
            value = int(given[name]) if schema.get("type") == "integer" and given[name].isdigit() else given[name]
            flaws += self.flaws(schema, value, f"{what} {name}")
        return flaws

    def flaws_of_request(self, operation, query, headers, body):
        """query, headers: name to text. body: JSON, None without one."""
        parameters = [self.resolved(parameter) for parameter in operation["parameters"]]
        flaws = []
        for place, given in (("query", query), ("header", headers)):
            entries = {parameter["name"]: parameter for parameter in parameters if parameter["in"] == place}
            flaws += self.flaws_of_values(entries, given, place)
        flaws += [f"query {name} has no description" for name in query.keys() -
                  {parameter["name"] for parameter in parameters if parameter["in"] == "query"}]
        if "requestBody" in operation:
            content = self.resolved(operation["requestBody"])["content"]
            media = headers.get("Content-Type", "").partition(";")[0]
            flaws += self.flaws(content[media]["schema"], body, "body") if media in content else [f"media type {media!r}"]
        return flaws

    def flaws_of_reply(self, operation, status, headers, body):
        """headers: name to text. body: JSON; None: it is not looked at."""
        responses = operation["responses"]
        reply = self.resolved(responses.get(str(status), responses.get("default", {})))
        flaws = self.flaws_of_values({name: self.resolved(header) for name, header in reply.get("headers", {}).items()},
                                     headers, "header")
        if body is not None:
            for content in reply.get("content", {}).values():
                flaws += self.flaws(content["schema"], body, "reply")
        return flaws
