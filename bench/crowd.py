#!/usr/bin/env python3
"""Keeps clients at a server that do little, and measures what that does to others and to the process.

    bench/crowd.py idle 10000 PORT PROCESS DRIVE    connected, saying nothing after one answer
    bench/crowd.py slow 1000 PORT PROCESS DRIVE     sending a request, a byte a second

PROCESS is that of the doors, DRIVE the path of one. While the crowd is there, one client more asks for /healthz and the
drive, over and over, on a connection of its own each; then everybody goes. Prints the times, and the resident memory
before, with and after it.
"""

import resource
import socket
import statistics
import sys
import time

REQUEST = b"GET /healthz HTTP/1.1\r\nHost: localhost\r\nX-Filler: " + b"x" * 400 + b"\r\n\r\n"
SECONDS = 10


def memory(process):
    with open(f"/proc/{process}/status", encoding="ascii") as status:
        for line in status:
            if line.startswith("VmRSS:"):
                return int(line.split()[1]) / 1024
    raise RuntimeError("no resident memory")


def connect(port):
    one = socket.create_connection(("127.0.0.1", port), timeout=30)
    one.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    return one


def ask(one, path):
    one.sendall(f"GET {path} HTTP/1.1\r\nHost: localhost\r\n\r\n".encode())
    answer = b""
    while b"\r\n\r\n" not in answer:
        more = one.recv(65536)
        if not more:
            raise RuntimeError(f"no answer to {path}")
        answer += more
    head, body = answer.split(b"\r\n\r\n", 1)
    size = int(head.split(b"Content-Length: ")[1].split(b"\r\n")[0])
    while len(body) < size:
        body += one.recv(65536)
    return head


def measure(port, path, times):
    with connect(port) as one:
        start = time.perf_counter()
        head = ask(one, path)
        times.append((time.perf_counter() - start) * 1000)
    if b" 200 " not in head.split(b"\r\n")[0]:
        raise RuntimeError(head)


def main():
    kind, count, port, process = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4])
    resource.setrlimit(resource.RLIMIT_NOFILE, (resource.getrlimit(resource.RLIMIT_NOFILE)[1],) * 2)
    paths = ["/healthz", sys.argv[5]]
    for path in paths:
        measure(port, path, [])
    before = memory(process)
    alone, times = [], []
    for _ in range(500):
        measure(port, paths[len(alone) % 2], alone)

    crowd = []
    for _ in range(count):
        crowd.append(connect(port))
    if kind == "idle":
        for each in crowd:
            ask(each, "/healthz")
    end = time.monotonic() + SECONDS
    position, due = 0, time.monotonic()
    while time.monotonic() < end:
        if kind == "slow" and time.monotonic() >= due:
            for each in crowd:
                each.sendall(REQUEST[position:position + 1])
            position, due = position + 1, due + 1
        measure(port, paths[len(times) % 2], times)
        time.sleep(0.005)
    meanwhile = memory(process)
    for each in crowd:
        each.close()
    time.sleep(2)
    for name, values in (("alone", alone), (f"{count} {kind}", times)):
        values.sort()
        print(f"{name}: {len(values)} answers, median {statistics.median(values):.2f} ms, "
              f"99 % in {values[len(values) * 99 // 100]:.2f} ms, longest {values[-1]:.2f} ms")
    print(f"resident: {before:.1f} MB before, {meanwhile:.1f} MB with them, {memory(process):.1f} MB after")


if __name__ == "__main__":
    main()
