#!/usr/bin/env python3
"""Whether the page for people has every alert, with its severity and its patience: page.py PAGE FLEET"""

import re
import sys
from pathlib import Path


def in_rules(text: str) -> dict[str, tuple[str, str]]:
    alerts = {}
    for rule in re.split(r"\n      - (?=alert|record)", text)[1:]:
        if name := re.match(r"alert: (\w+)", rule):
            severity = re.search(r"labels: \{ severity: (\w+) \}", rule)
            assert severity or re.search(r"labels: [*&]level", rule), rule
            patience = re.search(r"\n        for: (\w+)", rule)
            alerts[name[1]] = (severity[1] if severity else "by level", patience[1] if patience else "")
    return alerts


def on_page(text: str) -> dict[str, tuple[str, str]]:
    rows = re.findall(r"^\| `(Raid\w+)` \| ([a-z ]+) \| (\w*) ?\| .+ \| .+ \|$", text, re.MULTILINE)
    return {name: (severity, patience) for name, severity, patience in rows}


def main(page: Path, fleet: Path) -> int:
    told, there = on_page(page.read_text()), in_rules((fleet / "alerts.rules.yml").read_text())
    wrong = [f"{name}: the page says {told.get(name)}, the rules {there.get(name)}"
             for name in sorted(told.keys() | there.keys()) if told.get(name) != there.get(name)]
    routes = set(re.findall(r"Raid\w+", (fleet / "alertmanager.yml").read_text())) - {"Raid", "RaidDrive"}
    wrong += [f"alertmanager.yml has {name}, which is no alert" for name in sorted(routes - there.keys())]
    print("\n".join(wrong) or f"{len(there)} alerts are on the page")
    return 1 if wrong or len(there) < 10 else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]), Path(sys.argv[2])))
