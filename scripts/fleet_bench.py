#!/usr/bin/env python3
"""What N servers of 24 drives take of Prometheus, with fleet/'s rules.

    scripts/fleet_bench.py BIN RESULTS N...

BIN is the folder of mngsrvraid, mngsrvraidd and bench_servers. What a server says is taken from the service, of a made-up
server that is well, and of the same with a lost drive. Prometheus is Debian's with fleet/'s own configuration, less TLS, the
account and Alertmanager. RESULTS gets fleet.json and the drawing fleet-growth.svg."""

import json
import math
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import urllib.parse
from pathlib import Path
from typing import Any, Callable

from fleet import FLEET, end, fetch, free_port

DRIVES = 24
INTERVAL = 60  # seconds, as in fleet/prometheus.yml
WINDOW = 5 * INTERVAL  # in which every group of rules turns
MOST_MEMORY = 11 * 1024  # MB; beyond it there is no room for anything else on a machine of 16 GB
DAY = 24 * 3600
SAMPLED = 5  # servers whose samples of a day are written into blocks
LOST = 3  # the drive
LOOKED_BACK = 240  # seconds: less than Prometheus looks back for a sample


def until(holds: Callable[[], Any], seconds: float = 60) -> Any:
    deadline = time.monotonic() + seconds
    while not (value := holds()):
        if time.monotonic() > deadline:
            raise TimeoutError("it never came")
        time.sleep(0.5)
    return value


