#!/usr/bin/env python3
"""A fleet on this machine: services, Prometheus and Alertmanager with what is in fleet/, and somebody who is told.

    scripts/fleet.py BIN check N     one of N servers loses a drive and is mended: is that told, and nothing else?
    scripts/fleet.py BIN show N      N servers, one failing, until Ctrl-C
    scripts/fleet.py BIN picture N PNG    a picture of Prometheus' page of their alerts

BIN is the folder of mngsrvraidd. Each server has a loopback address and a made-up scenario of its own. Of fleet/'s
files only addresses and times are replaced: nobody wants to wait for a minute to pass, or for mail."""

import base64
import http.server
import json
import random
import re
import shutil
import signal
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import time
import urllib.error
import urllib.parse
import urllib.request
from pathlib import Path
from typing import Any, Callable, NamedTuple

FLEET = Path(__file__).resolve().parent.parent / "fleet"
PATIENCE = 300  # seconds, for what takes a moment: only a fleet that is broken takes longer
FAILING = "watch/loses-drive/by-inquiry"
WELL = ("well", "small", "watch/moves/by-inquiry", "watch/grows-errors/by-inquiry", "watch/flaps/by-inquiry")
STAGES = {"announced": r'raid_finding_level{.*serial="WMY413072".*} 1\n', "failed": r'raid_finding_level{.*serial="WMY413072".*} 2\n',
          "pulled": r'raid_standing_alarm{.*serial="WMY413072"', "rebuilding": r"raid_drive_state{.*} 4\n", "mended": r"raid_health 0\n"}


class Told(NamedTuple):
    at: float
    receiver: str
    alert: dict[str, Any]

    def part(self) -> tuple[str, ...]:
        labels = self.alert["labels"]
        return tuple(labels.get(key, "") for key in ("alertname", "instance", "severity", "enclosure", "slot", "part", "model", "serial"))


def free_port(wanted: int = 0) -> int:
    """One that nobody has on any address of this machine, and that no client is given meanwhile; the one that is wanted, where it is."""
    for port in (wanted or random.randint(20000, 32000), *(random.randint(20000, 32000) for _ in range(100))):
        try:
            with socket.socket() as taken:
                taken.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
                taken.bind(("", port))
                return port
        except OSError:
            continue
    raise OSError("no port is free")


def fetch(url: str, context: ssl.SSLContext | None = None, account: str = "") -> str:
    """The answer; empty where there is none (yet). No proxy is in between."""
    opener = urllib.request.build_opener(urllib.request.ProxyHandler({}), urllib.request.HTTPSHandler(context=context))
    headers = {"Authorization": "Basic " + base64.b64encode(account.encode()).decode()} if account else {}
    try:
        with opener.open(urllib.request.Request(url, headers=headers), timeout=30) as answer:
            return answer.read().decode()
    except (urllib.error.URLError, OSError):
        return ""


