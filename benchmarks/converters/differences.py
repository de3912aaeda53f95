"""Usage: differences.py BEFORE AFTER

Prints what differs between two JSON files, in words for one cell of a table: "the same", or each kind of
difference once. What stands in the member `record` of the member `records` of AFTER is what is compared,
if there is one. Numbers are compared as doubles, objects without the order of their members.
"""

import json
import sys

MISSING = object()
KINDS = {bool: "truth values", int: "numbers", float: "numbers", type(None): "null"}


def kind(value):
    if value is MISSING:
        return "nothing"
    if isinstance(value, str):
        return "text"
    if isinstance(value, (list, dict)):
        return "arrays" if isinstance(value, list) else "objects"
    return KINDS[type(value)]


def compare(before, after, found):
    if isinstance(before, dict) and isinstance(after, dict):
        for key in before:
            compare(before[key], after.get(key, MISSING), found)
        if after.keys() - before.keys():
            found.add("more members")
    elif isinstance(before, list) and isinstance(after, list):
        for old, new in zip(before, after):
            compare(old, new, found)
        if len(before) != len(after):
            found.add("arrays of another length")
    elif isinstance(before, list) and len(before) < 2:
        found.add("[x] as x" if before else f"[] as {kind(after)}")
        if before:
            compare(before[0], after, found)
    elif kind(before) != kind(after):
        found.add(f"{kind(before)} as {kind(after)}")
    elif before != after:
        trimmed = isinstance(before, str) and before.strip() == after
        found.add(f"{kind(before)} {'trimmed' if trimmed else 'changed'}")


def load(name):
    with open(name, "rb") as file:
        return json.load(file)


differences = set()
original, result = (load(name) for name in sys.argv[1:])
if isinstance(result, dict) and "record" in (result.get("records") or {}):
    result = result["records"]["record"]
compare(original, result, differences)
print(", ".join(sorted(differences)) or "the same")
