"""What one method call of the provider must do, written a second time and without a look at the module.

`predict(case)` walks through one call of ExecMethodAsync and returns an `Outcome`: items handed to the
conversion, tool runs, pauses, trace lines, return value, status, result files left behind. The replay
compares it with what the module did for the same case.

Text is bytes as latin-1 strings. Where the machine decides a part of a trace line, a placeholder stands:
<DIR> and <TID> in result-file paths, <WHAT> behind the fixed beginning of an exception's text, <DLERROR>
for the loader's own words, <HR> for a framework status.
"""

import json
import sys
from contextlib import ExitStack, contextmanager
from dataclasses import asdict, dataclass, field

import casefile

OK = 0
FAILED = 0x80000001
EXCEPTION = 0x80000002
NO_AUTHORITY = 0x00000011
NOT_INSTALLED = 0x000000A0
RUN_FAILED = 0x000000A1
WBEM_FAILED = 0x80041001
WBEM_NOT_SUPPORTED = 0x8004100C

MESSAGE = 0  # "level" of a framework trace message in Outcome.trace
RESULT, FAILURE, FRAME, CAUGHT = 1, 2, 4, 8

TITLE_BEGIN = "### "
GENERAL = "### General Information ###"
CTRL_HEAD = "RAID Controller"
LD_NO, PD_NO, RG_NO = "LD No.", "PD No.", "RG No."
VALID, PLACEHOLDER = "TRUE", "FALSE"
BUFFER_SIZE = 768
DIGITS = "0123456789"


# --- the language's library, where its corners decide what happens ---


class OutOfRange(Exception):
    """std::out_of_range of std::string::substr."""


NPOS = None


def c_str(text):
    """A text handed over as a C string ends at its first NUL."""
    return text.split("\0", 1)[0]


def find(text, wanted, start=0):
    at = text.find(wanted, start)
    return NPOS if at < 0 else at


def find_first_of(text, chars, start):
    if start is NPOS:
        return NPOS
    return next((i for i in range(start, len(text)) if text[i] in chars), NPOS)


def find_first_not_of(text, chars, start):
    if start is NPOS:
        return NPOS
    return next((i for i in range(start, len(text)) if text[i] not in chars), NPOS)


def substr(text, start, count=NPOS):
    if start is NPOS or start > len(text):
        raise OutOfRange("basic_string::substr")
    return text[start:] if count is NPOS else text[start:start + count]


def strtol(text):
    """strtol with base 10 on a 64-bit long."""
    text = c_str(text)
    at = 0
    while at < len(text) and text[at] in " \t\n\v\f\r":
        at += 1
    sign = 1
    if at < len(text) and text[at] in "+-":
        sign = -1 if text[at] == "-" else 1
        at += 1
    value = 0
    while at < len(text) and text[at] in DIGITS:
        value = value * 10 + int(text[at])
        at += 1
    return max(-2**63, min(2**63 - 1, sign * value))


def signed(value, bits):
    value &= (1 << bits) - 1
    return value - (1 << bits) if value >> (bits - 1) else value


class Stream:
    """std::ifstream as far as its state bits matter."""

    def __init__(self, data):
        self._data = data
        self._at = 0
        self._eof = False
        self._fail = False

    def good(self):
        return not self._eof and not self._fail

    def fail(self):
        return self._fail

    def getline(self):
        """The next line, or None where std::getline leaves the stream failed."""
        if not self.good():
            self._fail = True
            return None
        end = self._data.find("\n", self._at)
        if end >= 0:
            line = self._data[self._at:end]
            self._at = end + 1
            return line
        line = self._data[self._at:]
        self._at = len(self._data)
        self._eof = True
        if not line:
            self._fail = True
            return None
        return line

    def tellg(self):
        if not self.good():
            self._fail = True
            return -1
        return self._at

    def seekg(self, position):
        self._eof = False
        if not self._fail:
            self._at = position


# --- the surroundings: trace, tool, conversion library ---


class Item:
    def __init__(self, parent, name, value, flag):
        self.parent, self.name, self.value, self.flag = parent, name, value, flag
        self.deleted = False

    def fields(self):
        return [self.parent, self.name, self.value, self.flag]


class CreateFailed(Exception):
    """CreateItemDisp returned null. Never leaves the operation that asked for the item."""


@dataclass
class Outcome:
    items: list | None = None  # [parent, name, value, flag] of every item converted; None: no conversion
    creations: list = field(default_factory=list)  # the four arguments of every CreateItemDisp call
    runs: list = field(default_factory=list)  # [arguments, counter of the result file]
    pauses: int = 0
    trace: list = field(default_factory=list)  # [level, text]
    mr: int = 0  # the method's result as traced
    return_value: int | None = None  # as stored in the output instance; None: nothing stored
    xml_stored: bool = False
    hr: int = 0
    indicates: int = 0
    set_status: list = field(default_factory=list)
    reason: str = ""
    created: int = 0
    deleted: int = 0
    files_left: list = field(default_factory=list)
    loads: int = 0  # libraries opened
    unloads: int = 0  # libraries closed


