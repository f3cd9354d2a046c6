#!/usr/bin/env python3
"""Whether every series and label that rules and dashboards ask for is there: names.py MNGSRVRAID MNGSRVRAIDD SCENARIOS FLEET

What is there is what the program prints of its scenarios, what a service prints that watches a drive being pulled, and
what the recording rules make of it. Each must also be used by somebody, or it need not be printed."""

import json
import re
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.request
from pathlib import Path
from typing import Callable, Iterator

import series

WORDS = {"and", "or", "unless", "on", "ignoring", "by", "without", "group_left", "group_right", "offset", "bool"}
OF_PROMETHEUS = {"up": {"instance", "job"}, "ALERTS": set(),
                 "prometheus_rule_evaluation_failures_total": {"rule_group", "instance", "job"},
                 "prometheus_rule_group_iterations_missed_total": {"rule_group", "instance", "job"}}
OF_ODD_REPORTS = {"controller_copy"}  # where a controller is told twice, which no scenario does
TARGET = {"instance", "job"}
TOKEN = re.compile(r'"(?:[^"\\]|\\.)*"|[a-zA-Z_:][a-zA-Z0-9_:]*|[0-9.]+[a-z]*|\S')


def asked(expression: str) -> tuple[dict[str, set[str]], set[str]]:
    """Which series an expression asks for, with the labels that it selects by, and the labels it groups by."""
    tokens = TOKEN.findall(expression)
    series_asked: dict[str, set[str]] = {}
    grouped: set[str] = set()
    at = 0
    while at < len(tokens):
        token, following = tokens[at], tokens[at + 1] if at + 1 < len(tokens) else ""
        at += 1
        if token == "count_values":
            grouped.add(tokens[tokens.index('"level"', at)].strip('"'))
        elif token == "[":
            at = tokens.index("]", at) + 1
        elif token in {"by", "on", "ignoring", "group_left"} and following == "(":
            end = tokens.index(")", at)
            grouped |= set(tokens[at + 1:end]) - {","}
            at = end + 1
        elif re.match(r"[a-zA-Z_:]", token) and following not in {"(", "by"} and token not in WORDS:
            labels = series_asked.setdefault(token, set())
            if following == "{":
                end = tokens.index("}", at)
                labels |= {tokens[i - 1] for i in range(at, end) if tokens[i] in {"=", "!"} and re.match("[a-z_]", tokens[i - 1])}
                at = end + 1
    return series_asked, grouped


def in_rules(text: str) -> Iterator[tuple[str, str, str]]:
    """Of each rule: what it records, its expression, and its texts for people."""
    for rule in re.split(r"\n      - (?=record|alert)", text)[1:]:
        name = rule.split(":", 1)[1].split("\n")[0].strip()
        found = re.search(r"expr: (\|\n((?: {10}.*\n|\n)+)|.*\n?)", rule + "\n")
        assert found, rule
        yield (name if rule.startswith("record") else ""), found[2] or found[1].strip().strip("'"), rule


def in_dashboard(text: str) -> Iterator[tuple[str, str]]:
    """Expressions and legends; a variable's values come from a series, too."""
    dashboard = json.loads(text)
    for panel in dashboard["panels"]:
        for target in panel["targets"]:
            yield target["expr"], target.get("legendFormat", "")
    for variable in dashboard["templating"]["list"]:
        if variable["type"] == "query":
            found = re.fullmatch(r"label_values\((.*), ([a-z_]+)\)", variable["query"]["query"])
            assert found, variable
            yield f"count by ({found[2]}) ({found[1]})", ""


