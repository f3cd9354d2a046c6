#!/usr/bin/env python3
"""Reads a report as a plain script would, into the same list of items as the module's readers.

    plain_reader.py drives report.txt           # seconds of processor time, and the number of items
    plain_reader.py drives report.txt --items   # the items: parent, name, value and valid flag, by tabs

For well-formed reports: what is wrong in one is not looked for.
"""

import sys
import time

GENERAL = "### General Information ###"


def trim(text):
    return text.lstrip(" \t").rstrip(" \t\r\n")


def key_and_value(line):
    key, _, value = line.partition(":")
    return trim(key), trim(value)


def is_key_line(line):
    return line.find(":") > 0


def section(lines):
    """The key lines up to the next blank line."""
    for line in lines:
        line = trim(line)
        if not line:
            return
        if is_key_line(line):
            yield key_and_value(line)


def read_controllers(lines):
    items = []
    held = []
    parent = ""
    for line in lines:
        if line.startswith("RAID Controller") and ":" in line:
            items.append(("", "Controller Information", "", "TRUE"))
            parent = "Controller Information"
            held.append((GENERAL, "Controller No.", key_and_value(line)[1], "TRUE"))
        elif line.startswith("### "):
            parent = trim(line)
            items.append(("Controller Information", parent, "", "TRUE"))
            if parent == GENERAL:
                items += held
                held.clear()
            elif parent == "### Firmware/BIOS/Driver Information ###":
                items += [(parent, key, value, "TRUE") for key, value in section(lines)]
            elif parent == "### Controller Settings Information ###":
                items += [(parent, key, value, "TRUE") for key, value in section(lines)]
        elif is_key_line(line):
            key, value = key_and_value(line)
            items.append((parent, key, value, "TRUE"))
    return items


def logical_drive_fields(parent, text):
    name, capacity, rest = text.split(",", 2)
    state = rest.partition(",")[0] if "," in rest else rest.partition(")")[0]
    return [
        (parent, "Name", trim(name), "TRUE"),
        (parent, "Capacity", trim(capacity), "TRUE"),
        (parent, "State", trim(state), "TRUE"),
    ]


def read_general(lines, items, settings):
    settings_title = "### LD Settings Information ###"
    place = None
    for line in lines:
        line = trim(line)
        if not line:
            items.append((GENERAL, "Associated CacheCade LD", "", "FALSE"))
            return
        if line.startswith("Associated CacheCade LD"):
            break
        if is_key_line(line):
            key, value = key_and_value(line)
            if key == "Access Policy":
                settings.append((settings_title, key, value, "TRUE"))
                continue
            if key == "# of PD":
                place = len(items)
            items.append((GENERAL, key, value, "TRUE"))
    stripe_size_place = len(items) if place is None else place
    cache = "Associated CacheCade LD"
    cached = []
    for line in lines:
        line = trim(line)
        if not line:
            break
        cached.append((GENERAL, cache, "", "TRUE"))
        number, _, fields = line.partition("(")
        cached.append((cache, "LD No.", trim(number), "TRUE"))
        cached += logical_drive_fields(cache, fields)
    items += cached
    items.insert(stripe_size_place, (GENERAL, "Stripe Size", "", "FALSE"))
    settings.append((settings_title, "Access Policy", "", "FALSE"))


def read_logical_drives(lines):
    root = "Logical Drive Information"
    items = []
    group = []
    logical_drives = []
    settings = []
    parent = ""
    for line in lines:
        if line.startswith(("RG", "scRG")):
            items.append(("", root, "", "TRUE"))
            parent = root
            for line in lines:
                line = trim(line)
                if not is_key_line(line):
                    break
                group.append((GENERAL, *key_and_value(line), "TRUE"))
            if not line:
                continue
        if line.startswith("RAID Controller"):
            continue
        if line.startswith("### "):
            parent = trim(line)
            items.append((root, parent, "", "TRUE"))
            if parent == GENERAL:
                items += group + logical_drives
                group.clear()
                logical_drives.clear()
                read_general(lines, items, settings)
            elif parent == "### LD Settings Information ###":
                items += settings
                settings.clear()
        elif ">LD" in line:
            number, _, fields = line.partition("(")
            logical_drives.append((GENERAL, "LD List", "", "TRUE"))
            logical_drives.append(("LD List", "LD No.", trim(number[1:]), "TRUE"))
            logical_drives += logical_drive_fields("LD List", fields)
        elif ">>PD" in line:
            items.append((parent, "PD List", "", "TRUE"))
            items.append(("PD List", "PD No.", trim(line.partition("(")[0][2:]), "TRUE"))
            items += [("PD List", key, value, "TRUE") for key, value in section(lines)]
        elif is_key_line(line):
            items.append((parent, *key_and_value(line), "TRUE"))
    return items


