#!/usr/bin/env python3
"""Whether the tests notice it when the module's report readers are changed: see tests/README.md.

Makes one small change after the other to a copy of a source, builds the test programs with it and runs them. Lists
the changes that no test noticed. The checkout stays as it is."""
import argparse
import json
import os
import queue
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import time
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import NamedTuple

from mutations import Mutant, mutants

ROOT = Path(__file__).resolve().parent.parent
NOT_OBSERVABLE = ROOT / "scripts" / "mutants-not-observable.txt"
SOURCES = [*sorted((ROOT / "module" / "readers").glob("*.cpp")), ROOT / "module" / "report" / "CMSRAID_InfoGetter.cpp"]
# In the order of asking: nearest first, since most changes are noticed there.
PROGRAMS = {"readers": ["readers_test", "provider_test"], "report": ["report_test", "readers_test", "provider_test"]}
SHORTEST_LIMIT_S = 60
LIMIT_CPU_S = 10
LIMIT_MEMORY = 2 << 30
NOTICED, LEFT, NOT_COMPILED = "noticed", "LEFT", "not compiled"


class Test(NamedTuple):
    name: str
    seconds: float


class Workshop:
    """A build directory whose objects all mutants share, with a bench (folder) for each job."""

    def __init__(self, build: Path, jobs: int):
        self.build = build
        self.jobs = jobs
        self.benches: queue.Queue[Path] = queue.Queue()
        self.tests: dict[str, list[Test]] = {}
        self.limit_s = SHORTEST_LIMIT_S
        for number in range(jobs):
            bench = build / "mutants" / str(number)
            shutil.rmtree(bench, ignore_errors=True)
            bench.mkdir(parents=True)
            self.benches.put(bench)

    def make(self, programs: list[str]) -> None:
        if not (self.build / "build.ninja").exists():
            subprocess.run(["cmake", "-S", ROOT, "-B", self.build, "-G", "Ninja", "-DCMAKE_CXX_COMPILER=g++",
                            "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0"],
                           check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["ninja", "-C", self.build, f"-j{self.jobs}", *programs], check=True,
                       stdout=subprocess.DEVNULL)
        entries = json.loads((self.build / "compile_commands.json").read_text())
        self.compile_commands = {entry["file"]: shlex.split(entry["command"]) for entry in entries}
        self.link_commands = {program: self._link_command(program) for program in programs}

    def _link_command(self, program: str) -> list[str]:
        last = subprocess.run(["ninja", "-C", self.build, "-t", "commands", program], check=True, text=True,
                              capture_output=True).stdout.splitlines()[-1]
        command = shlex.split(next(part for part in last.split(" && ") if f" -o bin/{program} " in part))
        return [word.replace(r"\$ORIGIN/..", str(self.build)) for word in command]  # the mutant stands elsewhere

    def headers_of(self, source: Path) -> Path:
        """A header with the source's includes, compiled once for all of its mutants."""
        header = self.build / "mutants" / f"{source.stem}.h"
        header.write_text("".join(line + "\n" for line in source.read_text().splitlines()
                                  if line.startswith("#include")))
        subprocess.run([*self._flags(source), "-x", "c++-header", header, "-o", f"{header}.gch"], check=True)
        return header

    def _flags(self, source: Path) -> list[str]:
        words = self.compile_commands[str(source)]
        at = words.index("-o")
        return [word for word in words[:at] if not word.startswith(("-W", "-O"))] + ["-O0", "-w"]

    def time_tests(self, programs: list[str]) -> None:
        """Runs the tests as they are, all of which must pass."""
        bench = self.benches.get()
        for program in programs:
            report = bench / "tests.json"
            start = time.monotonic()
            if self._run([self.build / "bin" / program, f"--gtest_output=json:{report}"], bench, None) != 0:
                sys.exit(f"{program} fails without any change.")
            self.limit_s = max(self.limit_s, 5 * (time.monotonic() - start))
            self.tests[program] = [Test(f"{suite['name']}.{test['name']}", float(test["time"].rstrip("s")))
                                   for suite in json.loads(report.read_text())["testsuites"]
                                   for test in suite["testsuite"]]
        self.benches.put(bench)

    def stages(self, program: str, source: Path) -> list[str]:
        """The program's tests in portions: those of the source's own suite first, and of these the quick ones."""
        own_suite = source.stem.removeprefix("CMSRAID_") + "Test."
        tests = self.tests[program]
        mean = sum(test.seconds for test in tests) / len(tests)
        portions: dict[tuple[bool, bool], list[str]] = {}
        for test in tests:
            portions.setdefault((not test.name.startswith(own_suite), test.seconds > mean), []).append(test.name)
        return [":".join(names) for _, names in sorted(portions.items())]

    def judge(self, mutant: Mutant, source: Path, headers: Path) -> str:
        bench = self.benches.get()
        try:
            return self._judge(mutant, source, headers, bench)
        finally:
            self.benches.put(bench)

    def _judge(self, mutant: Mutant, source: Path, headers: Path, bench: Path) -> str:
        changed, compiled, linked = bench / source.name, bench / "mutant.o", bench / "mutant_test"
        changed.write_text(mutant.text)
        if self._run([*self._flags(source), "-include", headers, "-c", changed, "-o", compiled], bench, None) != 0:
            return NOT_COMPILED
        for program in PROGRAMS[source.parent.name]:
            # In front of the archives, so that the linker does not look for the source's symbols there.
            words = list(self.link_commands[program])
            words[words.index("-o") + 1] = str(linked)
            if self._run([words[0], compiled, *words[1:], "-fuse-ld=gold"], bench, None, self.build) != 0:
                return NOT_COMPILED
            for stage in self.stages(program, source):
                if self._run(["prlimit", f"--cpu={LIMIT_CPU_S}", linked, "--gtest_fail_fast", "--gtest_brief=1",
                              f"--gtest_filter={stage}"], bench, self.limit_s) != 0:
                    return NOTICED
        return LEFT

    @staticmethod
    def _run(command: list, bench: Path, limit_s: float | None, where: Path | None = None) -> int:
        """Exit status; a program that hangs is ended, and counts as failed. Its temporary files go with it."""
        temporary = bench / "tmp"
        temporary.mkdir()
        process = subprocess.Popen(command, cwd=where or bench, start_new_session=True, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   env={**os.environ, "TMPDIR": str(temporary)})
        try:
            return process.wait(limit_s)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            return process.wait()
        finally:
            shutil.rmtree(temporary, ignore_errors=True)