class World:
    def __init__(self, case, first_counter=0):
        self.case = case
        self.out = Outcome()
        self.counter = first_counter
        self.files = {}
        self.kept_file = None
        self.items = []
        self.run_numbers = {}

    def trace(self, level, text):
        self.out.trace.append([level, text])

    @contextmanager
    def operation(self, name, argument=None):
        """An operation's start and end lines; one that is left by exception writes no end line."""
        self.trace(FRAME, name + " [START]" + ("" if argument is None else ", " + c_str(argument)))
        yield
        self.trace(FRAME, name + " [END]")

    def frame(self, name):
        with self.operation(name):
            pass

    # items

    def create_item(self, parent, name, value, flag):
        arguments = [c_str(text) for text in (parent, name, value, flag)]
        self.out.creations.append(arguments)
        if len(self.out.creations) == self.case.create_null_at:
            raise CreateFailed
        item = Item(*arguments)
        self.items.append(item)
        self.out.created += 1
        return item

    def delete_item(self, item):
        assert not item.deleted
        item.deleted = True
        self.out.deleted += 1

    # result files and the tool

    def result_file_path(self):
        if self.case.root == "empty":
            self.trace(FAILURE, "Failed to get INSTALLPATH_CIM.")
        number = self.counter
        self.counter += 1
        return number

    @staticmethod
    def path_text(path):
        return f"<DIR>/<TID>_{path:08x}_MngSrvRaid.txt"

    def open(self, path):
        return Stream(self.files[path]) if path in self.files else None

    def delete_file(self, path):
        if self.files.pop(path, None) is None:
            self.trace(FAILURE, f"Failed to delete file({self.path_text(path)}).")

    def _run_once(self, command, path):
        number = self.run_numbers.get(command, 0) + 1
        self.run_numbers[command] = number
        self.out.runs.append([command.removeprefix("vdkcli "), path])
        run = self.case.run_of(command, number)
        if run.output is None:
            self.files.pop(path, None)
        else:
            self.files[path] = run.output
        if run.signal:
            self.trace(FAILURE, f"ExecForeignModule WEXITSTATUS Error {run.signal:08x}.")
            return False
        return run.exit == 0

    def exec_cli(self, command, path):
        if self.case.tool == "missing":
            self.trace(FAILURE, "VDK is not installed.")
            return False
        self.trace(RESULT, f"execute vdkcli command.({command})")
        attempt = 0
        while True:
            if self._run_once(command, path):
                return True
            stream = self.open(path)
            first = stream.getline() if stream else None
            rejected = first is not None and first.startswith("Error - Invalid input at or near token")
            if rejected or attempt == 2:
                self.trace(FAILURE, f"Failed to execute vdkcli command.({command})")
                return False
            attempt += 1
            self.out.pauses += 1

    def tool_version(self, path):
        version = ""
        if self.exec_cli("vdkcli -v", path):
            stream = self.open(path)
            line = stream.getline() if stream else None
            while line is not None and "Product Version" not in line:
                line = stream.getline()
            colon = NPOS if line is None else find(line, ":")
            if colon is not NPOS:
                self.kept_file = path
                version = substr(line, colon + 2).rstrip(" \t\r\n")
                self.kept_file = None
        self.delete_file(path)
        return version

    # the conversion library

    def load_library(self):
        """True with the library open. Without a wrapper there is nothing to ask and nothing to trace."""
        if self.case.wrapper == "absent":
            return False
        with self.operation("CMSRAID_MngLib::MngSrvLibLoad"):
            if self.case.cim == "empty":
                self.trace(FAILURE, "Failed to get INSTALLPATH_CIM.")
            if self.case.library == "absent":
                self.trace(FAILURE, "Failed to load MngSrv_QelLib Library(<DLERROR>).")
                return False
            self.out.loads += 1
            if self.case.library == "incomplete":
                self.trace(FAILURE, "Failed to load MngSrv_QelLib Library(<DLERROR>) .")
                return False
            return True

    def unload_library(self):
        with self.operation("CMSRAID_MngLib::MngSrvLibUnload"):
            self.out.unloads += 1

    def convert(self, items):
        with self.operation("CMSRAID_MngLib::XmlConvert"):
            if self.case.create_lib_if == "null":
                self.trace(FAILURE, "Failed to initialize QelLibIF.")
                return False
            self.out.items = [item.fields() for item in items]
            if self.case.convert_status != 0 or self.case.convert_text == "null":
                status = self.case.convert_status & 0xffffffff
                self.trace(FAILURE, f"Failed to convert XML format {status:08x}.")
                return False
            return True

    def release_silently(self):
        """What an exception leaves behind goes without trace lines; only the version's file may stay."""
        for item in self.items:
            if not item.deleted:
                self.delete_item(item)
        self.files = {path: data for path, data in self.files.items() if path == self.kept_file}
        self.out.unloads = self.out.loads


# --- the reader base ---


def trim(text):
    return text.lstrip(" \t").rstrip(" \t\r\n")


def has_key(line):
    """A colon that is not the line's first character."""
    return find(line, ":") not in (NPOS, 0)


def is_numbered(line, prefix):
    return line.startswith(prefix) and line[len(prefix):len(prefix) + 1] in tuple(DIGITS)