BASIC_STATUS = {
    **dict.fromkeys(("ONLINE", "COPYBACK", "Unconfig GOOD", "HOT SPARE"), "NO ERROR"),
    **dict.fromkeys(("OFFLINE", "Unconfig BAD", "FAILED"), "ERROR"),
    "REBUILD": "REBUILD",
}


def membership_items(drive, membership):
    """Of a drive whose group nobody has looked up."""
    items = [(GENERAL, "PD No.", drive, "TRUE")]
    if membership.startswith("LD"):
        return items + [(GENERAL, "RG No.", "-", "TRUE"),
                        (GENERAL, "LD No.", membership.partition(")")[0], "TRUE")]
    for kind in ("GHS", "RLD"):
        if membership.startswith(kind):
            return items + [(GENERAL, "RG No.", "-", "TRUE"), (GENERAL, "LD No.", kind, "TRUE")]
    if membership.startswith("DHS"):
        return items + [(GENERAL, "RG No.", trim(membership[membership.find("RG"):-1]), "TRUE"),
                        (GENERAL, "LD No.", "DHS", "TRUE")]
    return items + [(GENERAL, "LD No.", "None", "TRUE"), (GENERAL, "RG No.", "-", "TRUE")]


def read_drives(lines, read_smart=None):
    root = "Physical Drive Information"
    items = []
    held = []
    interface = ""
    lines = iter(lines)
    line = next(lines, None)
    while line is not None:
        if line.startswith("PD"):
            items.append(("", root, "", "TRUE"))
            drive, _, membership = trim(line).partition("(")
            held += membership_items(trim(drive), membership)
        elif line.startswith("RAID Controller") and is_key_line(line):
            items.append(("", *key_and_value(line), "TRUE"))
        elif line.startswith("### "):
            title = trim(line)
            if title == GENERAL:
                items.append((root, title, "", "TRUE"))
                items += held
                held.clear()
                has_temperature = False
                place = None
                for key, value in section(lines):
                    if key == "PD Status":
                        items.append((title, key, BASIC_STATUS.get(value, "UNKNOWN"), "TRUE"))
                        key = "PD Status(Detail)"
                    elif key == "Temperature":
                        has_temperature = True
                    elif key == "Power Status":
                        place = len(items)
                    elif key == "Interface Type":
                        interface = value
                    items.append((title, key, value, "TRUE"))
                if not has_temperature:
                    items.insert(len(items) if place is None else place, (title, "Temperature", "", "FALSE"))
            elif title == "### Slot Information ###":
                title = "### Enclosure Properties Information ###"
                items.append((root, title, "", "TRUE"))
                items.append((title, "Enclosure ID", "", "FALSE"))
                items += [(title, key, value, "TRUE") for key, value in section(lines)]
            elif title.startswith("### SMART Information ###"):
                if read_smart:
                    items.append((root, title, "", "TRUE"))
                    read_smart(lines, title, interface, items)
                else:
                    for line in lines:
                        line = trim(line)
                        if line.startswith("PD"):
                            break
                    else:
                        line = None
                    continue
            else:
                items.append((root, title, "", "TRUE"))
        line = next(lines, None)
    return items


def read_sas_smart(lines, title, _interface, items):
    items += [(title, key, value, "TRUE") for key, value in section(lines)]
    header = trim(next(lines))
    columns = header.split()
    starts = []
    at = 0
    for column in columns:
        at = header.index(column, at)
        starts.append(at)
        at += len(column)
    slices = [slice(start, end) for start, end in zip(starts, starts[1:] + [None])]
    next(lines)
    head = ""
    for line in lines:
        line = trim(line)
        if line.startswith("[Head"):
            head = line
        elif line:
            items.append((title, "SMART Detail(SAS)", "", "TRUE"))
            cells = [line[each] for each in slices]
            cells[0] = head + cells[0]
            items += [("SMART Detail(SAS)", column, trim(cell), "TRUE") for column, cell in zip(columns, cells)]


READERS = {
    "controllers": read_controllers,
    "logical-drives": read_logical_drives,
    "drives": read_drives,
    "drives-and-smart": read_drives,
    "smart-table": lambda lines: read_drives(lines, read_sas_smart),
}


def main():
    kind, path = sys.argv[1:3]
    start = time.process_time()
    with open(path, encoding="utf-8", errors="surrogateescape") as lines:
        items = READERS[kind](lines)
    elapsed = time.process_time() - start
    if sys.argv[3:] == ["--items"]:
        for item in items:
            print("\t".join(item))
    else:
        print(elapsed, len(items))


main()
