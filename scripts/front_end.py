#!/usr/bin/env python3
"""A pass of the second compiler's front end over everything, for its warnings: front_end.py BUILD

BUILD is a configured build directory whose translation units are joined. What is delivered is compiled source by
source, which shows that each includes what it needs; tests, fuzzers and benchmarks are compiled as they are joined."""
import json
import os
import re
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
DELIVERED = ("module", "portable", "product")
JOINED = re.compile(r'#include "(.+\.cpp)"')


def sources(file: Path) -> list[Path]:
    """What a joined translation unit is made of, where it is delivered; else the unit itself."""
    if "cmake_pch" in file.name:  # made already
        return []
    parts = [Path(part) for part in JOINED.findall(file.read_text())] if file.suffix == ".cxx" else [file]
    return parts if parts[0].relative_to(ROOT).parts[0] in DELIVERED else [file]


def commands(build: Path) -> list[list[str]]:
    wanted = []
    for entry in json.loads((build / "compile_commands.json").read_text()):
        words = shlex.split(entry["command"])
        del words[words.index("-o"):words.index("-o") + 2]
        wanted += [[str(source) if word == entry["file"] else word for word in words] + ["-fsyntax-only"]
                   for source in sources(Path(entry["file"]))]
    return wanted


def run(command: list[str]) -> bool:
    done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True)
    print(done.stderr, end="", flush=True)
    return done.returncode == 0


def main(build: Path) -> int:
    wanted = commands(build)
    with ThreadPoolExecutor(os.cpu_count()) as workers:
        failed = sum(not good for good in workers.map(run, wanted))
    print(f"{len(wanted)} passes, {failed} failed")
    return 1 if failed or not wanted else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