class Reader:
    """The base of all readers. Positions are the items themselves; None is the null position."""

    def __init__(self, world):
        self.world = world
        self.reason = ""
        self.command_format = ""
        self.items = []
        self.root = None
        self.parent = None
        world.frame("CMSRAID_InfoGetter::CMSRAID_InfoGetter")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.destroy()

    def destroy(self):
        self.world.frame("CMSRAID_InfoGetter::~CMSRAID_InfoGetter")

    # hooks

    def create_raid_item(self, stream, line):
        raise NotImplementedError

    def free_item_list(self):
        raise NotImplementedError

    # services

    def parent_name(self):
        return self.parent.name if self.parent else ""

    def append(self, parent, name, value, flag, items=None):
        """Creates an item at the end of `items`, the reader's own list where none is named."""
        item = self.world.create_item(parent, name, value, flag)
        (self.items if items is None else items).append(item)
        return item

    def insert_before(self, neighbour, parent, name, value, flag):
        item = self.world.create_item(parent, name, value, flag)
        self.items.insert(self.items.index(neighbour), item)

    def insert_behind(self, neighbour, parent, name, value, flag):
        item = self.world.create_item(parent, name, value, flag)
        self.items.insert(self.items.index(neighbour) + 1, item)

    def take_over(self, held):
        self.items.extend(item for item in held if item is not None)
        held.clear()

    def add_root(self, name):
        self.root = self.parent = self.append("", name, "", VALID)

    def format_command(self, number_text):
        return (self.command_format.replace("%s", number_text))[:BUFFER_SIZE - 1]

    def run_failed(self):
        self.world.trace(FAILURE, f"Failed to execute vdkcli command {RUN_FAILED:08x}.")
        self.reason = "01" + self.reason
        return RUN_FAILED

    def open_failed(self, path):
        self.world.trace(FAILURE, f"Failed to open file output by vdkcli({self.world.path_text(path)}).")
        self.reason = "04" + self.reason
        return FAILED

    def invalid_arg(self):
        self.world.trace(FAILURE, "Invalid Arg.")
        return FAILED

    def get_info(self, ctrl_no, items):
        with self.world.operation("CMSRAID_InfoGetter::GetInfo"):
            self.items = []
            self.root = self.parent = None
            path = self.world.result_file_path()
            if not self.world.exec_cli(self.format_command(str(ctrl_no)), path):
                result = self.run_failed()
            else:
                stream = self.world.open(path)
                result = self.open_failed(path) if stream is None else self.read_report(stream, items)
            self.world.delete_file(path)
            return result

    def read_report(self, stream, items):
        result = self.parse(stream)
        if result == OK:
            items.extend(self.items)
            return OK
        self.world.trace(FAILURE, f"Failed to parse RAID Information {result:08x}.")
        self.reason = "06" + self.reason
        for item in self.items:
            self.world.delete_item(item)
        self.items = []
        self.root = self.parent = None
        return result

    def parse(self, stream):
        with self.world.operation("CMSRAID_InfoGetter::Parse"):
            result = OK
            while (line := stream.getline()) is not None:
                result = self.create_raid_item(stream, line)
                if result != OK:
                    self.world.trace(FAILURE, f"CreateRAIDItem is FAILED (hr={result:08x}).")
                    break
            self.free_item_list()
            return result

    def parse_title(self, line):
        if not line.startswith(TITLE_BEGIN):
            self.world.trace(FAILURE, f"Failed to ParseTitle. ({c_str(line)})")
            return FAILED
        try:
            self.parent = self.append(self.root.name if self.root else "", trim(line), "", VALID)
        except CreateFailed:
            return FAILED
        return OK

    def parse_key_value(self, line, items=None):
        colon = find(line, ":")
        if colon in (NPOS, 0):
            self.world.trace(FAILURE, f"Failed to parse ParseKeyValue.({c_str(line)})")
            return FAILED
        try:
            self.append(self.parent_name(), trim(line[:colon]), trim(line[colon + 1:]), VALID, items)
        except CreateFailed:
            return FAILED
        return OK

    def section(self, stream, on_item=lambda item: OK):
        """The key lines of a section, up to a blank line or the end; `on_item` sees every new item."""
        while (line := stream.getline()) is not None:
            line = trim(line)
            if not line:
                break
            if not has_key(line):
                continue
            result = self.parse_key_value(line)
            if result != OK:
                self.world.trace(FAILURE, f"ParseKeyValue is FAILED (hr={result:08x}).")
                return result
            result = on_item(self.items[-1])
            if result != OK:
                return result
        return OK


# --- the controller reader ---


