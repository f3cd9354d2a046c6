#!/usr/bin/env python3
"""What clients that take stock of a server ask of the service, and what that costs it.

    bench/inventory.py BIN DRIVES...

BIN is the folder of mngsrvraidd. Each client runs a few times against the service of a made-up server, through a relay that
counts requests and bytes; processor time is that of the doors, and of the service with the tool's runs."""

import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

TIMES = 10
WALK = Path(__file__).resolve().parent.parent / "tests/product/redfish/walk.py"
ACCOUNT = "monitoring:secret"
STOCK = "/redfish/v1/Systems/1/Storage?$expand=.($levels=3)"
TEMPERATURES = "/redfish/v1/Chassis/1/Drives?$expand=.($levels=2)&$select=Id,EnvironmentMetrics"
HEALTH = "/redfish/v1/Systems/1?$select=Status"
TICK = os.sysconf("SC_CLK_TCK")


class Relay:
    """To the service; counts what passes."""

    def __init__(self, port: int):
        self.to = port
        self.listening = socket.create_server(("127.0.0.1", 0))
        self.port = self.listening.getsockname()[1]
        self.requests = self.connections = self.up = self.down = 0
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self) -> None:
        while True:
            client = self.listening.accept()[0]
            service = socket.create_connection(("127.0.0.1", self.to))
            self.connections += 1
            threading.Thread(target=self._pass, args=(client, service, True), daemon=True).start()
            threading.Thread(target=self._pass, args=(service, client, False), daemon=True).start()

    def _pass(self, source: socket.socket, target: socket.socket, is_up: bool) -> None:
        try:
            while piece := source.recv(65536):
                if is_up:
                    self.up += len(piece)
                    self.requests += len(re.findall(rb"(?:GET|POST|M-POST|DELETE) \S+ HTTP/1\.1\r\n", piece))
                else:
                    self.down += len(piece)
                target.sendall(piece)
            target.shutdown(socket.SHUT_WR)
        except OSError:
            pass


def processor(process: int) -> float:
    """Milliseconds of all its threads, to the nanosecond where they live still."""
    return sum(int(task.read_text().split()[0]) for task in Path(f"/proc/{process}/task").glob("*/schedstat")) / 1e6


def with_children(process: int) -> float:
    """Milliseconds of a process and of those that it has waited for."""
    fields = Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()
    return sum(int(field) for field in fields[11:15]) * 1000 / TICK


def doors_of(service: int) -> int:
    for process in Path("/proc").glob("[0-9]*"):
        try:
            fields = (process / "stat").read_text()
        except OSError:
            continue
        if "(mngsrvraid-doo" in fields and int(fields.rsplit(")", 1)[1].split()[1]) == service:
            return int(process.name)
    raise RuntimeError("the service has no doors")


def curl(port: int, path: str, *more: str) -> list[str]:
    return ["curl", "-gsS", "-m", "20", "-o", "/dev/null", "-u", ACCOUNT, *more, f"http://127.0.0.1:{port}{path}"]


def clients(port: int, folder: Path, tag: str) -> list[tuple[str, list[str]]]:
    wbem = f"http://{ACCOUNT}@127.0.0.1:{port}/root/zorbalt:ZORBALT_MngSrvRaid"
    return [
        ("python3-sushy walks all, with a session", ["/usr/bin/python3", str(WALK), f"http://127.0.0.1:{port}", *ACCOUNT.split(":")]),
        ("$expand of the storage", curl(port, STOCK)),
        ("the same, nothing new: 304", curl(port, STOCK, "-H", f"If-None-Match: {tag}")),
        ("$expand of the temperatures", curl(port, TEMPERATURES)),
        ("health alone", curl(port, HEALTH)),
        ("/raid.json", curl(port, "/raid.json")),
        ("/raid.xml", curl(port, "/raid.xml")),
        ("/metrics", curl(port, "/metrics")),
        ("wbemcli ei ...Health", ["wbemcli", "-nl", "ei", wbem + "Health"]),
        ("wbemcli cm ... GetInfo", ["wbemcli", "cm", wbem, "GetInfo"]),
    ]


def tag_of(port: int, path: str) -> str:
    head = subprocess.run([*curl(port, path), "-D", "-"], check=True, capture_output=True, text=True, timeout=30).stdout
    return re.findall(r"(?im)^etag: (\S+)", head)[0]


def settle(process: int) -> None:
    """Until it does nothing any more."""
    before = -1.0
    while (now := processor(process)) != before:
        before = now
        time.sleep(0.1)


def measure(port: int, service: int, folder: Path) -> None:
    doors = doors_of(service)
    tag = tag_of(port, STOCK)
    relay = Relay(port)
    for name, words in clients(relay.port, folder, tag):
        settle(doors)
        asked, connected, down, began, worked = relay.requests, relay.connections, relay.down, processor(doors), with_children(service)
        start = time.monotonic()
        for _ in range(TIMES):
            done = subprocess.run(words, check=False, capture_output=True, timeout=60, stdin=subprocess.DEVNULL)
            if done.returncode != 0:
                raise RuntimeError(f"{name}: {done.stderr.decode()[-500:]}{done.stdout.decode()[-500:]}")
        seconds = time.monotonic() - start
        settle(doors)
        print(f"| {name} | {(relay.requests - asked) / TIMES:g} | {(relay.connections - connected) / TIMES:g} | "
              f"{(relay.down - down) / TIMES:,.0f} | {(processor(doors) - began) / TIMES:.2f} | "
              f"{(with_children(service) - worked) / TIMES:.0f} | {1000 * seconds / TIMES:.0f} |", flush=True)


def serve(programs: Path, drives: int) -> None:
    with tempfile.TemporaryDirectory(prefix="inventory.") as name:
        folder = Path(name)
        (folder / "server").mkdir()
        (folder / "server/server.conf").write_text(f"version 4.2\ncontrollers 1\ndrives {drives}\n")
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = free.getsockname()[1]
        (folder / "service.toml").write_text(f'host = "made-up"\ninterval = "1d"\nsmart_interval = "0"\nlisten = ["127.0.0.1:{port}"]\n'
                                             f'accounts = "{folder}/accounts"\n')
        subprocess.run([programs / "mngsrvraidd", "passwd", ACCOUNT.split(":")[0], "--accounts", folder / "accounts"],
                       input=ACCOUNT.split(":")[1].encode() + b"\n", check=True, stdout=subprocess.DEVNULL, timeout=60)
        service = subprocess.Popen([programs / "mngsrvraidd", "--config", folder / "service.toml", "--history", folder / "history.db",
                                    "--scenario", folder / "server"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            deadline = time.monotonic() + 30
            while subprocess.run([*curl(port, "/metrics"), "-f"], check=False, stderr=subprocess.DEVNULL, timeout=30).returncode != 0:
                if time.monotonic() > deadline:
                    raise TimeoutError("the service does not answer")
                time.sleep(0.2)
            print(f"{drives} drives\n| client | requests | connections | bytes | doors, ms | service and tool, ms | takes, ms |", flush=True)
            measure(port, service.pid, folder)
        finally:
            service.send_signal(signal.SIGTERM)
            service.wait(30)


if __name__ == "__main__":
    for count in sys.argv[2:]:
        serve(Path(sys.argv[1]).resolve(), int(count))
