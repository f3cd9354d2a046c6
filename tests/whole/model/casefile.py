"""A case: everything that decides how one method call goes, and its form on disk (see README.md).

All text is kept as latin-1 strings: one character is one byte.
"""

import os
from dataclasses import dataclass, field


@dataclass
class Run:
    """What the tool does in one run. `output` None: the tool takes its own result file away."""

    output: str | None = ""
    exit: int = 0
    signal: int = 0


# What the tool does for a command that a case does not know: it rejects it, so that no run is repeated.
UNKNOWN_COMMAND = Run("Error - Invalid input at or near token unknown\n", 1)


@dataclass
class Case:
    method: str = "GetInfo"
    ctrl_no: str | None = "0"
    encl_no: str | None = "0"
    pd_no: str | None = "0"
    root: str = "normal"  # install path kind 0: normal | empty
    cim: str = "normal"  # install path kind 4: normal | empty
    tool: str = "installed"  # installed | missing
    has_authority: str = "yes"  # yes | no: what HasOperatingAuthority says
    app_key: str = ""  # what GetOperatingAuthorityAppKey says
    klass: str = "present"  # the class definition: present | absent
    wrapper: str = "present"  # the provider's library wrapper: present | absent
    library: str = "loads"  # loads | absent | incomplete (one of its entry points is missing)
    create_lib_if: str = "works"  # works | null
    convert_status: int = 0
    convert_text: str = "yes"  # yes | null: the text that a successful conversion yields
    create_null_at: int = 0  # this call of CreateItemDisp, counted from 1, returns null; 0: none
    store_status: int = 0  # status of storing "XmlData"
    base_status: int = 0x80041001  # what the base answers to a method that is not the provider's own
    commands: dict[str, list[Run]] = field(default_factory=dict)  # "vdkcli -v" -> its runs

    def run_of(self, command, number):
        """The run that the tool makes when `command` comes for the `number`th time, counted from 1."""
        runs = self.commands.get(command)
        if not runs:
            return UNKNOWN_COMMAND
        return runs[min(number, len(runs)) - 1]


_TEXT_KEYS = ("method", "ctrl_no", "encl_no", "pd_no", "root", "cim", "tool", "has_authority", "app_key",
              "klass",
              "wrapper", "library", "create_lib_if", "convert_text")
_NUMBER_KEYS = ("convert_status", "create_null_at", "store_status", "base_status")
_TOOL_NAME = "vdkcli "


def file_stem(arguments):
    """The stem of the tool's files for an argument string: every byte but letters and digits becomes '_'."""
    return "".join(c if c.isascii() and c.isalnum() else "_" for c in arguments)


def save(case, folder):
    tool = os.path.join(folder, "tool")
    os.makedirs(tool)
    with open(os.path.join(folder, "case.txt"), "w", encoding="latin-1", newline="\n") as out:
        for key in _TEXT_KEYS:
            value = getattr(case, key)
            if value is not None:
                out.write(f"{key}={value}\n")
        for key in _NUMBER_KEYS:
            out.write(f"{key}={getattr(case, key)}\n")
    with open(os.path.join(tool, "commands.txt"), "w", encoding="latin-1", newline="\n") as out:
        for command in case.commands:
            out.write(command + "\n")
    for command, runs in case.commands.items():
        stem = os.path.join(tool, file_stem(command.removeprefix(_TOOL_NAME)))
        for number, run in enumerate(runs, 1):
            if run.output is not None:
                with open(f"{stem}.{number}.out", "wb") as out:
                    out.write(run.output.encode("latin-1"))
            if run.output is None or run.exit or run.signal:
                with open(f"{stem}.{number}.exit", "w", encoding="ascii") as out:
                    out.write(f"signal {run.signal}\n" if run.signal else f"{run.exit}\n")


def load(folder):
    case = Case(ctrl_no=None, encl_no=None, pd_no=None)
    with open(os.path.join(folder, "case.txt"), encoding="latin-1", newline="\n") as lines:
        for line in lines:
            key, value = line.removesuffix("\n").split("=", 1)
            if key in _TEXT_KEYS:
                setattr(case, key, value)
            elif key in _NUMBER_KEYS:
                setattr(case, key, int(value))
            else:
                raise ValueError(f"{folder}: unknown key {key}")
    tool = os.path.join(folder, "tool")
    with open(os.path.join(tool, "commands.txt"), encoding="latin-1", newline="\n") as lines:
        commands = [line.removesuffix("\n") for line in lines]
    for command in commands:
        case.commands[command] = _load_runs(os.path.join(tool, file_stem(command.removeprefix(_TOOL_NAME))))
    return case


def _load_runs(stem):
    runs = []
    while True:
        base = f"{stem}.{len(runs) + 1}"
        has_output, has_exit = os.path.exists(base + ".out"), os.path.exists(base + ".exit")
        if not has_output and not has_exit:
            return runs
        run = Run(None)
        if has_output:
            with open(base + ".out", "rb") as file:
                run.output = file.read().decode("latin-1")
        if has_exit:
            with open(base + ".exit", encoding="ascii") as file:
                words = file.read().split()
            if words[0] == "signal":
                run.signal = int(words[1])
            else:
                run.exit = int(words[0])
        runs.append(run)
