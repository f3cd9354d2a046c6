#!/usr/bin/env python3
"""Whether a whole run of the tests leaves anything behind: remains.py begin|end FOLDER

FOLDER is the run's directory for temporary files, and so marks its processes, too. At the end it has to be empty, and
no process may be left that was told of it. What is left is named, and then removed."""
import os
import shutil
import signal
import sys
from pathlib import Path


def begin(folder: Path) -> int:
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    folder.chmod(0o1777)  # for tests that become somebody else
    return 0


def processes(folder: Path) -> list[int]:
    mark = f"TMPDIR={folder}".encode()
    found = []
    for environment in Path("/proc").glob("[0-9]*/environ"):
        pid = int(environment.parent.name)
        try:
            if pid != os.getpid() and mark in environment.read_bytes().split(b"\0"):
                found.append(pid)
        except OSError:  # gone meanwhile, or somebody else's
            continue
    return found


def end(folder: Path) -> int:
    left = [f"file or folder {path}" for path in sorted(folder.iterdir())]
    for pid in processes(folder):
        words = Path(f"/proc/{pid}/cmdline").read_bytes().replace(b"\0", b" ").decode(errors="replace")
        left.append(f"process {pid}: {words}")
        os.kill(pid, signal.SIGKILL)
    shutil.rmtree(folder)
    print("\n".join(f"left behind: {what}" for what in left) or "nothing is left behind")
    return 1 if left else 0


if __name__ == "__main__":
    sys.exit({"begin": begin, "end": end}[sys.argv[1]](Path(sys.argv[2])))
