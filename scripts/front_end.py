#!/usr/bin/env python3
"""A pass of the second compiler's front end over everything, for its warnings: front_end.py BUILD

BUILD is a configured build directory whose translation units are joined. What is delivered is compiled source by
source, behind the standard's headers, which shows that each includes what it needs of this tree; tests, fuzzers and
benchmarks are compiled as they are joined."""
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
# What only concerns code that the front end does not make; sources that share compiled headers may not differ in it.
MADE_BEHIND = re.compile(r"-O.$|-fPI[CE]$|-fvisibility")
STANDARD = re.compile(r"^#include <[a-z_]+>$", re.MULTILINE)


def parts(file: Path) -> list[Path]:
    """What a joined translation unit is made of."""
    return [Path(part) for part in JOINED.findall(file.read_text())] if file.suffix == ".cxx" else [file]


def is_delivered(source: Path) -> bool:
    return source.relative_to(ROOT).parts[0] in DELIVERED


def compiler_words(entry: dict[str, str]) -> list[str]:
    """Compiler and flags, for a source at their end."""
    words = shlex.split(entry["command"])
    del words[words.index("-o"):words.index("-o") + 2]
    return [word for word in words if word not in ("-c", entry["file"])]


def compile_standard_headers(delivered: list[tuple[list[str], Path]], header: Path) -> list[str]:
    """Compiles those that the sources name, once; the words with which a source is compiled behind them."""
    names = {name for _, source in delivered for name in STANDARD.findall(source.read_text())}
    header.write_text("\n".join(sorted(names)) + "\n")
    compiled = f"{header}.pch"
    subprocess.run([*delivered[0][0], "-x", "c++-header", header, "-o", compiled], check=True)
    return ["-include-pch", compiled]


def commands(build: Path) -> list[list[str]]:
    delivered, others = [], []
    for entry in json.loads((build / "compile_commands.json").read_text()):
        file = Path(entry["file"])
        if "cmake_pch" in file.name:  # made already
            continue
        words = compiler_words(entry)
        if is_delivered(parts(file)[0]):
            words = [word for word in words if not MADE_BEHIND.match(word)]
            delivered += [(words, source) for source in parts(file)]
        else:
            others.append((words, file))
    behind = compile_standard_headers(delivered, build / "standard.hxx")
    return ([[*words, "-fsyntax-only", str(file)] for words, file in others] +
            [[*words, *behind, "-fsyntax-only", str(source)] for words, source in delivered])


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
