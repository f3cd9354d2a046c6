#!/usr/bin/env python3
"""Whether bench_servers answers as servers would: servers_test.py BENCH_SERVERS MNGSRVRAID"""

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


def fetch(url: str) -> str:
    with OPENER.open(url, timeout=30) as answer:
        return answer.read().decode()


def names(text: str) -> list[str]:
    """Every line less its number, and without serial numbers."""
    return [re.sub(r'serial="[^"]*"', "", line).rsplit(" ", 1)[0] for line in text.splitlines() if not line.startswith("#")]


def serials(text: str) -> set[str]:
    return set(re.findall(r'serial="([^"]+)"', text))


def answered(url: str, process: subprocess.Popen[bytes]) -> str:
    deadline = time.monotonic() + 60
    while True:
        try:
            return fetch(url)
        except urllib.error.URLError:
            if process.poll() is not None or time.monotonic() > deadline:
                raise
            time.sleep(0.05)


def check(url: str, well: str, failing: str) -> list[str]:
    at = [fetch(f"{url}/1/metrics?at={60 * scrape}") for scrape in range(500)]
    lost = [scrape for scrape, text in enumerate(at) if names(text) == names(failing)]
    temperatures = {tuple(re.findall(r"^raid_drive_temperature.* (\S+)$", text, re.M)) for text in at[:50]
                    if names(text) == names(well)}
    linted = subprocess.run(["promtool", "check", "metrics"], input=at[0].encode(), capture_output=True, check=False, timeout=60)
    try:
        fetch(f"{url}/3/metrics")
        beyond = 200
    except urllib.error.HTTPError as error:
        beyond = error.code
    return [words for words, is_so in (
        (f"{len(lost)} scrapes of 500 show the lost drive", len(lost) != 5),
        ("an answer is of neither text", any(names(text) not in (names(well), names(failing)) for text in at)),
        ("two servers share serial numbers", bool(serials(fetch(f"{url}/1/metrics")) & serials(fetch(f"{url}/2/metrics")))),
        ("serial numbers are lost", {serial.rsplit("-", 1)[0] for serial in serials(at[0])} not in (serials(well), serials(failing))),
        ("temperatures stay the same", len(temperatures) < 2),
        ("the same moment is told in two ways", at[7] != fetch(f"{url}/1/metrics?at=420")),
        (f"promtool: {linted.stderr.decode()}", linted.returncode != 0),
        (f"{beyond} for a server that is not there", beyond != 404)) if is_so]


def main(program: str, command: str) -> int:
    with tempfile.TemporaryDirectory() as name:
        texts = []
        for scenario in ("well", "large"):
            texts.append(Path(name) / scenario)
            texts[-1].write_text(subprocess.run([command, "--scenario", scenario, "--format", "prometheus", "show", "--smart"], check=True,
                                                capture_output=True, text=True, timeout=300).stdout)
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = free.getsockname()[1]
        with subprocess.Popen([program, "127.0.0.1", str(port), "3", *texts]) as process:
            try:
                answered(f"http://127.0.0.1:{port}/0/metrics", process)
                wrong = check(f"http://127.0.0.1:{port}", texts[0].read_text(), texts[1].read_text())
            finally:
                process.terminate()
        if process.returncode != 0:
            wrong.append(f"it ended with {process.returncode}")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