class Fleet:
    """Everything that runs, in a folder; all of it ends with the `with`."""

    def __init__(self, programs: Path, count: int, seconds: int, folder: Path, usual_ports: bool):
        self.folder = folder
        self.logs = folder / "logs"  # elsewhere: Prometheus looks at its lists of servers whenever something changes beside them
        self.logs.mkdir()
        self.service = str(programs / "mngsrvraidd")
        self.names = [f"storage{number + 1}" for number in range(count)]
        self.seconds = seconds
        self.port = free_port(8443 if usual_ports else 0)
        self.prometheus = f"http://127.0.0.1:{free_port(9090 if usual_ports else 0)}"
        self.alertmanager = f"http://127.0.0.1:{free_port(9093 if usual_ports else 0)}"
        self.told: list[Told] = []
        self.running: list[subprocess.Popen[bytes]] = []
        self.receiver = http.server.ThreadingHTTPServer(("127.0.0.1", 0), self._handler())

    def until(self, what: str, holds: Callable[[], Any]) -> Any:
        """Waits for it as long as everything runs."""
        deadline = time.monotonic() + PATIENCE
        while not (value := holds()):
            ended = [process.args for process in self.running if process.poll() is not None]
            if ended or time.monotonic() > deadline:
                raise TimeoutError(f"it never came: {what}; ended have {ended}")
            time.sleep(0.2)
        return value

    def _handler(self) -> type[http.server.BaseHTTPRequestHandler]:
        told = self.told

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self) -> None:
                message = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
                told.extend(Told(time.time(), self.path, alert) for alert in message["alerts"])
                self.send_response(200)
                self.end_headers()

            def log_message(self, *_: Any) -> None:
                pass
        return Handler

    def __enter__(self) -> "Fleet":
        try:
            threading.Thread(target=self.receiver.serve_forever, daemon=True).start()
            self._write()
            for number, name in enumerate(self.names):
                scenario = FAILING if number == 0 else WELL[number % len(WELL)]
                self._start(name, self.service, "--config", str(self.folder / f"{name}.toml"),
                            "--history", str(self.folder / f"{name}.db"), "--scenario", scenario)
            self._start("alertmanager", "prometheus-alertmanager", f"--config.file={self.folder}/alertmanager.yml",
                        f"--storage.path={self.folder}/alerts", "--cluster.listen-address=",
                        f"--web.listen-address={self.alertmanager[7:]}")
            self.until("Alertmanager is ready", lambda: fetch(f"{self.alertmanager}/-/ready"))
            for number in range(len(self.names)):
                self.until(f"{self.names[number]} answers", lambda number=number: self.metrics(number))
            self._start("prometheus", "prometheus", f"--config.file={self.folder}/prometheus.yml",
                        f"--storage.tsdb.path={self.folder}/series", f"--web.listen-address={self.prometheus[7:]}")
            self.until("Prometheus is ready", lambda: fetch(f"{self.prometheus}/-/ready"))
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_: Any) -> None:
        for process in self.running:
            process.terminate()
        for process in self.running:
            try:
                process.wait(60)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self.receiver.shutdown()
        self.receiver.server_close()

    def _start(self, name: str, *words: str) -> None:
        with (self.logs / f"{name}.log").open("wb") as log:
            self.running.append(subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=log, stderr=log))

    def _write(self) -> None:
        """What an administrator writes, and what is in fleet/."""
        subprocess.run([self.service, "setup-tls", str(self.folder)], check=True, stdout=subprocess.DEVNULL, timeout=60)
        subprocess.run([self.service, "passwd", "monitoring", "--accounts", str(self.folder / "accounts")], input=b"well?\n",
                       check=True, stdout=subprocess.DEVNULL, timeout=60)
        (self.folder / "raid.password").write_text("well?")
        shutil.copy(self.folder / "tls.crt", self.folder / "raid.crt")
        servers = f'- targets: ["{self.address(len(self.names) - 1)}"]\n'  # whose name is its address
        for number, name in enumerate(self.names):
            (self.folder / f"{name}.toml").write_text(
                f'host = "{name}"\ninterval = "1d"\nsmart_interval = "0"\ncalm = "0s"\n'
                f'listen = ["https://{self.address(number)}"]\naccounts = "{self.folder}/accounts"\n'
                f'tls_certificate = "{self.folder}/tls.crt"\ntls_key = "{self.folder}/tls.key"\n')
            if number < len(self.names) - 1:
                servers += f'- {{ targets: ["{self.address(number)}"], labels: {{ instance: {name} }} }}\n'
        (self.folder / "servers.yml").write_text(servers)
        self._adapt("recording.rules.yml", {})
        self._adapt("alerts.rules.yml", {"interval: 4m": f"interval: {self.seconds}s", r"keep_firing_for: \w+": "keep_firing_for: 1s"})
        self._adapt("prometheus.yml", {"_interval: 1m": f"_interval: {self.seconds}s", "localhost:9093": self.alertmanager[7:],
                                       "localhost:9090": self.prometheus[7:],
                                       "ca_file: raid.crt": "ca_file: raid.crt, server_name: localhost"})
        receiver = f"http://127.0.0.1:{self.receiver.server_port}"
        self._adapt("alertmanager.yml", {
            r"group_wait: \w+": "group_wait: 0s", r"group_interval: \w+": "group_interval: 1s", "email_configs": "webhook_configs",
            "to: on-call@example.org": f'url: "{receiver}/at-once"', "to: storage@example.org": f'url: "{receiver}/daily"'})

    def _adapt(self, name: str, replaced: dict[str, str]) -> None:
        text = (FLEET / name).read_text()
        for pattern, by in replaced.items():
            text, times = re.subn(pattern, by, text)
            if times == 0:
                raise ValueError(f"fleet/{name} has no {pattern}")
        (self.folder / name).write_text(text)

    def address(self, number: int) -> str:
        return f"127.0.0.{number + 2}:{self.port}"

    def metrics(self, number: int) -> str:
        context = ssl.create_default_context(cafile=str(self.folder / "tls.crt"))
        context.check_hostname = False  # it is one certificate for all of them
        return fetch(f"https://{self.address(number)}/metrics", context, "monitoring:well?")

    def query(self, expression: str) -> list[dict[str, Any]]:
        answer = fetch(f"{self.prometheus}/api/v1/query?query={urllib.parse.quote(expression)}")
        return json.loads(answer)["data"]["result"] if answer else []

    def value(self, expression: str) -> float:
        """-1 where there is none."""
        result = self.query(expression)
        return float(result[0]["value"][1]) if result else -1

    def step(self, stage: str) -> None:
        """The failing server is asked once more, and is a stage further, which shows in its series."""
        self.running[0].send_signal(signal.SIGUSR1)
        self.until(f"the failing server is {stage}", lambda: re.search(STAGES[stage], self.metrics(0)))

    def memory(self, which: int | None = None) -> float:
        """Resident, of a process or of all services, in MB; of a service without its doors."""
        chosen = self.running[:len(self.names)] if which is None else [self.running[which]]
        return sum(int(re.findall(r"VmRSS:\s+(\d+)", Path(f"/proc/{each.pid}/status").read_text())[0]) for each in chosen) / 1024

    def open(self) -> set[tuple[str, ...]]:
        """What has been told and not been called ended."""
        standing: set[tuple[str, ...]] = set()
        for each in list(self.told):
            (standing.add if each.alert["status"] == "firing" else standing.discard)(each.part())
        return standing


