#!/usr/bin/env python3
"""Counts the instructions of the parts of bench_instructions by callgrind, and says by how much they moved:

    instructions.py PROGRAM            # exit status 1 where a part costs more than 5 % more than recorded
    instructions.py PROGRAM --record   # records what is counted
"""

import os
import pathlib
import re
import subprocess
import sys

RECORD = pathlib.Path(__file__).with_name("instructions.txt")
TOLERANCE = 0.05

# The C library chooses its string operations by the processor; without these they are the same everywhere.
ANY_PROCESSOR = "glibc.cpu.hwcaps=" + ",".join(
    f"-{name}" for name in ("AVX2", "AVX512F", "AVX512VL", "AVX512BW", "ERMS", "FSRM", "SSE4_2", "SSSE3", "BMI2", "MOVBE"))


def count(program, part):
    ended = subprocess.run(
        ["valgrind", "--tool=callgrind", "--instr-atstart=no", "--callgrind-out-file=/dev/null", program, part],
        env={**os.environ, "GLIBC_TUNABLES": ANY_PROCESSOR}, capture_output=True, text=True, check=False)
    collected = re.search(r"Collected : (\d+)", ended.stderr)
    if ended.returncode != 0 or not collected:
        raise SystemExit(f"{part} cannot be counted:\n{ended.stderr}")
    return int(collected[1])


def main():
    program = sys.argv[1]
    parts = subprocess.run([program], capture_output=True, text=True, check=True).stdout.split()
    counts = {part: count(program, part) for part in parts}
    if sys.argv[2:] == ["--record"]:
        RECORD.write_text("".join(f"{part} {number}\n" for part, number in counts.items()))
        return 0
    recorded = {part: int(number) for part, number in (line.split() for line in RECORD.read_text().splitlines())}
    print(f"{'part':<18} {'recorded':>12} {'now':>12}  change")
    has_grown = set(recorded) != set(counts)
    for part, number in counts.items():
        change = number / recorded[part] - 1 if part in recorded else float("nan")
        has_grown |= change > TOLERANCE
        print(f"{part:<18} {recorded.get(part, 0):>12,} {number:>12,} {change:>+7.1%}")
    if has_grown:
        print(f"More than {TOLERANCE:.0%} more, or other parts. If that is meant: {sys.argv[0]} {program} --record")
    return 1 if has_grown else 0


sys.exit(main())