def ended(process: subprocess.Popen[bytes]) -> None:
    process.terminate()
    try:
        process.wait(120)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def made_up(programs: Path, folder: Path) -> tuple[Path, Path]:
    """What the service prints of a server that is well, and with a lost drive. The simulator's has some of everything: that
    is mended in a capture of it."""
    (folder / "made-up").mkdir()
    (folder / "made-up/server.conf").write_text(f"version 4.2\ncontrollers 1\ndrives {DRIVES}\n")
    subprocess.run([programs / "mngsrvraid", "--scenario", folder / "made-up", "capture", folder / "well"], check=True, timeout=120,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for report in (folder / "well").glob("*.txt"):
        text = re.sub(r"\b(COPYBACK|Diagnosing|FAILED|OFFLINE|REBUILD)\b", "ONLINE", report.read_text())
        report.write_text(re.sub(r"(SMART Status +: )Alert", r"\1OK", text))
    shutil.copytree(folder / "well", folder / "failing")
    for report in (folder / "failing").glob("*.txt"):
        text = re.sub(rf"^(PD{LOST}\(.*?PD Status +: )ONLINE", r"\1FAILED", report.read_text(), count=1, flags=re.M | re.S)
        text = text.replace(f">>PD{LOST}(ONLINE)", f">>PD{LOST}(FAILED)")
        report.write_text(text.replace("(DATA_0, 1674 GB, OPTIMAL)", "(DATA_0, 1674 GB, DEGRADED)"))
    return tuple(printed(programs, folder / name, health) for name, health in (("well", 0), ("failing", 2)))  # type: ignore


def with_smart(service: subprocess.Popen[bytes], port: int) -> str:
    """What drives have told one by one counts from the server's next answer on. Empty until all have."""
    time.sleep(5)
    service.send_signal(signal.SIGUSR1)
    text = fetch(f"http://127.0.0.1:{port}/metrics")
    return text if text.count("\nraid_drive_power_on_seconds") == DRIVES else ""


def printed(programs: Path, scenario: Path, health: int) -> Path:
    """As the service has it at /metrics, SMART data included."""
    port = free_port()
    configuration = scenario.with_suffix(".toml")
    configuration.write_text(f'host = "made-up"\ninterval = "1d"\nsmart_interval = "10s"\nlisten = ["127.0.0.1:{port}"]\n')
    service = subprocess.Popen([programs / "mngsrvraidd", "--config", configuration, "--history", scenario.with_suffix(".db"),
                                "--scenario", scenario], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        until(lambda: "\nraid_health" in fetch(f"http://127.0.0.1:{port}/metrics"))
        text = until(lambda: with_smart(service, port))
    finally:
        ended(service)
    if f"\nraid_health {health}\n" not in text:
        raise ValueError(f"{scenario.name} is not as it should be")
    scenario.with_suffix(".prom").write_text(text)
    return scenario.with_suffix(".prom")


class Servers:
    """bench_servers, for so many."""

    def __init__(self, programs: Path, texts: tuple[Path, Path], count: int):
        self.address = f"127.0.0.1:{free_port()}"
        self.process = subprocess.Popen([programs / "bench_servers", *self.address.split(":"), str(count), *texts])

    def __enter__(self) -> "Servers":
        until(lambda: self.metrics(0, int(time.time())), 30)
        return self

    def __exit__(self, *_: Any) -> None:
        ended(self.process)

    def metrics(self, server: int, at: int) -> str:
        return fetch(f"http://{self.address}/{server}/metrics?at={at}")


class Prometheus:
    """Debian's, with fleet/'s rules and job, and so many targets that are all at one address."""

    def __init__(self, folder: Path, address: str, count: int):
        self.url = f"http://127.0.0.1:{free_port()}"
        self.folder = folder
        (folder / "servers.yml").write_text("".join(
            f'- {{ targets: ["{address}"], labels: {{ instance: storage{number}, __metrics_path__: /{number}/metrics }} }}\n'
            for number in range(count)))
        for rules in FLEET.glob("*.rules.yml"):
            shutil.copy(rules, folder)
        text = (FLEET / "prometheus.yml").read_text()
        text = text.replace("localhost:9090", self.url[7:])
        text = re.sub(r"alerting:.*?(?=scrape_configs)", "", text, flags=re.S)
        text = re.sub(r" +(scheme|tls_config|basic_auth): .*\n", "", text)
        (folder / "prometheus.yml").write_text(text)
        with (folder / "log").open("wb") as log:
            self.process = subprocess.Popen(
                ["prometheus", f"--config.file={folder}/prometheus.yml", f"--storage.tsdb.path={folder}/series",
                 f"--web.listen-address={self.url[7:]}"], stdin=subprocess.DEVNULL, stdout=log, stderr=log)

    def __enter__(self) -> "Prometheus":
        return self

    def __exit__(self, *_: Any) -> None:
        ended(self.process)

    def memory(self, what: str = "VmRSS") -> float:
        """MB."""
        return int(re.findall(rf"{what}:\s+(\d+)", Path(f"/proc/{self.process.pid}/status").read_text())[0]) / 1024

    def own(self, name: str) -> float:
        """The sum of its own series of that name."""
        return sum(float(value) for value in re.findall(rf"^{name}(?:{{.*}})? (\S+)$", fetch(f"{self.url}/metrics"), re.M))

    def rules(self, what: str) -> dict[str, float]:
        """Seconds, of each group."""
        return {group: float(value) for group, value in
                re.findall(rf'^prometheus_rule_group_{what}_seconds{{rule_group=".*;(.*)"}} (\S+)$', fetch(f"{self.url}/metrics"), re.M)}

    def rules_a_minute(self) -> float:
        """Seconds that all rules together take; no number where one has not come to an end yet."""
        took, interval = self.rules("last_duration"), self.rules("interval")
        return sum((took[group] or math.nan) * 60 / interval[group] for group in took)

    def value(self, expression: str) -> float:
        """0 where nothing is there, and no number where it does not answer in time."""
        answer = fetch(f"{self.url}/api/v1/query?query={urllib.parse.quote(expression)}")
        if not answer:
            return math.nan
        result = json.loads(answer)["data"]["result"]
        return float(result[0]["value"][1]) if result else 0

    def wal(self) -> int:
        return sum(file.stat().st_size for file in (self.folder / "series/wal").rglob("*") if file.is_file())

    def watch(self, seconds: float) -> bool:
        """Whether it stayed within the memory for so long."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            if self.process.poll() is not None or self.memory() > MOST_MEMORY:
                return False
            time.sleep(1)
        return True


def measure(prometheus: Prometheus, count: int) -> dict[str, Any] | None:
    if not prometheus.watch(1.5 * INTERVAL):  # all have been scraped and judged
        return None
    names = ("process_cpu_seconds_total", "prometheus_tsdb_head_samples_appended_total",
             "prometheus_rule_group_iterations_missed_total", "prometheus_tsdb_out_of_order_samples_total")
    begin, before, wal = time.time(), [prometheus.own(name) for name in names], prometheus.wal()
    if not prometheus.watch(WINDOW):
        return None
    seconds = time.time() - begin
    cpu, samples, late, disordered = (prometheus.own(name) - was for name, was in zip(names, before))
    written = prometheus.wal() - wal
    raid = '{job="raid"}'
    return {
        "servers": count, "seconds": round(seconds), "series": prometheus.own("prometheus_tsdb_head_series"),
        "series of servers": prometheus.value(f"sum(scrape_samples_scraped{raid})"),
        "samples a second": samples / seconds, "memory": prometheus.memory(), "peak": prometheus.memory("VmHWM"), "cores": cpu / seconds,
        "log bytes a sample": written / samples,
        "scrape": prometheus.value(f"avg(scrape_duration_seconds{raid})"),
        "scrape 99": prometheus.value(f"quantile(0.99, scrape_duration_seconds{raid})"),
        "scrapes": prometheus.value(f"sum(count_over_time(up{raid}[{seconds:.0f}s]))"), "expected": count * seconds / INTERVAL,
        "failed": prometheus.value(f"sum(count_over_time(up{raid}[{seconds:.0f}s]) - sum_over_time(up{raid}[{seconds:.0f}s]))"),
        "late rules": late, "disordered": disordered, "rules": prometheus.rules("last_duration"), "rules a minute": prometheus.rules_a_minute(),
        "alerts": prometheus.value('count(ALERTS{alertstate="firing"})'),
        "scrape longest": prometheus.value(f"max(max_over_time(scrape_duration_seconds{raid}[{seconds:.0f}s]))"),
    }


def into_blocks(servers: Servers, count: int, times: range, folder: Path, wanted: str = "") -> int:
    """The blocks that Prometheus makes of what so many servers have said at those times: how many samples."""
    samples: dict[str, list[str]] = {}  # of a metric, since they have to stand together
    for server in range(count):
        for at in times:
            for line in servers.metrics(server, at).splitlines():
                series, value = line.rsplit(" ", 1)
                name, brace, labels = series.partition("{")
                if line.startswith("#") or not re.fullmatch(wanted or ".*", name):
                    continue
                labels = f'{{instance="storage{server}",job="raid"' + (f",{labels}" if brace else "}")
                samples.setdefault(name, []).append(f"{name}{labels} {value} {at}\n")
    text = folder.with_suffix(".txt")
    with text.open("w") as out:
        for name, lines in samples.items():
            out.write(f"# TYPE {name} unknown\n")
            out.writelines(lines)
        out.write("# EOF\n")
    subprocess.run(["promtool", "tsdb", "create-blocks-from", "openmetrics", text, folder], check=True, timeout=900,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    text.unlink()
    return sum(len(lines) for lines in samples.values())


def yesterday(servers: Servers, count: int, folder: Path) -> None:
    """What the rules of growth look up again, around the time that they will ask for."""
    start = int(time.time()) - DAY - LOOKED_BACK
    into_blocks(servers, count, range(start, start + LOOKED_BACK + 3 * WINDOW, LOOKED_BACK), folder, "raid_drive_(info|.*_errors_total)")


def day_on_disk(servers: Servers, folder: Path) -> dict[str, float]:
    """Some servers' day, as scraped every minute, in blocks."""
    start = int(time.time()) // DAY * DAY - 2 * DAY
    count = into_blocks(servers, SAMPLED, range(start, start + DAY, INTERVAL), folder / "blocks")
    size = sum(file.stat().st_size for file in (folder / "blocks").rglob("*") if file.is_file())
    return {"samples": count, "bytes": size, "bytes a sample": size / count, "bytes a server and day": size / SAMPLED}


def row(one: dict[str, Any]) -> str:
    rules = " ".join(f"{group} {seconds:.3f}" for group, seconds in one["rules"].items())
    return (f"{one['servers']} servers, {one['seconds']} s: {one['series']:.0f} series, {one['series of servers'] / one['servers']:.0f} a server; "
            f"{one['samples a second']:.0f} samples/s; memory {one['memory']:.0f} MB, at most {one['peak']:.0f} MB; {one['cores']:.2f} cores\n"
            f"    scrape {1000 * one['scrape']:.1f} ms, 99 % in {1000 * one['scrape 99']:.1f} ms, longest {1000 * one['scrape longest']:.0f} ms; "
            f"{one['scrapes']:.0f} scrapes of {one['expected']:.0f}, {one['failed']:.0f} failed; "
            f"log {one['log bytes a sample']:.1f} bytes a sample\n"
            f"    rules (s): {rules}; {one['rules a minute']:.1f} s a minute in all; {one['late rules']:.0f} turns missed; {one['alerts']:.0f} alerts")


def draw(results: Path, all_of_them: list[dict[str, Any]]) -> None:
    (results / "fleet.dat").write_text("".join(
        f"{one['servers']} {one['memory']} {one['peak']} {one['cores']} {one['rules a minute']} {1000 * one['scrape']}\n" for one in all_of_them))
    subprocess.run(["gnuplot", Path(__file__).resolve().parent.parent / "bench/fleet.gp"], cwd=results, check=True, timeout=60)


def main(programs_folder: str, results_folder: str, *counts: str) -> int:
    programs, results = Path(programs_folder).resolve(), Path(results_folder).resolve()
    resource.setrlimit(resource.RLIMIT_NOFILE, (resource.getrlimit(resource.RLIMIT_NOFILE)[1],) * 2)
    measured: list[dict[str, Any]] = []
    with tempfile.TemporaryDirectory(prefix="fleet.") as name:
        folder = Path(name)
        texts = made_up(programs, folder)
        with Servers(programs, texts, SAMPLED) as servers:
            answer = servers.metrics(1, int(time.time()))
            print(f"a server: {len([line for line in answer.splitlines() if not line.startswith('#')])} series, {len(answer)} bytes a scrape", flush=True)
            if "--without-day" not in counts:
                day = day_on_disk(servers, folder)
                print(f"a day of {SAMPLED} servers in blocks: {day['samples']} samples, {day['bytes a sample']:.2f} bytes a sample, "
                      f"{day['bytes a server and day'] / 1e6:.2f} MB a server", flush=True)
        for count in (int(word) for word in counts if word.isdigit()):
            place = folder / f"prometheus{count}"
            place.mkdir()
            with Servers(programs, texts, count) as servers:
                yesterday(servers, count, place / "series")
                with Prometheus(place, servers.address, count) as prometheus:
                    one = measure(prometheus, count)
                if one is None:
                    print(f"{count} servers: more than {MOST_MEMORY} MB, or Prometheus has ended\n" + (prometheus.folder / "log").read_text()[-2000:])
                    break
                measured.append(one)
                print(row(one), flush=True)
            shutil.rmtree(place)
    if measured:
        measured.sort(key=lambda one: one["servers"])
        (results / "fleet.json").write_text(json.dumps(measured, indent=1))
        draw(results, measured)
    return 0 if len(measured) == len([word for word in counts if word.isdigit()]) else 1


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, end)
    try:
        sys.exit(main(*sys.argv[1:]))
    except KeyboardInterrupt:
        sys.exit(1)