def drive_alerts(fleet: Fleet, part: set[tuple[str, ...]]) -> set[tuple[str, ...]]:
    drive = ("RaidDriveNotWell", fleet.names[0], "critical", "252", "3", "PD3", "MARLE HD2000N7", "WMY413072")
    return {each for each in part if each == drive}


def scrapes_until_active(fleet: Fleet) -> int:
    """How many times Prometheus had seen the drive failed when it raised the alert."""
    chosen = f'{{instance="{fleet.names[0]}",serial="WMY413072",'
    seen = fleet.query(f'raid_finding_level{chosen}kind="drive"}}[1h]')[0]["values"]
    alert = fleet.query(f'ALERTS{chosen}severity="critical",alertstate="firing"}}[1h]')[0]["values"]
    return sum(float(at) <= float(alert[0][0]) for at, level in seen if level == "2")


def check(fleet: Fleet) -> int:
    count = len(fleet.names)
    fleet.until("all servers are known to be well", lambda: fleet.value("count(raid_health == 0)") == count)
    fleet.until("the rules have seen them", lambda: fleet.value("raid:servers:count_by_level") == count)
    instances = {each["metric"]["instance"] for each in fleet.query('up{job="raid"}')}
    if instances != {*fleet.names[:-1], fleet.address(count - 1).split(":")[0]}:
        print(f"the servers are called {sorted(instances)}")
        return 1
    if early := fleet.query('ALERTS{alertstate="firing"}'):  # until the first scrape, nothing is heard of anybody
        print(f"something is told of servers that are well: {early}")
        return 1
    fleet.step("announced")
    fleet.step("failed")
    lost = time.time()
    drive = fleet.until("the drive is told of", lambda: drive_alerts(fleet, fleet.open()))
    arrived = next(each.at for each in list(fleet.told) if each.part() in drive)
    active = fleet.until("Prometheus knows of the alert", lambda: fleet.query("ALERTS") and scrapes_until_active(fleet))
    print(f"{count} servers: told {arrived - lost:.1f} s after the drive was lost, at scrape {active} since, "
          f"of one every {fleet.seconds} s: {' '.join(next(iter(drive)))}", flush=True)
    fleet.step("pulled")
    fleet.until("Prometheus knows that the drive is pulled",
          lambda: fleet.value(f'raid_standing_alarm{{instance="{fleet.names[0]}",serial="WMY413072"}}') == 2)
    fleet.until("the rules have seen it a few times",
          lambda: fleet.value(f'count_over_time(raid_standing_alarm{{instance="{fleet.names[0]}"}}[1h])') >= 4)
    held = drive_alerts(fleet, fleet.open()) == drive
    fleet.step("rebuilding")
    fleet.until("the rebuild is known", lambda: fleet.value("sum(raid:rebuilds:count)") == 1)
    fleet.step("mended")
    fleet.until("nothing is firing any more", lambda: fleet.value("count(raid_health == 0)") == count and not fleet.query("ALERTS"))
    fleet.until("everything is told to have ended", lambda: fleet.told and not fleet.open())
    parts = {each.part() for each in fleet.told}
    others = {part for part in parts if part[1] != fleet.names[0] or (part[3:6] != ("252", "3", "PD3") and part[5] != "LD1")}
    places = {(each.receiver, each.alert["labels"]["severity"] == "critical") for each in fleet.told}
    wrong = [words for words, is_so in (
        ("the alert came later than with the second scrape", active > 2), ("it ended when the drive was pulled", not held),
        (f"something else was told: {others}", others),
        (f"it went to the wrong place: {places}", not places <= {("/at-once", True), ("/daily", False)})) if is_so]
    print("\n".join(wrong) or f"told of {len(parts)} alerts, all of that drive and its logical drive, and of their end")
    series = fleet.value('count({__name__=~"raid_.*"})')
    print(f"{series:.0f} series of the servers; Prometheus has {fleet.memory(-1):.0f} MB of memory, all services {fleet.memory():.0f} MB")
    return 1 if wrong else 0