class CtrlReader(Reader):
    NAME = "CMSRAID_CtrlInfoGetter::"
    RENAMED = {"SubVendor ID": "Subsystem Vendor ID", "SubDevice ID": "Subsystem ID"}
    FIRMWARE_TITLE = "### Firmware/BIOS/Driver Information ###"
    SETTINGS_TITLE = "### Controller Settings Information ###"

    def __init__(self, world):
        super().__init__(world)
        self.number_items = []
        self.command_format = "vdkcli -ctrlinfo -a%s"
        world.frame(self.NAME + "CMSRAID_CtrlInfoGetter")

    def destroy(self):
        self.world.frame(self.NAME + "~CMSRAID_CtrlInfoGetter")
        super().destroy()

    def get_ctrl_num(self):
        """(result, count); the count is None where none was stored."""
        with self.world.operation(self.NAME + "GetCtrlNum"):
            path = self.world.result_file_path()
            count = None
            if not self.world.exec_cli(self.format_command("All"), path):
                result = self.run_failed()
            elif (stream := self.world.open(path)) is None:
                result = self.open_failed(path)
            else:
                lines = 0
                while (line := stream.getline()) is not None:
                    lines += line.startswith(CTRL_HEAD) and ":" in line
                count = signed(lines, 8)
                result = OK
            self.world.delete_file(path)
            return result, count

    def free_item_list(self):
        with self.world.operation(self.NAME + "FreeItemList"):
            for at, item in enumerate(self.number_items):
                if item is not None:
                    self.world.delete_item(item)
                    self.number_items[at] = None

    def create_raid_item(self, stream, line):
        with self.world.operation(self.NAME + "CreateRAIDItem"):
            if line.startswith(CTRL_HEAD) and ":" in line:
                with self.world.operation(self.NAME + "AddRootItem"):
                    try:
                        self.add_root("Controller Information")
                        added = True
                    except CreateFailed:
                        added = False
                return self.parse_ctrl_no(line) if added else FAILED
            if not line.startswith(TITLE_BEGIN):
                return self.key_line(line)
            result = self.parse_title(line)
            if result != OK:
                return result
            title = self.items[-1].name
            if title == GENERAL:
                self.take_over(self.number_items)
            elif title == self.FIRMWARE_TITLE:
                return self.parse_firmware_info(stream)
            elif title == self.SETTINGS_TITLE:
                return self.parse_setting_info(stream)
            return OK

    def key_line(self, line):
        if not has_key(line):
            return OK
        result = self.parse_key_value(line)
        if result == OK:
            item = self.items[-1]
            item.name = self.RENAMED.get(item.name, item.name)
        return result

    def parse_ctrl_no(self, line):
        with self.world.operation(self.NAME + "ParseCtrlNo", line):
            result = self.parse_key_value(line, self.number_items)
            if result != OK:
                self.world.trace(FAILURE, f"ParseKeyValue is FAILED (hr={result:08x}).")
                return result
            self.number_items[-1].parent = GENERAL
            self.number_items[-1].name = "Controller No."
            return OK

    def parse_setting_info(self, stream):
        with self.world.operation(self.NAME + "ParseSettingInfo"):
            if not stream.good():
                return self.invalid_arg()
            seen = {}

            def note(item):
                seen[item.name] = item
                return OK

            result = self.section(stream, note)
            if result != OK or "Reconstruction Rate" in seen:
                return result
            placeholder = (self.parent_name(), "Reconstruction Rate", "", PLACEHOLDER)
            try:
                if "Consistency Check Rate" in seen:
                    self.insert_behind(seen["Consistency Check Rate"], *placeholder)
                else:
                    self.append(*placeholder)
            except CreateFailed:
                return FAILED
            return OK

    def parse_firmware_info(self, stream):
        with self.world.operation(self.NAME + "ParseFirmwareInfo"):
            if not stream.good():
                return self.invalid_arg()
            last = self.items[-1]
            seen = set()

            def note(item):
                seen.add(item.name)
                return OK

            result = self.section(stream, note)
            if result != OK:
                return result
            # Version and build time each answer for the other's placeholder.
            for key, placeholder in (("Firmware Package Version", "Firmware Package Version"),
                                     ("Firmware Build Time", "Firmware Version"),
                                     ("Firmware Version", "Firmware Build Time")):
                if key in seen:
                    continue
                try:
                    self.insert_behind(last, self.parent_name(), placeholder, "", PLACEHOLDER)
                except CreateFailed:
                    return FAILED
                last = self.items[self.items.index(last) + 1]
            return OK


# --- the logical-drive reader ---