class Known:
    """The series that are there, with all labels that any of them has."""

    def __init__(self) -> None:
        self.labels: dict[str, set[str]] = {name: set(labels) for name, labels in OF_PROMETHEUS.items()}
        self.used: set[str] = set()
        self.wrong: list[str] = []

    def add(self, text: str) -> None:
        for sample in series.read(text):
            self.labels.setdefault(sample.name, set(TARGET)).update(sample.labels)

    def check(self, where: str, expression: str, words: str = "") -> set[str]:
        """All labels that the result may have."""
        series_asked, grouped = asked(expression)
        reachable = set(grouped)
        for name, labels in series_asked.items():
            if name not in self.labels:
                self.wrong.append(f"{where}: there is no {name}")
                continue
            self.used.add(name)
            reachable |= self.labels[name]
            self.wrong += [f"{where}: {name} has no label {label}" for label in sorted(labels - self.labels[name])]
        there = set().union(*(self.labels.get(name, set()) for name in series_asked)) | OF_ODD_REPORTS | {"level"}
        self.wrong += [f"{where}: nothing has the label {label}" for label in sorted(grouped - there)]
        shown = set(re.findall(r"\{\{([a-z_]+)\}\}|\$labels\.([a-z_]+)", words))
        shown = {name for names in shown for name in names if name}
        self.wrong += [f"{where}: there is no label {label} to show" for label in sorted(shown - reachable)]
        return reachable


def wait_for(what: Callable[[], str], holds: Callable[[str], bool]) -> str:
    deadline = time.monotonic() + 120
    while not holds(text := what()):
        if time.monotonic() > deadline:
            raise TimeoutError(text[-2000:])
        time.sleep(0.05)
    return text


def of_a_service(program: str, folder: Path) -> list[str]:
    """What a service prints while a drive fails, and when it is pulled."""
    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        port = taken.getsockname()[1]
    (folder / "service.toml").write_text(f'interval = "1d"\nsmart_interval = "0"\nlisten = ["127.0.0.1:{port}"]\n')

    def metrics() -> str:
        try:
            with urllib.request.urlopen(f"http://127.0.0.1:{port}/metrics", timeout=10) as answer:
                return answer.read().decode()
        except (urllib.error.URLError, OSError):
            return ""
    service = subprocess.Popen([program, "--config", str(folder / "service.toml"), "--history", str(folder / "history.db"),
                                "--scenario", "watch/loses-drive/by-inquiry"], stderr=subprocess.DEVNULL)
    try:
        texts = [wait_for(metrics, bool)]
        while "raid_standing_alarm{" not in texts[-1]:
            service.send_signal(signal.SIGUSR1)
            texts.append(wait_for(metrics, lambda text: bool(text) and text != texts[-1]))
            if len(texts) > 20:
                raise RuntimeError("no alarm stands")
        return texts
    finally:
        service.terminate()
        service.wait(60)


def main(program: str, service: str, scenarios: Path, fleet: Path) -> int:
    known = Known()
    with tempfile.TemporaryDirectory() as folder:
        for text in of_a_service(service, Path(folder)):
            known.add(text)
    for name in ["large", "awkward", *(f"half-told/{one.name}" for one in scenarios.glob("half-told/t*"))]:
        known.add(subprocess.run([program, "--scenario", name, "--format", "prometheus", "show", "--smart"], check=False, text=True,
                                 stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=100).stdout)
    from_program = {name for name in known.labels if name.startswith("raid_")}
    rules = [(file.name, *rule) for file in (fleet / "alerts.rules.yml", fleet / "recording.rules.yml")
             for rule in in_rules(file.read_text())]
    known.labels |= {name: set(TARGET) for _, name, _, _ in rules if name}
    for _ in range(2):  # what is recorded may stand in another rule before
        known.wrong.clear()
        for file, name, expression, words in rules:
            labels = known.check(f"{file}: {name or words[:40]!r}", expression, words if not name else "")
            known.labels.setdefault(name, set()).update(labels)
    count = 0
    for file in sorted((fleet / "dashboards").glob("*.json")):
        for expression, legend in in_dashboard(file.read_text()):
            known.check(f"{file.name}: {expression}", expression, legend)
            count += 1
    known.wrong += [f"{name} is printed, and nobody asks for it" for name in sorted(from_program - known.used)]
    print("\n".join(known.wrong) or f"{len(rules)} rules and {count} expressions of dashboards ask for what is there")
    return 1 if known.wrong or len(rules) < 20 or count < 20 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2], Path(sys.argv[3]).resolve(), Path(sys.argv[4]).resolve()))
