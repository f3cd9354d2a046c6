#!/usr/bin/env python3
"""Whether the rooms can include what the README's table says, and nothing else: rooms.py README ROOMS

ROOMS has a line a room, "product/views=DIRECTORY;DIRECTORY": where the compiler looks for headers in that room."""
import re
import sys
from pathlib import Path

ROW = re.compile(r"\|[^|]*\| `(?P<room>[a-z]+)/` \|[^|]*\|(?P<knows>[^|]*)\|$")


def table(readme: str) -> dict[str, set[str]]:
    rows = filter(None, (ROW.match(line) for line in readme.splitlines()))
    return {row["room"]: set(re.findall(r"`([a-z]+)/`", row["knows"])) for row in rows}


def build(rooms: str, root: Path) -> dict[str, set[str]]:
    """A room with several targets knows what any of them does."""
    known: dict[str, set[str]] = {}
    for line in rooms.splitlines():
        folder, directories = line.split("=")
        room = folder.split("/")[1]
        for directory in map(Path, filter(None, directories.split(";"))):
            if directory.is_relative_to(root):  # "product/views/include"; anything above it is a room's name no more
                known.setdefault(room, set()).add("/".join(directory.relative_to(root).parts[1:2]))
        known.setdefault(room, set()).discard(room)
    return known


def main(readme: Path, rooms: Path) -> int:
    said, done = table(readme.read_text()), build(rooms.read_text(), readme.resolve().parent)
    differences = [f"{room}: the README says {sorted(said.get(room, []))}, the build {sorted(done.get(room, []))}"
                   for room in sorted(said.keys() | done.keys()) if said.get(room) != done.get(room)]
    print("\n".join(differences) or f"{len(said)} rooms are as the README says")
    return 1 if differences or not said else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]), Path(sys.argv[2])))