class LdReader(Reader):
    NAME = "CMSRAID_LDInfoGetter::"
    SETTINGS_TITLE = "### LD Settings Information ###"
    ASSOCIATED = "Associated CacheCade LD"

    def __init__(self, world):
        super().__init__(world)
        self.group_items = []
        self.ld_items = []
        self.set_items = []
        self.command_format = "vdkcli -ldpdinfo -a%s"
        world.frame(self.NAME + "CMSRAID_LDInfoGetter")

    def destroy(self):
        self.world.frame(self.NAME + "~CMSRAID_LDInfoGetter")
        super().destroy()

    def free_item_list(self):
        with self.world.operation(self.NAME + "FreeItemList"):
            for held in (self.group_items, self.ld_items, self.set_items):
                for item in held:
                    self.world.delete_item(item)
                held.clear()

    def get_pd_rg_no(self, ctrl_no, groups):
        with self.world.operation(self.NAME + "GetPDRGNo"):
            path = self.world.result_file_path()
            if not self.world.exec_cli(self.format_command(str(ctrl_no)), path):
                result = self.run_failed()
            elif (stream := self.world.open(path)) is None:
                result = self.open_failed(path)
            else:
                self.read_groups(stream, groups)
                result = OK
            self.world.delete_file(path)
            return result

    @staticmethod
    def read_groups(stream, groups):
        group = ""
        while (line := stream.getline()) is not None:
            line = trim(line)
            colon, bracket = find(line, ":"), find(line, "(")
            if line.startswith(RG_NO) and colon is not NPOS:
                group = trim(line[colon + 1:])
            elif line.startswith(">>PD") and bracket is not NPOS and group:
                groups.setdefault(strtol(trim(line[len(">>PD"):bracket])), group)

    def create_raid_item(self, stream, line):
        with self.world.operation(self.NAME + "CreateRAIDItem"):
            if is_numbered(line, "RG") or is_numbered(line, "scRG"):
                with self.world.operation(self.NAME + "AddRootItem"):
                    try:
                        self.add_root("Logical Drive Information")
                        added = True
                    except CreateFailed:
                        added = False
                return self.parse_raid_info(stream, line) if added else FAILED
            if line.startswith(CTRL_HEAD) and ":" in line:
                return OK
            if not line.startswith(TITLE_BEGIN):
                if ">LD" in line:
                    return self.parse_ld_list(line)
                if ">>PD" in line:
                    return self.parse_pd_list(stream, line)
                return self.parse_key_value(line) if has_key(line) else OK
            result = self.parse_title(line.replace("\t", " "))
            if result != OK:
                return result
            if self.items[-1].name == GENERAL:
                return self.parse_general_info(stream)
            if self.items[-1].name == self.SETTINGS_TITLE:
                self.take_over(self.set_items)
            return OK

    def parse_raid_info(self, stream, line):
        with self.world.operation(self.NAME + "ParseRAIDlnfo", line):
            if not stream.good():
                return self.invalid_arg()
            position = stream.tellg()
            while (line := stream.getline()) is not None:
                line = trim(line)
                if not line:
                    break
                if not has_key(line):
                    stream.seekg(position)
                    break
                result = self.parse_key_value(line, self.group_items)
                if result != OK:
                    self.world.trace(FAILURE, f"ParseKeyValue is FAILED (hr={result:08x}).")
                    return result
                self.group_items[-1].parent = GENERAL
                position = stream.tellg()
            return OK

    def drive_details(self, parent, rest, items):
        """Name, capacity and state of the text behind an opening bracket."""
        for name in ("Name", "Capacity"):
            comma = find(rest, ",")
            if comma is NPOS:
                return
            self.append(parent, name, trim(rest[:comma]), VALID, items)
            rest = rest[comma + 1:]
        if rest:
            end = find(rest, ",")
            if end is NPOS:
                end = find(rest, ")")
            self.append(parent, "State", trim(rest if end is NPOS else rest[:end]), VALID, items)

    def parse_ld_list(self, line):
        with self.world.operation(self.NAME + "ParseLDList", line):
            try:
                self.append(GENERAL, "LD List", "", VALID, self.ld_items)
                bracket = find(line, "(")
                if bracket is NPOS:
                    return OK
                if bracket > len(">LD"):
                    self.append("LD List", LD_NO, trim(line[1:bracket]), VALID, self.ld_items)
                self.drive_details("LD List", line[bracket + 1:], self.ld_items)
            except CreateFailed:
                return FAILED
            return OK

    def parse_pd_list(self, stream, line):
        # The lines bear the LD list's name.
        with self.world.operation(self.NAME + "ParseLDList", line):
            if not stream.good():
                return self.invalid_arg()
            outer = self.parent
            try:
                self.parent = self.append(self.parent_name(), "PD List", "", VALID)
                bracket = find(line, "(")
                if bracket is not NPOS and bracket > len(">>PD"):
                    self.append("PD List", PD_NO, trim(line[2:bracket]), VALID)
                return self.section(stream)
            except CreateFailed:
                return FAILED
            finally:
                self.parent = outer

    def parse_general_info(self, stream):
        with self.world.operation(self.NAME + "ParseGeneralnfo"):
            if not stream.good():
                return self.invalid_arg()
            self.take_over(self.group_items)
            self.take_over(self.ld_items)
            count_item = None
            try:
                while (line := stream.getline()) is not None:
                    line = trim(line)
                    if not line:
                        break
                    if line.startswith(self.ASSOCIATED):
                        result = self.parse_assoc_ld(stream)
                        if result != OK:
                            self.world.trace(FAILURE, f"ParseAssocLD is FAILED (hr={result:08x}).")
                            return result
                        stripe = (self.parent_name(), "Stripe Size", "", PLACEHOLDER)
                        if count_item:
                            self.insert_before(count_item, *stripe)
                        else:
                            self.append(*stripe)
                        self.append(self.SETTINGS_TITLE, "Access Policy", "", PLACEHOLDER, self.set_items)
                        return OK
                    if not has_key(line):
                        continue
                    result = self.parse_key_value(line)
                    if result != OK:
                        self.world.trace(FAILURE, f"ParseKeyValue is FAILED (hr={result:08x}).")
                        return result
                    item = self.items[-1]
                    if item.name == "# of PD":
                        count_item = item
                    elif item.name == "Access Policy":
                        self.append(self.SETTINGS_TITLE, "Access Policy", item.value, VALID, self.set_items)
                        self.world.delete_item(self.items.pop())
                self.append(self.parent_name(), self.ASSOCIATED, "", PLACEHOLDER)
            except CreateFailed:
                return FAILED
            return OK

    def parse_assoc_ld(self, stream):
        with self.world.operation(self.NAME + "ParseAssocLD"):
            if not stream.good():
                return self.invalid_arg()
            try:
                while (line := stream.getline()) is not None:
                    line = trim(line)
                    if not line:
                        break
                    self.append(self.parent_name(), self.ASSOCIATED, "", VALID)
                    bracket = find(line, "(")
                    if bracket is NPOS:
                        continue
                    self.append(self.ASSOCIATED, LD_NO, trim(line[:bracket]), VALID)
                    self.drive_details(self.ASSOCIATED, line[bracket + 1:], None)
            except CreateFailed:
                return FAILED
            return OK


# --- the physical-drive reader ---


BASIC_STATUS = {
    "ONLINE": "NO ERROR", "COPYBACK": "NO ERROR", "Unconfig GOOD": "NO ERROR", "HOT SPARE": "NO ERROR",
    "OFFLINE": "ERROR", "Unconfig BAD": "ERROR", "FAILED": "ERROR", "REBUILD": "REBUILD",
}


