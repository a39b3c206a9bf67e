"""What a description must refuse, made of a document that it takes."""
import copy


def objects(document, path="$"):
    """Each object in the document, with its place."""
    if isinstance(document, dict):
        yield path, document
    members = document.items() if isinstance(document, dict) else enumerate(document)
    for key, value in members:
        if isinstance(value, (dict, list)):
            yield from objects(value, f"{path}.{key}")


def alterations(document, may_lack, any_type=()):
    """Copies with one thing wrong each, and what it is; what is in `any_type` may be of any."""
    for number, (path, place) in enumerate(objects(document)):
        for key in [*place, None]:
            for change in ["added"] if key is None else ["lost", "retyped"]:
                copied = copy.deepcopy(document)
                target = list(objects(copied))[number][1]
                if change == "added":
                    target["unheardOf"] = 1
                elif change == "retyped" and key in any_type:
                    continue
                elif change == "retyped":
                    target[key] = 7 if isinstance(target[key], (str, dict)) else "7"
                elif key in may_lack:
                    continue
                else:
                    del target[key]
                yield f"{path}.{key} {change}", copied
