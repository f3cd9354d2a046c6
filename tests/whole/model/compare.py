"""Compares what the module did for a folder of cases with what the model says.

    python3 compare.py CASES OBSERVATIONS [--show N]

OBSERVATIONS holds one file <case>.json for every case folder (see README.md). A case without an
observation is a difference. The exit status is 0 only when all cases agree.
"""

import argparse
import dataclasses
import json
import os
import re
import sys

import casefile
import model

PLACEHOLDERS = {
    "<DIR>": r"[^\n]*",
    "<TID>": r"[0-9a-f]{8,}",
    "<WHAT>": r"(?:.|\n)*",
    "<DLERROR>": r"(?:.|\n)*",
    "<HR>": r"[89a-f][0-9a-f]{7}",
}

REQUIRED = ("items", "runs", "pauses", "trace", "return_value", "hr", "indicates", "set_status", "created",
            "deleted",
            "files_left")
OPTIONAL = ("creations", "loads", "unloads", "xml_stored")


def matches(expected, seen):
    """Whole-text comparison in which placeholders of `expected` stand for their kind."""
    if expected == seen or not isinstance(expected, str) or "<" not in expected:
        return expected == seen
    parts = re.split("(" + "|".join(map(re.escape, PLACEHOLDERS)) + ")", expected)
    pattern = "".join(PLACEHOLDERS.get(part) or re.escape(part) for part in parts)
    return isinstance(seen, str) and re.fullmatch(pattern, seen) is not None


def same(expected, seen):
    if isinstance(expected, (list, tuple)):
        return (isinstance(seen, (list, tuple)) and len(expected) == len(seen)
                and all(same(left, right) for left, right in zip(expected, seen)))
    return matches(expected, seen)


def as_observation(outcome):
    """An outcome in the form of an observation, placeholders included."""
    return json.loads(json.dumps(dataclasses.asdict(outcome)))


def first_difference(name, expected, seen):
    if not isinstance(expected, list) or not isinstance(seen, list):
        return f"{name}: expected {expected!r}, seen {seen!r}"
    for at in range(max(len(expected), len(seen))):
        left = expected[at] if at < len(expected) else "nothing"
        right = seen[at] if at < len(seen) else "nothing"
        if not same(left, right):
            return f"{name}[{at}]: expected {left!r}, seen {right!r}"
    return f"{name}: differs"


def differences(case, seen):
    if "base_status" in seen:
        case = dataclasses.replace(case, base_status=seen["base_status"])
    expected = as_observation(model.predict(case, seen.get("first_counter", 0)))
    found = []
    for name in REQUIRED + OPTIONAL:
        if name not in seen:
            if name in REQUIRED:
                found.append(f"{name}: not observed")
        elif not same(expected[name], seen[name]):
            found.append(first_difference(name, expected[name], seen[name]))
    return found + [f"fault: {text}" for text in seen.get("faults", ())]


def compare(cases, observations, show):
    """Prints what differs, for the first `show` cases; whether all agree."""
    names = sorted(os.listdir(cases))
    differing = 0
    for name in names:
        case = casefile.load(os.path.join(cases, name))
        try:
            with open(os.path.join(observations, name + ".json"), encoding="utf-8") as file:
                found = differences(case, json.load(file))
        except (OSError, ValueError) as error:
            found = [f"no observation: {error}"]
        if found:
            differing += 1
            if differing <= show:
                print(name, *found, sep="\n    ")
    print(f"{len(names)} cases, {differing} differ")
    return bool(names) and not differing


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("cases")
    parser.add_argument("observations")
    parser.add_argument("--show", type=int, default=20, help="cases whose differences are printed")
    arguments = parser.parse_args()
    return 0 if compare(arguments.cases, arguments.observations, arguments.show) else 1


if __name__ == "__main__":
    sys.exit(main())