class PdReader(Reader):
    NAME = "CMSRAID_PDInfoGetter::"
    SMART_TITLE = "### SMART Information ###"

    def __init__(self, world, version=None):
        """Without a version the reader is a SMART reader's base and gets no command of its own."""
        super().__init__(world)
        self.interface_type = ""
        self.header_items = []
        self.groups = {}
        with world.operation(self.NAME + "CMSRAID_PDInfoGetter"):
            if version is not None:
                world.trace(RESULT, f"VDK Version is {c_str(version)}.")
                parts = version.split(".")
                modern = len(parts) == 2 and strtol(parts[0]) >= 4
                self.command_format = "vdkcli -pdinfo -nosmart -a%s" if modern else "vdkcli -pdinfo -a%s"

    def destroy(self):
        self.world.frame(self.NAME + "~CMSRAID_PDInfoGetter")
        super().destroy()

    def get_info(self, ctrl_no, items):
        with ExitStack() as local:
            with self.world.operation(self.NAME + "GetInfo"):
                self.groups.clear()
                drives = local.enter_context(LdReader(self.world))
                result = drives.get_pd_rg_no(ctrl_no, self.groups)
                if result != OK:
                    self.world.trace(FAILURE, f"CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (hr={result:08x}).")
                    self.reason = drives.reason
                    return result
                return super().get_info(ctrl_no, items)

    def free_item_list(self):
        with self.world.operation(self.NAME + "FreeItemList"):
            for item in self.header_items:
                self.world.delete_item(item)
            self.header_items.clear()

    def create_raid_item(self, stream, line):
        if is_numbered(line, "PD"):
            with self.world.operation(self.NAME + "AddRootItem"):
                try:
                    self.add_root("Physical Drive Information")
                    added = True
                except CreateFailed:
                    added = False
            return self.parse_drive_header(line) if added else FAILED
        if line.startswith(CTRL_HEAD) and has_key(line):
            return self.parse_key_value(line)
        if not line.startswith(TITLE_BEGIN):
            return OK
        result = self.parse_title(line)
        if result != OK:
            return result
        title = self.items[-1]
        if title.name == GENERAL:
            return self.parse_general_info(stream)
        if title.name == "### Slot Information ###":
            title.name = "### Enclosure Properties Information ###"
            return self.parse_slot_info(stream)
        if title.name.startswith(self.SMART_TITLE):
            return self.parse_smart_info(stream)
        return OK

    def header_item(self, name, value):
        self.append(GENERAL, name, value, VALID, self.header_items)

    def parse_drive_header(self, line):
        with self.world.operation(self.NAME + "ParsePDLDNo", line):
            try:
                return self.read_drive_header(line)
            except CreateFailed:
                return FAILED

    def read_drive_header(self, line):
        def format_error():
            self.world.trace(FAILURE, f"ParsePDLDNo format error.({c_str(line)})")
            return FAILED

        text = trim(line)
        bracket = find(text, "(")
        if bracket is NPOS or bracket <= 2:
            return format_error()
        drive = trim(text[:bracket])
        self.header_item(PD_NO, drive)
        member = text[bracket + 1:]
        if not member:
            return format_error()
        if member.startswith("LD"):
            number = strtol(drive[2:])
            if number not in self.groups:
                self.world.trace(FAILURE, f"m_MapRGNo search error.({c_str(line)})")
            self.header_item(RG_NO, self.groups.get(number, "-"))
            end = find(member, ")")
            if end is NPOS:
                return format_error()
            self.header_item(LD_NO, member[:end])
            return OK
        for spare in ("GHS", "RLD"):
            if member.startswith(spare):
                self.header_item(RG_NO, "-")
                self.header_item(LD_NO, spare)
                return OK
        if member.startswith("DHS"):
            group = find(member, "RG")
            if group is NPOS:
                self.world.trace(FAILURE, f"ParsePDLDNo is FAILED.({c_str(line)})")
                self.header_item(LD_NO, "DHS")
                return FAILED
            self.header_item(RG_NO, trim(member[group:-1]))
            self.header_item(LD_NO, "DHS")
            return OK
        self.header_item(LD_NO, "None")
        self.header_item(RG_NO, "-")
        return OK

    def parse_general_info(self, stream):
        with self.world.operation(self.NAME + "ParseGeneralnfo"):
            if stream.fail():
                return self.invalid_arg()
            self.take_over(self.header_items)
            seen = {}

            def note(item):
                seen[item.name] = item
                if item.name == "Interface Type":
                    self.interface_type = item.value
                elif item.name == "PD Status":
                    result = self.parse_status(item)
                    if result != OK:
                        self.world.trace(FAILURE, f"ParsePDStatus is FAILED (hr={result:08x}).")
                    return result
                return OK

            result = self.section(stream, note)
            if result != OK or "Temperature" in seen:
                return result
            placeholder = (self.parent_name(), "Temperature", "", PLACEHOLDER)
            try:
                if "Power Status" in seen:
                    self.insert_before(seen["Power Status"], *placeholder)
                else:
                    self.append(*placeholder)
            except CreateFailed:
                return FAILED
            return OK

    def parse_status(self, detail):
        with self.world.operation(self.NAME + "ParsePDStatus"):
            detail.name = "PD Status(Detail)"
            basic = BASIC_STATUS.get(detail.value, "UNKNOWN")
            try:
                self.insert_before(detail, self.parent_name(), "PD Status", basic, VALID)
            except CreateFailed:
                return FAILED
            return OK

    def parse_slot_info(self, stream):
        with self.world.operation(self.NAME + "ParseSlotInfo"):
            try:
                self.append(self.parent_name(), "Enclosure ID", "", PLACEHOLDER)
            except CreateFailed:
                return FAILED
            if stream.fail():
                return self.invalid_arg()
            return self.section(stream)

    def parse_smart_info(self, stream):
        """The summary has no SMART data: the section goes, its title included."""
        with self.world.operation(self.NAME + "ParseSMARTInfo"):
            if stream.fail():
                return self.invalid_arg()
            self.world.delete_item(self.items.pop())
            self.parent = self.root
            position = stream.tellg()
            while (line := stream.getline()) is not None:
                if trim(line).startswith("PD"):
                    stream.seekg(position)
                    break
                position = stream.tellg()
            return OK