def fail(fleet: Fleet) -> None:
    """The first server has lost a drive, and Prometheus says so."""
    fleet.until("Prometheus knows the servers", lambda: fleet.value("count(raid_health)") == len(fleet.names))
    fleet.step("announced")
    fleet.step("failed")
    fleet.until("the alerts", lambda: fleet.value('count(ALERTS{alertstate="firing",severity="critical"})') == 2)


def show(fleet: Fleet) -> int:
    fail(fleet)
    print(f"""
{len(fleet.names)} servers, of which {fleet.names[0]} has lost a drive, until Ctrl-C:

    {fleet.prometheus}/classic/alerts     what Prometheus alerts of
    {fleet.prometheus}/classic/targets    the servers
    {fleet.prometheus}/classic/graph?g0.expr=raid:finding:level&g0.tab=1
    {fleet.alertmanager}/api/v2/alerts       what Alertmanager tells
    https://{fleet.address(0)}/    the server itself (account monitoring, password well?)
""", file=sys.stderr, flush=True)
    signal.pause()
    return 0


# What somebody has clicked who looks at this page: alerts at rest are hidden, others unfolded, with what they say.
CLICKED = """<base href="{base}/"><style>.alert-success {{ display: none }} .alert_details pre {{ display: none !important }}
.alert-danger + .alert_details, .alert_annotations {{ display: table-row !important }}</style>"""


def picture(fleet: Fleet, file: str) -> int:
    fail(fleet)
    text = fetch(f"{fleet.prometheus}/classic/alerts")
    page = fleet.folder / "alerts.html"
    page.write_text(text.replace("<head>", "<head>" + CLICKED.format(base=fleet.prometheus), 1))
    subprocess.run(["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--force-device-scale-factor=1",
                    f"--user-data-dir={fleet.folder}/profile", "--window-size=1280,1090", f"--screenshot={file}", f"file://{page}"],
                   check=True, timeout=120, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return 0


def main(programs: str, job: str, count: str, *more: str) -> int:
    with tempfile.TemporaryDirectory(prefix="fleet.") as folder:
        seconds = max(2, int(count) // 10)
        try:
            with Fleet(Path(programs).resolve(), int(count), seconds, Path(folder), job == "show") as fleet:
                return {"check": check, "show": show, "picture": picture}[job](fleet, *more)
        except (TimeoutError, subprocess.CalledProcessError):
            for log in sorted(Path(folder).glob("logs/*.log")):
                print(f"== {log.name}\n" + "\n".join(log.read_text(errors="replace").splitlines()[-5:]), file=sys.stderr)
            raise


def end(*_: Any) -> None:
    raise KeyboardInterrupt


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, end)
    try:
        sys.exit(main(*sys.argv[1:]))
    except KeyboardInterrupt:
        sys.exit(0)
