#!/usr/bin/env python3
"""Whether the alerts of every scenario are its findings: scenarios.py MNGSRVRAID SCENARIOS FLEET

The program prints the series of each scenario, promtool feeds all of them to the rules at once, as so many servers, and
what fires has to be what the program finds: nothing more, nothing less, each with its part and its level."""

import concurrent.futures
import json
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path
from typing import Any, NamedTuple

import series

MINUTES = 10
ERROR = "Error - Controller 0 is not present.\n"
ALERTS = {"drive": "RaidDriveNotWell", "logical-drive": "RaidLogicalDriveNotWell", "group": "RaidGroupNotWell",
          "controller": "RaidControllerNotWell", "unit": "RaidBackupUnitNotWell"}
# What is not well with the last of them is accepted.
WELL = {"well", "small", "all known"}


class Server(NamedTuple):
    name: str
    scenario: str
    options: tuple[str, ...] = ()


class Answer(NamedTuple):
    samples: list[series.Sample]
    findings: list[dict[str, Any]]
    level: str


def ask(program: str, server: Server) -> Answer:
    def shown(form: str) -> str:
        return subprocess.run([program, "--scenario", server.scenario, "--format", form, "show", "--smart", *server.options],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False, timeout=300, text=True).stdout
    health = json.loads(shown("json"))["health"]
    return Answer(series.read(shown("prometheus")), [finding for finding in health["findings"] if not finding["accepted"]],
                  health["level"])


def kind_of(finding: dict[str, Any]) -> str:
    """What a person takes the part for."""
    part = finding["part"] or ""
    if finding["slot"] or part.startswith("PD") or part == "a drive":
        return "drive"
    if part.startswith("LD") or part == "a logical drive":
        return "logical-drive"
    if part and part != "a controller":
        return "unit"
    return "group" if finding["group"] else "controller"


def alert_of(finding: dict[str, Any], rule: str) -> str:
    return {"presence": "RaidNotAsExpected", "place": "RaidNotAsExpected", "use": "RaidNotAsExpected",
            "temperature": "RaidDriveTooWarm", "media-errors": "RaidDriveHasManyErrors",
            "media-error-growth": "RaidDriveHasManyErrors", "spares": "RaidTooFewSpares"
            }.get(rule) or ALERTS[kind_of(finding)]


def rule_of(finding: dict[str, Any]) -> str:
    """By which rule something is not well, from the words that people get."""
    for words, rule in ((r"moved, expected: ", "place"),
                        (r"(gone|new|another (drive|controller))\b", "presence"), (r".*, expected: ", "use"),
                        (r".* C, limit ", "temperature"), (r".* media errors?, limit ", "media-errors"),
                        (r".* limit of growth ", "media-error-growth"), (r".* spares?, fewest wanted ", "spares")):
        if re.match(words, finding["what"]):
            return rule
    return "state"


def expected(server: Server, answer: Answer) -> list[dict[str, str]]:
    target = {"instance": server.name, "job": "raid"}
    if answer.level != "OK" and not answer.findings:
        return [target | {"alertname": "RaidServerNotWell", "severity": answer.level.lower()}]
    alerts: list[dict[str, str]] = []
    for finding in answer.findings:
        rule = rule_of(finding)
        place = {key: finding[key] for key in ("controller", "group", "part", "enclosure", "slot", "model", "serial")
                 if finding[key]}
        labels = target | place | {"kind": kind_of(finding), "rule": rule, "alertname": alert_of(finding, rule),
                                   "severity": finding["level"].lower()}
        times = sum(all(other.get(key) == word for key, word in labels.items() if key != "severity") for other in alerts)
        alerts.append(labels | ({"copy": str(times + 1)} if times else {}))
    return alerts