# --- the SMART reader ---


class SmartReader(PdReader):
    SEPARATORS = " \t"
    NAME_WIDTH = 40  # of the attribute names in a SATA table
    RAW_TAIL = len(" Data")

    def __init__(self, world):
        super().__init__(world)
        world.frame("CMSRAID_PDSMInfoGetter::CMSRAID_PDInfoGetter")

    def destroy(self):
        self.world.frame("CMSRAID_PDSMInfoGetter::~CMSRAID_PDInfoGetter")
        super().destroy()

    def get_drive_info(self, ctrl_no, encl_no, pd_no, items):
        with self.world.operation("CMSRAID_PDInfoGetter::GetInfo"):
            command = f"vdkcli -pdinfo -pd[{signed(encl_no, 32)}:{signed(pd_no, 32)}]"
            self.command_format = command[:BUFFER_SIZE - 1] + " -a%s"
            return self.get_info(ctrl_no, items)

    def parse_smart_info(self, stream):
        with self.world.operation("CMSRAID_PDSMInfoGetter::ParseSMARTInfo"):
            if stream.fail():
                return self.invalid_arg()
            seen = set()

            def note(item):
                seen.add(item.name)
                return OK

            result = self.section(stream, note)
            if result != OK:
                return result
            try:
                for name in ("Temperature", "Power-On Time"):
                    if name not in seen:
                        self.append(self.parent_name(), name, "", PLACEHOLDER)
                return self.parse_table(stream)
            except CreateFailed:
                return FAILED

    def parse_table(self, stream):
        position = stream.tellg()
        header = ""
        while not header and (line := stream.getline()) is not None:
            header = trim(line)
        if "Attribute" not in header:
            if self.interface_type in ("SAS", "SATA"):
                self.append(self.parent_name(), f"SMART Detail({self.interface_type})", "", PLACEHOLDER)
            stream.seekg(position)
            return OK
        if self.interface_type == "SAS":
            return self.parse_sas(stream, header)
        if self.interface_type == "SATA":
            return self.parse_sata(stream, header)
        return OK

    def parse_sas(self, stream, header):
        with self.world.operation("CMSRAID_PDSMInfoGetter::ParseSMARTSAS"):
            names, starts = self.split_header(header, raw_rule=False)
            stream.getline()
            label = ""
            while (line := stream.getline()) is not None:
                row = trim(line)
                if row.startswith("[Head"):
                    label = row
                    continue
                if not row:
                    continue
                cells = []
                for at in range(len(names)):
                    first = starts[at] if at else 0
                    count = starts[at + 1] - first if at + 1 < len(names) else NPOS
                    cell = substr(row, first, count)
                    cells.append(trim(cell if at else label + cell))
                try:
                    self.add_row("SMART Detail(SAS)", names, cells)
                except CreateFailed:
                    return FAILED
            return OK

    def parse_sata(self, stream, header):
        with self.world.operation("CMSRAID_PDSMInfoGetter::ParseSMARTSATA"):
            names, _ = self.split_header(header, raw_rule=True)
            stream.getline()
            while (line := stream.getline()) is not None:
                row = trim(line)
                if not row:
                    continue
                cells = self.split_sata_row(row)
                try:
                    if not self.add_row("SMART Detail(SATA)", names, cells):
                        self.world.trace(FAILURE, f"Parse SmartDeital is FAILED.({c_str(row)})")
                        return FAILED
                except CreateFailed:
                    return FAILED
            return OK

    def add_row(self, group, names, cells):
        self.append(self.parent_name(), group, "", VALID)
        if len(names) != len(cells):
            return False
        for name, cell in zip(names, cells):
            self.append(group, name, cell, VALID)
        return True

    def split_header(self, header, raw_rule):
        names, starts = [], []
        at = 0
        while True:
            separator = find_first_of(header, self.SEPARATORS, at)
            if separator is NPOS:
                names.append(trim(substr(header, at)))
                starts.append(at)
                return names, starts
            name = trim(substr(header, at, separator - at))
            if raw_rule and name == "Raw":
                name = "Raw Data"
                separator += self.RAW_TAIL
            names.append(name)
            starts.append(at)
            at = find_first_not_of(header, self.SEPARATORS, separator)

    def split_sata_row(self, row):
        cells = []
        at = 0
        while True:
            separator = find_first_of(row, self.SEPARATORS, at)
            if separator is NPOS:
                cells.append(trim(substr(row, at)))
                return cells
            if len(cells) == 1:
                cells.append(trim(substr(row, at, self.NAME_WIDTH)))
                at = find_first_not_of(row, self.SEPARATORS, at + self.NAME_WIDTH)
            else:
                cells.append(trim(substr(row, at, separator - at)))
                at = find_first_not_of(row, self.SEPARATORS, separator)


# --- the provider ---


