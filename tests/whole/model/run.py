"""Makes random cases, runs them through the module of a build tree and compares.

    python3 run.py --build build/release --seed 7 --count 2000
    python3 run.py --build build/release --cases CASES       cases that are there already

With --keep the cases and observations stay in that folder. The exit status is 0 only when the module and
the model agree on every case.
"""

import argparse
import os
import subprocess
import sys
import tempfile
import time

import cases
import casefile
import compare


def generate(seed, first, count, folder):
    for number in range(first, first + count):
        casefile.save(cases.make(seed, number), os.path.join(folder, f"{number:06}"))


def replay(build, case_folder, observations):
    program = os.path.join(build, "bin", "model_replay")
    return subprocess.run([program, case_folder, observations], check=False).returncode


def run(arguments, folder):
    case_folder = arguments.cases or os.path.join(folder, "cases")
    observations = os.path.join(folder, "observations")
    if not arguments.cases:
        generate(arguments.seed, arguments.first, arguments.count, case_folder)
    start = time.monotonic()
    status = replay(os.path.abspath(arguments.build), case_folder, observations)
    print(f"seed {arguments.seed}: replayed in {time.monotonic() - start:.1f} s", flush=True)
    if status != 0:
        print(f"the replay ended with {status}")
    agree = compare.compare(case_folder, observations, arguments.show)
    return 0 if agree and status == 0 else 1


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", required=True, help="the build tree")
    parser.add_argument("--seed", default="1")
    parser.add_argument("--first", type=int, default=0)
    parser.add_argument("--count", type=int, default=1000)
    parser.add_argument("--cases", help="a folder of cases to run instead of random ones")
    parser.add_argument("--keep", help="a new folder for cases and observations")
    parser.add_argument("--show", type=int, default=20, help="cases whose differences are printed")
    arguments = parser.parse_args()
    if arguments.keep:
        os.makedirs(arguments.keep)
        return run(arguments, arguments.keep)
    with tempfile.TemporaryDirectory(prefix="replay-") as folder:
        return run(arguments, folder)


if __name__ == "__main__":
    sys.exit(main())
