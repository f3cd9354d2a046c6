#!/usr/bin/env python3
"""Whether shards lose what they may lose and nothing else: shards.py MNGSRVRAID FLEET

What a shard drops is printed, and no rule asks for it; what it sends on and what is taken from it is printed or recorded.
Shards differ in a number that there is, and one that hears of nobody silences no other."""

import re
import subprocess
import sys
from pathlib import Path


def names_in(text: str) -> set[str]:
    return set(re.findall(r"\b(?:raid[_:][a-z_:]+|up)\b", text))


def main(command: str, fleet_folder: str) -> int:
    fleet = Path(fleet_folder)
    printed = names_in(subprocess.run([command, "--scenario", "large", "--format", "prometheus", "show", "--smart"], check=True,
                                      capture_output=True, text=True, timeout=300).stdout) | {"up"}
    rules = "".join(file.read_text() for file in sorted(fleet.glob("*.rules.yml")))
    recorded = set(re.findall(r"- record: (\S+)", rules))
    expressions = names_in("\n".join(line for line in rules.splitlines() if not line.strip().startswith(("#", "- record:"))))
    shard = (fleet / "prometheus-shard.yml").read_text()
    above = (fleet / "prometheus-above.yml").read_text()
    chosen = {action: regex for regex, action in
              re.findall(r"source_labels: \[__name__\]\n +regex: '(.*)'\n +action: (drop|keep)", shard)}
    wrong = []
    dropped = {name for name in printed if re.fullmatch(chosen["drop"], name)}
    if len(dropped) < 4:
        wrong.append(f"nothing much is dropped: {sorted(dropped)}")
    if asked := dropped & expressions:
        wrong.append(f"rules ask for what is dropped: {sorted(asked)}")
    for what, patterns in (("sent on", chosen["keep"].split("|")),
                           ("taken from shards", re.findall(r"raid:(?:\([a-z_|]+\):\.\*|[a-z:_]+)", above.split("match[]")[1]))):
        for pattern in patterns:
            for one in re.sub(r"^(.*)\((.*)\)(.*)$", lambda found: "\n".join(
                    found[1] + each + found[3] for each in found[2].split("|")), pattern).splitlines():
                if not any(re.fullmatch(one, name) for name in printed | recorded):
                    wrong.append(f"{one} is {what}, and is not there")
    which = re.findall(r"source_labels: \[alertname, shard\]\n +regex: '(.*)'\n +target_label: (\w+)", shard)
    told = [rule for rule in (fleet / "alertmanager.yml").read_text().split("- source_matchers") if '"RaidNobodyIsHeardOf"\']' in rule]
    if len(which) != 1 or len(told) != 1 or f"equal: [{which[0][1]}]" not in told[0]:
        wrong.append("a shard that hears of nobody silences the others")
    else:
        for name in re.findall(r"Raid\w+", told[0].replace("|", " ")) + ["RaidDriveNotWell"]:
            found = re.fullmatch(which[0][0], f"{name};7")
            if (found[1] if found else "") != ("" if name == "RaidDriveNotWell" else "7"):
                wrong.append(f"{name} says {'nothing' if not found else found[1]} of its shard")
    modulus, kept = (int(re.findall(pattern, shard)[0]) for pattern in (r"modulus: (\d+)", r"__tmp_shard\]\n +regex: \"(\d+)\""))
    if kept >= modulus or f'shard: "{kept}"' not in shard or above.count("shard") < modulus:
        wrong.append(f"shard {kept} of {modulus}")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