def comparison(server: Server, alerts: list[dict[str, str]]) -> dict[str, Any]:
    """For promtool: all that fires of a server. What awkward texts come to as labels is tested elsewhere."""
    expression = series.selector("ALERTS", {"instance": server.name})
    samples = [series.selector("ALERTS", alert | {"alertstate": "firing"}) for alert in alerts]
    if server.name == "awkward":
        expression = f"count by (severity) ({expression})"
        samples = [series.selector("", {"severity": alert["severity"]}) for alert in alerts]
    return {"expr": expression, "eval_time": f"{MINUTES}m",
            "exp_samples": [{"labels": labels, "value": samples.count(labels)} for labels in sorted(set(samples))]}


def with_error(scenarios: Path, report: str, folder: Path) -> Server:
    """A tool that answers one command with an error, and status 0."""
    scenario = folder / f"error-{report}"
    shutil.copytree(scenarios / "small", scenario)
    (scenario / f"{report}.txt").write_text(ERROR)
    return Server(f"small, error as {report}", str(scenario))


def servers(program: str, scenarios: Path, folder: Path) -> list[Server]:
    found = [Server(name, name) for name in ("well", "small", "large", "old", "awkward", "empty")]
    found += [Server(f"{kind}/{one.name}", f"{kind}/{one.name}")
              for kind in ("levels", "half-told") for one in sorted((scenarios / kind).iterdir())]
    found += [with_error(scenarios, report, folder) for report in ("ctrlinfo_a0", "ldpdinfo_a0", "pdinfo_a0")]
    for name in ("well", "levels/raid5-gone"):
        subprocess.run([program, "--scenario", name, "expect", "--save", str(folder / f"{Path(name).name}.json"),
                        "--accept-until", "9999-12-31", "--reason", "known"], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=60)
    found.append(Server("all known", "levels/raid5-gone", ("--expect", str(folder / "raid5-gone.json"))))
    found.append(Server("small, expected well", "small", ("--expect", str(folder / "well.json"))))
    found.append(Server("large, narrow limits", "large",
                        ("--max-temperature", "35", "--max-media-errors", "1", "--min-spares", "9")))
    return found


def main(program: str, scenarios: Path, fleet: Path) -> int:
    with tempfile.TemporaryDirectory() as name, concurrent.futures.ThreadPoolExecutor(4) as pool:
        folder = Path(name)
        all_servers = servers(program, scenarios, folder)
        answers = list(pool.map(lambda server: ask(program, server), all_servers))
        inputs, expressions, fired = [], [], set()
        for server, answer in zip(all_servers, answers):
            inputs += series.scraped(answer.samples, server.name, MINUTES)
            alerts = expected(server, answer)
            fired |= {alert["alertname"] for alert in alerts}
            severities = {alert["severity"] for alert in alerts}
            is_well = server.name in WELL
            if (answer.level == "OK") != is_well or bool(alerts) == is_well or not is_well and answer.level.lower() not in severities:
                print(f"{server.name} is {answer.level}, and is to have these alerts: {alerts}")
                return 1
            expressions.append(comparison(server, alerts))
        unseen = (set(ALERTS.values()) | {"RaidNotAsExpected", "RaidDriveTooWarm", "RaidDriveHasManyErrors", "RaidTooFewSpares",
                                         "RaidServerNotWell"}) - fired
        if unseen:
            print(f"no scenario shows {sorted(unseen)}")
            return 1
        test = folder / "scenarios.json"  # which is YAML, too
        test.write_text(json.dumps({
            "rule_files": [str(fleet / "recording.rules.yml"), str(fleet / "alerts.rules.yml")], "evaluation_interval": "1m",
            "group_eval_order": ["raid-findings", "raid-fleet", "raid-counters", "raid-heard-of"],
            "tests": [{"interval": "1m", "input_series": inputs, "promql_expr_test": expressions}]}))
        ended = subprocess.run(["promtool", "test", "rules", str(test)], timeout=300, check=False)
        alerts = sum(sample["value"] for expression in expressions for sample in expression["exp_samples"])
        print(f"{len(all_servers)} servers, {alerts} alerts")
        return ended.returncode


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], Path(sys.argv[2]).resolve(), Path(sys.argv[3]).resolve()))