class Provider:
    NAME = "CZORBALT_MngSrvRaid::"

    def __init__(self, world):
        self.world = world
        self.case = world.case
        self.out = world.out
        self.loaded = False

    def exec_method(self):
        world, out = self.world, self.out
        world.trace(FRAME, self.NAME + "ExecMethodAsync() [START]")
        if self.case.klass == "absent":
            out.hr = WBEM_NOT_SUPPORTED
            out.set_status.append(out.hr)
            return
        own = {"GetInfo": self.get_info, "GetPDInfo": self.get_pd_info}.get(self.case.method)
        if own is None:
            out.hr = self.case.base_status
        else:
            try:
                out.return_value = out.mr = own()
            except OutOfRange as error:
                world.trace(CAUGHT, f"{self.NAME}ExecMethodAsync() [exception:{error}<WHAT>]")
                world.release_silently()
                out.return_value = EXCEPTION
                out.hr = WBEM_FAILED
            out.indicates += 1
        out.set_status.append(out.hr)
        world.trace(RESULT, f"{self.NAME}ExecMethodAsync mr=0x{out.mr:08x}")
        if out.hr != 0:
            world.trace(FAILURE, f"{self.NAME}ExecMethodAsync hr=0x{out.hr:08x}")
        world.trace(FRAME, self.NAME + "ExecMethodAsync() [END]")

    def refused(self):
        """The two checks that come before everything else: (result, reason)."""
        if self.case.tool == "missing":
            self.world.trace(FAILURE, "VDK is not installed.")
            return NOT_INSTALLED, "03"
        if self.case.has_authority == "no" and self.case.app_key:
            self.world.trace(FAILURE, "Has not operating authority.")
            return NO_AUTHORITY, "07"
        return OK, ""

    def free_item_list(self, items):
        with self.world.operation(self.NAME + "FreeItemList"):
            for item in items:
                self.world.delete_item(item)
            items.clear()

    def convert_and_store(self, items, failure):
        if not self.world.convert(items):
            self.world.trace(FAILURE, failure)
            return RUN_FAILED, "02"
        status = self.case.store_status
        if signed(status, 32) < 0:
            self.world.trace(FAILURE, "setParameterClassArrayToIWbemClassObject XmlData is FAILED "
                             f"(hr={status & 0xffffffff:08x}).")
            return FAILED, "08"
        self.out.xml_stored = True
        return OK, ""

    def finish(self, method, lists, result, reason):
        for items in lists:
            self.free_item_list(items)
        if self.loaded:
            self.world.unload_library()
        self.out.reason = reason
        if result != OK:
            self.world.trace(FAILURE, f"{self.NAME}{method}() Error[reason:{reason}]")
            self.world.trace(MESSAGE, f"MSGID_MNGSRV_RAID_0001_F {reason}")

    def get_info(self):
        with self.world.operation(self.NAME + "GetInfo"):
            main, scratch = [], []
            result, reason = self.refused()
            if result == OK:
                result, reason = self.collect(main, scratch)
            if result == OK:
                result, reason = self.convert_and_store(main, "Failed to convert XML format 00000000.")
            self.finish("GetInfo", (scratch, main), result, reason)
            return result

    def collect(self, main, scratch):
        world = self.world
        with ExitStack() as local:
            controller = local.enter_context(CtrlReader(world))
            logical = local.enter_context(LdReader(world))
            version = world.tool_version(world.result_file_path())
            physical = local.enter_context(PdReader(world, version))
            self.loaded = world.load_library()
            if not self.loaded:
                return FAILED, "05"
            result, count = controller.get_ctrl_num()
            if result != OK:
                world.trace(FAILURE, f"CMSRAID_CtrlInfoGetter::GetCtrlNum is FAILED (re={result:08x}).")
                return result, controller.reason
            readers = (("CMSRAID_CtrlInfoGetter", controller), ("CMSRAID_LDInfoGetter", logical),
                       ("CMSRAID_PDInfoGetter", physical))
            for number in range(count):
                for name, reader in readers:
                    result = reader.get_info(number, scratch)
                    if result != OK:
                        world.trace(FAILURE, f"{name}::GetInfo is FAILED (re={result:08x}).")
                        return result, reader.reason
                    main.extend(scratch)
                    scratch.clear()
            return OK, ""

    def get_pd_info(self):
        with self.world.operation(self.NAME + "GetPDInfo"):
            items = []
            result, reason = self.refused()
            if result == OK:
                result, reason = self.collect_drive(items)
            if result == OK:
                result, reason = self.convert_and_store(items, "Failed to convert XML format (hr=00000000).")
            self.finish("GetPDInfo", (items,), result, reason)
            return result

    def collect_drive(self, items):
        world = self.world
        with ExitStack() as local:
            local.enter_context(LdReader(world))
            smart = local.enter_context(SmartReader(world))
            self.loaded = world.load_library()
            if not self.loaded:
                return FAILED, "05"
            for name, text in (("CtrlNo", self.case.ctrl_no), ("EnclNo", self.case.encl_no),
                               ("PDNo", self.case.pd_no)):
                if text is None:
                    world.trace(FAILURE, f"getStringFromIWbemClassObject {name} is FAILED (hr=<HR>).")
                    return FAILED, "09"
            numbers = [strtol(text) for text in (self.case.ctrl_no, self.case.encl_no, self.case.pd_no)]
            result = smart.get_drive_info(*numbers, items)
            if result != OK:
                world.trace(FAILURE, f"CMSRAID_PDInfoGetter::GetInfo is FAILED (re={result:08x}).")
            return result, smart.reason


def predict(case, first_counter=0):
    """The outcome of one call, with the module's result-file counter at `first_counter` before it."""
    world = World(case, first_counter)
    Provider(world).exec_method()
    assert world.out.created == world.out.deleted
    world.out.files_left = sorted(f"<TID>_{path:08x}_MngSrvRaid.txt" for path in world.files)
    return world.out


if __name__ == "__main__":
    json.dump(asdict(predict(casefile.load(sys.argv[1]))), sys.stdout, indent=1)
    print()