def not_observable() -> set[tuple[str, str, str, str]]:
    """Keys of mutants. An entry is three lines: "file function: line", "-> change" and "why: reason"."""
    lines = [line.strip() for line in NOT_OBSERVABLE.read_text().splitlines()
             if line.strip() and not line.startswith("#")]
    keys = set()
    for where, change, why in zip(*[iter(lines)] * 3, strict=True):
        place, original = where.split(": ", 1)
        if not why.startswith("why: "):
            sys.exit(f"{NOT_OBSERVABLE.name} gives no reason for: {where}")
        keys.add((*place.split(" "), original, change.removeprefix("-> ")))
    return keys


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("sources", nargs="*", metavar="FILE[:LINE]", help="default: module/readers/*.cpp and their base")
    parser.add_argument("--build", type=Path, default=ROOT / "build" / "mutate", help="a build directory of its own")
    parser.add_argument("--jobs", type=int, choices=(1, 2), default=2)
    parser.add_argument("--list", action="store_true", help="only list the changes")
    parser.add_argument("--verbose", action="store_true", help="a line for every change")
    return parser.parse_args()


def chosen_mutants(sources: list[str], excused: set[tuple[str, str, str, str]]) -> list[Mutant]:
    chosen = []
    for name in sources or map(str, SOURCES):
        file, _, line = name.partition(":")
        path = Path(file).resolve().relative_to(ROOT)
        chosen += [mutant for mutant in mutants(str(path), (ROOT / path).read_text())
                   if not line or mutant.line == int(line)]
        made = Counter(mutant.key for mutant in chosen)
        for key in excused:
            if not line and key[0] == str(path) and made[key] != 1:
                sys.exit(f"An entry of {NOT_OBSERVABLE.name} fits {made[key]} changes, not one: {key}")
    return [mutant for mutant in chosen if mutant.key not in excused]


def describe(mutant: Mutant) -> str:
    return f"{mutant.file}:{mutant.line} {mutant.function}: {mutant.original}\n    -> {mutant.change}"


def main() -> int:
    options = arguments()
    todo = chosen_mutants(options.sources, not_observable())
    if options.list or not todo:
        print("\n".join(map(describe, todo)))
        return 0
    resource.setrlimit(resource.RLIMIT_AS, (LIMIT_MEMORY, LIMIT_MEMORY))
    workshop = Workshop(options.build.resolve(), options.jobs)
    sources = {mutant.file: ROOT / mutant.file for mutant in todo}
    programs = sorted({program for source in sources.values() for program in PROGRAMS[source.parent.name]})
    workshop.make(programs)
    workshop.time_tests(programs)
    headers = {file: workshop.headers_of(source) for file, source in sources.items()}
    if todo:  # A way of building that fails by itself would pass for many good tests.
        source = sources[todo[0].file]
        unchanged = todo[0]._replace(text=source.read_text())
        if workshop.judge(unchanged, source, headers[todo[0].file]) != LEFT:
            sys.exit(f"{source} is taken for changed as it is.")
    before = os.times()

    def judge(mutant: Mutant) -> str:
        verdict = workshop.judge(mutant, sources[mutant.file], headers[mutant.file])
        if options.verbose:
            print(f"{verdict}: {describe(mutant)}", flush=True)
        return verdict

    with ThreadPoolExecutor(options.jobs) as pool:
        verdicts = list(pool.map(judge, todo))
    spent = os.times()
    left = [mutant for mutant, verdict in zip(todo, verdicts) if verdict == LEFT]
    print("No test noticed:" if left else "Tests noticed every change.", *map(describe, left), sep="\n")
    compiled = len(todo) - verdicts.count(NOT_COMPILED)
    seconds = spent.children_user + spent.children_system - before.children_user - before.children_system
    print(f"{len(todo)} made, {compiled} compiled, {verdicts.count(NOTICED)} noticed, {len(left)} left; "
          f"{seconds / max(1, len(todo)):.1f} CPU seconds each")
    return 1 if left else 0


if __name__ == "__main__":
    sys.exit(main())
