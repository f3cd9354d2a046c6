#!/usr/bin/env python3
"""Whether four shards are one fleet: sharding.py MNGSRVRAID FLEET SCRIPTS

Debian's Prometheus five times, as fleet/ has it, less TLS and accounts: four shards and the one above them. A sixth is sent
what is kept for long, and what is alerted comes here. Each server has to be asked by one shard, and the fleet to be whole
above them and where series are kept."""

import http.server
import json
import re
import subprocess
import sys
import tempfile
import threading
import time
import urllib.parse
from pathlib import Path
from typing import Any, Callable

SERVERS = [f"127.0.0.{number}" for number in range(2, 14)]
FAILING, WELL = SERVERS[5], "well"
SHARDS = 4
PATIENCE = 120
NOT_TOLD = "raid_drive_temperature_celsius"  # by shards


class Everybody(http.server.ThreadingHTTPServer):
    """All servers, each at an address of its own, and an Alertmanager that keeps what it is told."""

    def __init__(self, texts: dict[str, str], port: int):
        alerts: list[dict[str, Any]] = []
        self.alerts = alerts

        class Handler(http.server.BaseHTTPRequestHandler):
            def answer(self, text: str) -> None:
                self.send_response(200)
                self.send_header("Content-Type", "text/plain; version=0.0.4")
                self.send_header("Content-Length", str(len(text.encode())))
                self.end_headers()
                self.wfile.write(text.encode())

            def do_GET(self) -> None:
                self.answer(texts["failing" if self.connection.getsockname()[0] == FAILING else WELL])

            def do_POST(self) -> None:
                alerts.extend(json.loads(self.rfile.read(int(self.headers["Content-Length"]))))
                self.answer("")

            def log_message(self, *_: Any) -> None:
                pass
        super().__init__(("", port), Handler)
        threading.Thread(target=self.serve_forever, daemon=True).start()


class Prometheus:
    def __init__(self, folder: Path, text: str, port: int, *words: str):
        self.url = f"http://127.0.0.1:{port}"
        (folder / "prometheus.yml").write_text(text)
        self.log = (folder / "log").open("wb")
        self.process = subprocess.Popen(["prometheus", f"--config.file={folder}/prometheus.yml", f"--storage.tsdb.path={folder}/series",
                                         f"--web.listen-address={self.url[7:]}", *words], stdin=subprocess.DEVNULL, stdout=self.log, stderr=self.log)

    def query(self, expression: str) -> list[dict[str, Any]]:
        answer = fetch(f"{self.url}/api/v1/query?query={urllib.parse.quote(expression)}")
        return json.loads(answer)["data"]["result"] if answer else []

    def instances(self, expression: str) -> list[str]:
        return sorted(each["metric"]["instance"] for each in self.query(expression))


def replaced(text: str, pairs: dict[str, str]) -> str:
    for pattern, by in pairs.items():
        text, times = re.subn(pattern, by, text)
        if times == 0:
            raise ValueError(f"{pattern} is not there")
    return text


def until(what: str, holds: Callable[[], bool]) -> None:
    deadline = time.monotonic() + PATIENCE
    while not holds():
        if time.monotonic() > deadline:
            raise TimeoutError(f"it never came: {what}")
        time.sleep(0.2)


def check(everybody: Everybody, shards: list[Prometheus], above: Prometheus, kept: Prometheus) -> list[str]:
    names = sorted(SERVERS)
    until("every server is asked, once", lambda: sorted(name for each in shards for name in each.instances('up{job="raid"} == 1')) == names)
    shares = [len(each.instances('up{job="raid"}')) for each in shards]
    until("the one above knows all of them", lambda: {each["metric"]["level"]: float(each["value"][1]) for each in above.query(
        "sum by (level) (raid:servers:count_by_level)")} == {"0": len(SERVERS) - 1, "2": 1})
    until("and which is not well", lambda: set(above.instances('raid:finding:level{kind="drive"} == 2')) == {FAILING})
    until("all servers are kept", lambda: kept.instances("raid_health") == names)
    until("what their drives are, too", lambda: sorted(set(kept.instances("raid_drive_info"))) == names)
    until("somebody is told", lambda: any(each["labels"]["alertname"] == "RaidDriveNotWell" for each in everybody.alerts))
    alerts = list(everybody.alerts)
    return [words for words, is_so in (
        (f"the shards have {shares} servers", max(shares) > len(SERVERS) - 2),
        ("a shard keeps what it is to drop", any(each.query(NOT_TOLD) for each in shards)),
        ("the one above has single drives", bool(above.query("raid_drive_health"))),
        ("every drive's health is sent on", bool(kept.query("raid_drive_health"))),
        ("sums of the fleet do not say whose they are", len(above.query("count by (shard) (raid:servers:count_by_level)")) < 2),
        ("an alert says which shard has noticed", any("shard" in each["labels"] for each in alerts)),
        ("an alert has no words", not all(each["annotations"]["description"] for each in alerts)),
        (f"others are told of: {alerts}", {each["labels"]["instance"] for each in alerts} != {FAILING})) if is_so]


def main(command: str, fleet_folder: str) -> int:
    fleet = Path(fleet_folder)
    texts = {name: subprocess.run([command, "--scenario", scenario, "--format", "prometheus", "show"], check=True, timeout=60,
                                  capture_output=True, text=True).stdout for name, scenario in ((WELL, "well"), ("failing", "large"))}
    ports = [free_port() for _ in range(SHARDS + 3)]
    addresses = [f"127.0.0.1:{port}" for port in ports]
    quick = {"_interval: 1m": "_interval: 1s"}
    shard = replaced((fleet / "prometheus-shard.yml").read_text(), quick | {
        r" +(scheme|tls_config|basic_auth): .*\n": "", "localhost:9093": addresses[-1],
        "https://series.example.org": f"http://{addresses[-2]}"})
    above = replaced((fleet / "prometheus-above.yml").read_text(), quick | {
        r"shard(\d)\.example\.org:9090": lambda found: addresses[int(found[1])]})  # type: ignore
    with tempfile.TemporaryDirectory(prefix="shards.") as name:
        running: list[Prometheus] = []
        everybody = Everybody(texts, ports[-1])
        try:
            for number in range(SHARDS + 2):
                folder = Path(name) / str(number)
                folder.mkdir()
                if number < SHARDS:
                    for rules in fleet.glob("*.rules.yml"):
                        (folder / rules.name).write_text(rules.read_text().replace("interval: 4m", "interval: 1s"))
                    (folder / "servers.yml").write_text("".join(f'- targets: ["{address}:{ports[-1]}"]\n' for address in SERVERS))
                    text = replaced(shard, {'shard: "0"': f'shard: "{number}"', '(__tmp_shard\\]\n +regex: )"0"': rf'\1"{number}"',
                                            "localhost:9090": addresses[number]})
                    running.append(Prometheus(folder, text, ports[number], "--storage.remote.flush-deadline=1s"))
                elif number == SHARDS:
                    running.append(Prometheus(folder, above, ports[number]))
                else:
                    running.append(Prometheus(folder, "", ports[number], "--web.enable-remote-write-receiver"))
            wrong = check(everybody, running[:SHARDS], running[SHARDS], running[SHARDS + 1])
        finally:
            for each in running:
                each.process.terminate()
            for each in running:
                each.process.wait(60)
                each.log.close()
            everybody.shutdown()
            everybody.server_close()
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.path.insert(0, sys.argv[3])
    from fleet import fetch, free_port
    sys.exit(main(*sys.argv[1:3]))
