#!/usr/bin/env python3
"""Which alerts Alertmanager keeps to itself, and where it sends the others: inhibition.py FLEET"""

import json
import re
import socket
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.request
from pathlib import Path

OPENER = urllib.request.build_opener(urllib.request.ProxyHandler({}))
# Each with whether it is silent beside all others, and the shard that tells it.
ALERTS = (
    ("gone", "RaidServerIsNotHeardOf", "critical", "", False),
    ("gone", "RaidDriveNotWell", "critical", "0", True),
    ("gone", "RaidAnswerIsOld", "unknown", "", True),
    ("gone", "RaidServerTellsNothing", "critical", "", True),
    ("dropped", "RaidServerIsGone", "warning", "", False),
    ("dropped", "RaidDriveNotWell", "critical", "0", True),
    ("broken", "RaidControllerNotWell", "critical", "0", False),
    ("broken", "RaidDriveNotWell", "critical", "0", True),
    ("broken", "RaidLogicalDriveNotWell", "critical", "0", True),
    ("broken", "RaidDriveNotWell", "warning", "1", False),
    ("tired", "RaidControllerNotWell", "warning", "0", False),
    ("tired", "RaidDriveNotWell", "warning", "0", False),
    ("mute", "RaidCannotBeAsked", "unknown", "", False),
    ("mute", "RaidAnswerIsOld", "unknown", "", True),
    ("mute", "RaidDriveNotWell", "critical", "0", False),
    ("other", "RaidDriveNotWell", "critical", "0", False),
    ("other", "RaidAnswerIsOld", "unknown", "", False),
    ("", "RaidNobodyIsHeardOf", "critical", "", False, "3"),
    ("of the same shard", "RaidServerIsNotHeardOf", "critical", "", True, "3"),
    ("of the same shard too", "RaidServerTellsNothing", "critical", "", True, "3"),
    ("of the same shard", "RaidDriveNotWell", "critical", "0", True),
    ("of another shard", "RaidServerIsNotHeardOf", "critical", "", False, "2"),
    ("of another shard too", "RaidServerIsGone", "warning", "", False, "2"),
)


def ask(url: str, body: bytes | None = None) -> str:
    request = urllib.request.Request(url, body, {"Content-Type": "application/json"})
    with OPENER.open(request, timeout=30) as answer:
        return answer.read().decode()


def wait_for(url: str) -> None:
    deadline = time.monotonic() + 120
    while True:
        try:
            ask(url)
            return
        except (urllib.error.URLError, OSError):
            if time.monotonic() > deadline:
                raise
            time.sleep(0.05)


def labels(instance: str, name: str, severity: str, controller: str, shard: str = "") -> dict[str, str]:
    found = {"instance": instance, "job": "raid" if instance else "", "alertname": name, "severity": severity,
             "controller": controller, "asked_by": shard}
    return {key: word for key, word in found.items() if word}


def of_daily(text: str) -> list[str]:
    """A group is told again at its next turn after repeat_interval: one as long as the turns would leave every other out."""
    hours = {name: int(count) * {"h": 1, "d": 24}[unit]
             for name, count, unit in re.findall(r"^  (group_interval|repeat_interval): (\d+)([hd])\b", text, re.MULTILINE)}
    turns, repeat = hours["group_interval"], hours["repeat_interval"]
    return [] if turns == 24 and turns // 2 < repeat < turns else [f"every {turns} h, what was told {repeat} h ago is told again"]


def wrongs(url: str) -> list[str]:
    known = json.loads(ask(f"{url}/api/v2/alerts"))
    found = []
    for *alert, is_silent in ((*each[:4], *each[5:], each[4]) for each in ALERTS):
        one = next((each for each in known if each["labels"] == labels(*alert)), None)
        if one is None:
            found.append(f"{alert} is not known")
            continue
        if bool(one["status"]["inhibitedBy"]) != is_silent:
            found.append(f"{alert} is {'told' if is_silent else 'silent'}")
        receiver = "at-once" if alert[2] == "critical" else "daily"
        if [each["name"] for each in one["receivers"]] != [receiver]:
            found.append(f"{alert} goes to {one['receivers']}")
    return found


def settled(url: str) -> list[str]:
    """What is wrong still when Alertmanager has had time enough to see which alerts go along with which."""
    ask(f"{url}/api/v2/alerts", json.dumps([{"labels": labels(*alert[:4], *alert[5:])} for alert in ALERTS]).encode())
    deadline = time.monotonic() + 60
    while (found := wrongs(url)) and time.monotonic() < deadline:
        time.sleep(0.2)
    return found


def main(fleet: Path) -> int:
    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        place = f"127.0.0.1:{taken.getsockname()[1]}"
    with tempfile.TemporaryDirectory() as folder:
        server = subprocess.Popen(["prometheus-alertmanager", f"--config.file={fleet}/alertmanager.yml", f"--storage.path={folder}",
                                   f"--web.listen-address={place}", "--cluster.listen-address=", "--log.level=error"])
        try:
            wait_for(f"http://{place}/-/ready")
            found = of_daily((fleet / "alertmanager.yml").read_text()) + settled(f"http://{place}")
        finally:
            server.terminate()
            server.wait(60)
    print("\n".join(found) or f"{len(ALERTS)} alerts go where they belong")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
