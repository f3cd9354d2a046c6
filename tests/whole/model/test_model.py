"""The model against expectations worked out by hand.

    python3 -m unittest -v test_model       (in this folder)
"""

import json
import tempfile
import unittest

import casefile
import cases
import compare
import model
from casefile import Case, Run
from model import CAUGHT, FAILED, FAILURE, FRAME, MESSAGE, RESULT, OutOfRange, Stream

GENERAL = "### General Information ###"
FIRMWARE = "### Firmware/BIOS/Driver Information ###"
SETTINGS = "### Controller Settings Information ###"
LD_SETTINGS = "### LD Settings Information ###"
SLOT = "### Slot Information ###"
ENCLOSURE = "### Enclosure Properties Information ###"
SMART = "### SMART Information ###"
CTRL_ROOT = ["", "Controller Information", "", "TRUE"]
LD_ROOT = ["", "Logical Drive Information", "", "TRUE"]
PD_ROOT = ["", "Physical Drive Information", "", "TRUE"]


def text(*lines):
    return "".join(line + "\n" for line in lines)


def title(parent, name):
    return [parent, name, "", "TRUE"]


def summary_case(ctrl="", ld="", pd="", version="Product Version : 3.5\n", count=1, **fields):
    case = Case(**fields)
    case.commands = {
        "vdkcli -v": [Run(version)],
        "vdkcli -ctrlinfo -aAll": [Run(text(*["RAID Controller 0 : 0"] * count))],
        "vdkcli -ctrlinfo -a0": [Run(ctrl)],
        "vdkcli -ldpdinfo -a0": [Run(ld)],
        "vdkcli -pdinfo -a0": [Run(pd)],
        "vdkcli -pdinfo -nosmart -a0": [Run(pd)],
    }
    return case


def drive_case(pd, ld="", **fields):
    case = Case(method="GetPDInfo", ctrl_no="0", encl_no="2", pd_no="5", **fields)
    case.commands = {"vdkcli -ldpdinfo -a0": [Run(ld)], "vdkcli -pdinfo -pd[2:5] -a0": [Run(pd)]}
    return case


def summary(*args, **fields):
    return model.predict(summary_case(*args, **fields))


def drive(*args, **fields):
    return model.predict(drive_case(*args, **fields))


def at_level(out, level):
    return [line for found, line in out.trace if found == level]


class StreamTest(unittest.TestCase):
    def test_a_last_line_without_line_feed_sets_eof_only(self):
        stream = Stream("a\nb")
        self.assertEqual(stream.getline(), "a")
        self.assertTrue(stream.good())
        self.assertEqual(stream.getline(), "b")
        self.assertFalse(stream.good())
        self.assertFalse(stream.fail())
        self.assertIsNone(stream.getline())
        self.assertTrue(stream.fail())

    def test_a_final_line_feed_leaves_the_stream_good(self):
        stream = Stream("a\n")
        stream.getline()
        self.assertTrue(stream.good())

    def test_tellg_at_eof_fails_and_seekg_then_does_nothing(self):
        stream = Stream("ab")
        stream.getline()
        self.assertEqual(stream.tellg(), -1)
        self.assertTrue(stream.fail())
        stream.seekg(0)
        self.assertIsNone(stream.getline())

    def test_seekg_clears_eof(self):
        stream = Stream("ab")
        stream.getline()
        stream.seekg(1)
        self.assertEqual(stream.getline(), "b")

    def test_substr_throws_behind_the_end_only(self):
        self.assertEqual(model.substr("ab", 2), "")
        self.assertRaises(OutOfRange, model.substr, "ab", 3)
        self.assertRaises(OutOfRange, model.substr, "ab", model.NPOS)

    def test_strtol(self):
        for source, value in (("", 0), ("x", 0), (" \t\n\v\f\r12x", 12), ("-7", -7), ("+7", 7), ("- 7", 0),
                              ("0x1F", 0), ("9" * 30, 2**63 - 1), ("-" + "9" * 30, -2**63), ("1\0002", 1)):
            self.assertEqual(model.strtol(source), value, source)

    def test_trim(self):
        for source, trimmed in ((" \ta b\t \r\n", "a b"), ("\r a", "\r a"), (" \t ", ""), ("\r\n", ""),
                                (" \r a \0", "\r a \0")):
            self.assertEqual(model.trim(source), trimmed, repr(source))


class BaseReaderTest(unittest.TestCase):
    def reader(self):
        world = model.World(Case())
        return model.Reader(world), world

    def test_title_needs_its_blank_at_the_front(self):
        reader, world = self.reader()
        self.assertEqual(reader.parse_title("###x"), FAILED)
        self.assertEqual(world.out.trace[-1], [FAILURE, "Failed to ParseTitle. (###x)"])
        self.assertEqual(reader.parse_title(" ### x"), FAILED)
        self.assertEqual(reader.parse_title("### x \t\r"), 0)
        self.assertEqual(reader.items[0].fields(), ["", "### x", "", "TRUE"])
        self.assertIs(reader.parent, reader.items[0])

    def test_key_values(self):
        reader, world = self.reader()
        for line in (": text", "text"):
            self.assertEqual(reader.parse_key_value(line), FAILED)
            self.assertEqual(world.out.trace[-1], [FAILURE, f"Failed to parse ParseKeyValue.({line})"])
        for line, key, value in (("a:", "a", ""), (" a\t: b:c \r", "a", "b:c"), (" : x", "", "x"),
                                 ("a\0b: c\0d", "a", "c")):
            self.assertEqual(reader.parse_key_value(line), 0)
            self.assertEqual(reader.items[-1].fields(), ["", key, value, "TRUE"])

    def test_long_commands_are_cut(self):
        reader, _ = self.reader()
        reader.command_format = "x" * 766 + "%s"
        self.assertEqual(reader.format_command("123"), "x" * 766 + "1")


class ToolTest(unittest.TestCase):
    def execute(self, *runs):
        world = model.World(Case(commands={"vdkcli -x": list(runs)}))
        return world.exec_cli("vdkcli -x", world.result_file_path()), world

    def test_zero_is_success_whatever_was_printed(self):
        done, world = self.execute(Run("Error - Invalid input at or near token -x\n", 0))
        self.assertTrue(done)
        self.assertEqual(world.out.trace, [[RESULT, "execute vdkcli command.(vdkcli -x)"]])

    def test_a_rejected_command_runs_once(self):
        for output in ("Error - Invalid input at or near token -x\n",
                       "Error - Invalid input at or near token"):
            done, world = self.execute(Run(output, 1))
            self.assertFalse(done)
            self.assertEqual((len(world.out.runs), world.out.pauses), (1, 0))
            self.assertEqual(world.out.trace[-1], [FAILURE, "Failed to execute vdkcli command.(vdkcli -x)"])

    def test_other_failures_run_three_times(self):
        for output in (" Error - Invalid input at or near token\n",
                       "\nError - Invalid input at or near token\n", "",
                       None, "Error - Invalid input at or near toke"):
            done, world = self.execute(Run(output, 1))
            self.assertFalse(done)
            self.assertEqual((len(world.out.runs), world.out.pauses), (3, 2))

    def test_a_later_run_may_succeed_or_be_rejected(self):
        done, world = self.execute(Run("", 1), Run("fine"))
        self.assertTrue(done)
        self.assertEqual((len(world.out.runs), world.out.pauses), (2, 1))
        done, world = self.execute(Run("", 1), Run("Error - Invalid input at or near token", 1))
        self.assertFalse(done)
        self.assertEqual((len(world.out.runs), world.out.pauses), (2, 1))

    def test_a_signal_is_traced_with_the_raw_status(self):
        done, world = self.execute(Run("", 0, 9), Run(""))
        self.assertTrue(done)
        self.assertEqual(at_level(world.out, FAILURE), ["ExecForeignModule WEXITSTATUS Error 00000009."])

    def version(self, output, **run):
        world = model.World(Case(commands={"vdkcli -v": [Run(output, **run)]}))
        found = world.tool_version(world.result_file_path())
        self.assertEqual(world.files, {})
        return found

    def test_versions(self):
        for output, version in (("x\nProduct Version : 4.1 \r\n", "4.1"), ("Product Version :4.1", ".1"),
                                ("none\n", ""), ("", ""), ("Product Version\nProduct Version : 4.1\n", ""),
                                ("a: Product Version : 1\n", "Product Version : 1"),
                                ("Product Version :x", ""),
                                ("Product Version :  4 ", " 4"), ("product Version : 4\n", "")):
            self.assertEqual(self.version(output), version, output)
        self.assertEqual(self.version("Product Version : 4.1", exit=1), "")

    def test_a_missing_result_file_gives_no_version_and_cannot_be_deleted(self):
        world = model.World(Case(commands={"vdkcli -v": [Run(None)]}))
        self.assertEqual(world.tool_version(world.result_file_path()), "")
        path = "<DIR>/<TID>_00000000_MngSrvRaid.txt"
        self.assertEqual(at_level(world.out, FAILURE), [f"Failed to delete file({path})."])

    def test_a_colon_that_ends_the_version_line_throws_and_leaves_the_file(self):
        out = summary(version="Product Version :\nProduct Version : 4.1\n")
        self.assertEqual((out.return_value, out.mr, out.hr), (0x80000002, 0, 0x80041001))
        self.assertEqual(out.files_left, ["<TID>_00000000_MngSrvRaid.txt"])
        self.assertEqual((out.indicates, out.set_status, out.items, out.loads), (1, [0x80041001], None, 0))
        self.assertEqual([line for _, line in out.trace][-12:], [
            "CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]",
            "CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]",
            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
            "CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter [START]",
            "CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter [END]",
            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
            "CZORBALT_MngSrvRaid::ExecMethodAsync() [exception:basic_string::substr<WHAT>]",
            "CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x00000000",
            "CZORBALT_MngSrvRaid::ExecMethodAsync hr=0x80041001",
            "CZORBALT_MngSrvRaid::ExecMethodAsync() [END]"])
        self.assertEqual(len(at_level(out, CAUGHT)), 1)


class CtrlReaderTest(unittest.TestCase):
    HEAD = "RAID Controller 0 : 7"

    def items(self, *lines, **fields):
        out = summary(text(self.HEAD, *lines), **fields)
        self.assertEqual(out.return_value, 0, out.trace)
        self.assertEqual(out.items[0], CTRL_ROOT)
        return out.items[1:]

    def section(self, name, *lines):
        items = self.items(name, *lines)
        self.assertEqual(items[0], title("Controller Information", name))
        self.assertTrue(all(item[0] == name for item in items[1:]))
        return [tuple(item[1:]) for item in items[1:]]

    def test_counting(self):
        for lines, count in ((["RAID Controller 0: a", "RAID Controller:", "RAID Controllers : x"], 3),
                             (["RAID Controller", " RAID Controller 0 : a", "raid controller : 0"], 0),
                             ([], 0)):
            case = summary_case()
            case.commands["vdkcli -ctrlinfo -aAll"] = [Run(text(*lines))]
            for number in range(4):
                case.commands[f"vdkcli -ctrlinfo -a{number}"] = [Run("")]
                case.commands[f"vdkcli -ldpdinfo -a{number}"] = [Run("")]
                case.commands[f"vdkcli -pdinfo -a{number}"] = [Run("")]
            out = model.predict(case)
            self.assertEqual(out.return_value, 0)
            self.assertEqual(len(out.runs), 2 + 4 * count)
            self.assertEqual([number for _, number in out.runs], list(range(2 + 4 * count)))

    def test_the_count_is_a_signed_byte(self):
        for lines, runs in ((127, None), (128, 2), (130, 2), (255, 2), (256, 2), (257, 6)):
            out = summary(count=lines)
            if runs:
                self.assertEqual((out.return_value, out.items, len(out.runs)), (0, [], runs), lines)
            else:
                self.assertEqual(out.return_value, 0xA1)  # the report of controller 1 is unknown

    def test_settings_placeholder_stands_behind_its_neighbour(self):
        missing = ("Reconstruction Rate", "", "FALSE")
        for lines, expected in (
                (["Consistency Check Rate : 3", "z : 1"],
                 [("Consistency Check Rate", "3", "TRUE"), missing, ("z", "1", "TRUE")]),
                (["Consistency Check Rate : 3", "Consistency Check Rate : 4", "z : 1"],
                 [("Consistency Check Rate", "3", "TRUE"), ("Consistency Check Rate", "4", "TRUE"), missing,
                  ("z", "1", "TRUE")]),
                (["z : 1"], [("z", "1", "TRUE"), missing]),
                ([], [missing]),
                (["Reconstruction Rate:", "z : 1"], [("Reconstruction Rate", "", "TRUE"),
                                                     ("z", "1", "TRUE")])):
            self.assertEqual(self.section(SETTINGS, *lines), expected)

    def test_firmware_placeholders_are_crossed(self):
        package, version, time = (("Firmware " + name, "", "FALSE")
                                  for name in ("Package Version", "Version", "Build Time"))
        for keys, expected in ((["Firmware Version"], [package, version]),
                               (["Firmware Build Time"], [package, time]),
                               ([], [package, version, time]),
                               (["Firmware Version", "Firmware Build Time"], [package]),
                               (["Firmware Package Version"], [version, time])):
            own = [(key, "1", "TRUE") for key in keys]
            self.assertEqual(self.section(FIRMWARE, *[key + " : 1" for key in keys]), expected + own)

    def test_identifiers_are_renamed_outside_the_two_sections_only(self):
        items = self.items("SubDevice ID : 1", GENERAL, "SubVendor ID : 1734", "", SETTINGS,
                           "SubVendor ID : 1734")
        self.assertEqual(items, [
            ["Controller Information", "Subsystem ID", "1", "TRUE"], title("Controller Information", GENERAL),
            [GENERAL, "Controller No.", "7", "TRUE"], [GENERAL, "Subsystem Vendor ID", "1734", "TRUE"],
            title("Controller Information", SETTINGS), [SETTINGS, "SubVendor ID", "1734", "TRUE"],
            [SETTINGS, "Reconstruction Rate", "", "FALSE"]])

    def test_an_unclaimed_number_never_reaches_the_output(self):
        out = summary(text(self.HEAD, "a : b"))
        self.assertEqual(out.items, [CTRL_ROOT, ["Controller Information", "a", "b", "TRUE"]])
        self.assertEqual((out.created, out.deleted), (3, 3))

    def test_a_section_ends_at_a_blank_line(self):
        items = self.items(SETTINGS, "a:", " \t\r", "Reconstruction Rate : 1")
        self.assertEqual(items[1:], [[SETTINGS, "a", "", "TRUE"],
                                     [SETTINGS, "Reconstruction Rate", "", "FALSE"],
                                     [SETTINGS, "Reconstruction Rate", "1", "TRUE"]])

    def test_leading_blanks_matter_outside_sections_only(self):
        items = self.items(" : x", SETTINGS, " : y", "Reconstruction Rate: 1")
        self.assertEqual([item[1:3] for item in items], [["", "x"], [SETTINGS, ""],
                                                         ["Reconstruction Rate", "1"]])

    def test_a_key_before_every_root_has_no_parent(self):
        out = summary("a : b\n")
        self.assertEqual(out.items, [["", "a", "b", "TRUE"]])

    def test_a_title_that_ends_the_file_without_line_feed_is_an_error(self):
        for name in (SETTINGS, FIRMWARE):
            out = summary(text(self.HEAD) + name)
            self.assertEqual((out.return_value, out.reason, out.items), (FAILED, "06", None))
            self.assertEqual(at_level(out, FAILURE), [
                "Invalid Arg.", "CreateRAIDItem is FAILED (hr=80000001).",
                "Failed to parse RAID Information 80000001.",
                "CMSRAID_CtrlInfoGetter::GetInfo is FAILED (re=80000001).",
                "CZORBALT_MngSrvRaid::GetInfo() Error[reason:06]"])
        self.assertEqual(summary(text(self.HEAD) + GENERAL).return_value, 0)

    def two_reports(self, first, second):
        case = summary_case(first, count=2)
        case.commands["vdkcli -ctrlinfo -a1"] = [Run(second)]
        case.commands["vdkcli -ldpdinfo -a1"] = case.commands["vdkcli -pdinfo -a1"] = [Run("")]
        return model.predict(case)

    def test_a_number_left_over_is_gone_in_the_next_report(self):
        out = self.two_reports(text(self.HEAD), text("RAID Controller 1 : 8", GENERAL))
        self.assertEqual(out.items, [CTRL_ROOT, CTRL_ROOT, title("Controller Information", GENERAL),
                                     [GENERAL, "Controller No.", "8", "TRUE"]])
        self.assertEqual((out.created, out.deleted), (5, 5))

    def test_the_next_report_begins_without_a_parent(self):
        out = self.two_reports(text(self.HEAD, GENERAL), text("a : b", "### T"))
        self.assertEqual(out.items[-2:], [["", "a", "b", "TRUE"], ["", "### T", "", "TRUE"]])

    def test_two_controllers_in_one_report_share_the_next_title(self):
        items = self.items("RAID Controller 1 : 8", GENERAL)
        self.assertEqual(items, [CTRL_ROOT, title("Controller Information", GENERAL),
                                 [GENERAL, "Controller No.", "7", "TRUE"],
                                 [GENERAL, "Controller No.", "8", "TRUE"]])


class LdReaderTest(unittest.TestCase):
    def items(self, *lines):
        out = summary(ld=text(*lines))
        self.assertEqual(out.return_value, 0, out.trace)
        return out.items

    def test_group_lines(self):
        for line, starts in (("RG0", True), ("scRG12", True), ("RGX", False), ("RG", False), ("sRG1", False),
                             (" RG1", False), ("RG\xb2", False)):
            self.assertEqual(self.items(line, ""), [LD_ROOT] if starts else [], line)

    def test_ld_lines(self):
        for line, expected in (
                (">LD0 (n)", ["LD No."]), (">LD0 (n, c, s)", ["LD No.", "Name", "Capacity", "State"]),
                (">LD0", []),
                (">LD0 (n, c", ["LD No.", "Name"]), (">LD0 (n, c,", ["LD No.", "Name", "Capacity"]),
                (">LD0 (n, c, ", ["LD No.", "Name", "Capacity", "State"]),
                (">LD(n, c, s", ["Name", "Capacity", "State"]),
                (">LD0 (", ["LD No."]), (">LD0 (n, c, s, t)", ["LD No.", "Name", "Capacity", "State"])):
            items = self.items("RG0", line, GENERAL)
            self.assertEqual(items[2], [GENERAL, "LD List", "", "TRUE"])
            self.assertEqual([item[1] for item in items[3:-1]], expected, line)
            self.assertTrue(all(item[0] == "LD List" for item in items[3:-1]))
            for item in items[3:-1]:
                self.assertIn(item[2], {"LD No.": ["LD0"], "Name": ["n"], "Capacity": ["c"],
                                        "State": ["s", ""]}[item[1]])

    def test_the_whole_order_of_a_group(self):
        items = self.items(
            "RG0 (RAID 5)", "RG No. : RG0", ">LD0 (disk, 1 TB, Optimal)", ">>PD3 (Slot 3)", "Size : 5", "",
            GENERAL, "Type : x", "# of PD : 1", "Access Policy : RW", "Associated CacheCade LD",
            "LD4 (a, b, c)", "LD5",
            "", "### LD Settings\tInformation ###", "Read : y", "")
        self.assertEqual(items, [
            LD_ROOT,
            ["Logical Drive Information", "PD List", "", "TRUE"],
            ["PD List", "PD No.", "PD3", "TRUE"],
            ["PD List", "Size", "5", "TRUE"],
            title("Logical Drive Information", GENERAL),
            [GENERAL, "RG No.", "RG0", "TRUE"],
            [GENERAL, "LD List", "", "TRUE"],
            ["LD List", "LD No.", "LD0", "TRUE"], ["LD List", "Name", "disk", "TRUE"],
            ["LD List", "Capacity", "1 TB", "TRUE"], ["LD List", "State", "Optimal", "TRUE"],
            [GENERAL, "Type", "x", "TRUE"],
            [GENERAL, "Stripe Size", "", "FALSE"],
            [GENERAL, "# of PD", "1", "TRUE"],
            [GENERAL, "Associated CacheCade LD", "", "TRUE"],
            ["Associated CacheCade LD", "LD No.", "LD4", "TRUE"],
            ["Associated CacheCade LD", "Name", "a", "TRUE"],
            ["Associated CacheCade LD", "Capacity", "b", "TRUE"],
            ["Associated CacheCade LD", "State", "c", "TRUE"],
            [GENERAL, "Associated CacheCade LD", "", "TRUE"],
            title("Logical Drive Information", LD_SETTINGS),
            [LD_SETTINGS, "Access Policy", "RW", "TRUE"],
            [LD_SETTINGS, "Access Policy", "", "FALSE"],
            [LD_SETTINGS, "Read", "y", "TRUE"]])

    def test_no_associated_drive_gives_one_placeholder_at_the_end(self):
        items = self.items("RG0", "", GENERAL, "# of PD : 2", "Access Policy : RW", "z : 1", "", LD_SETTINGS)
        self.assertEqual(items[2:], [
            [GENERAL, "# of PD", "2", "TRUE"], [GENERAL, "z", "1", "TRUE"],
            [GENERAL, "Associated CacheCade LD", "", "FALSE"],
            title("Logical Drive Information", LD_SETTINGS),
            [LD_SETTINGS, "Access Policy", "RW", "TRUE"]])

    def test_stripe_size_without_neighbour_stands_at_the_end(self):
        items = self.items("RG0", "", GENERAL, " Associated CacheCade LD x", "LD1")
        self.assertEqual(items[2:], [[GENERAL, "Associated CacheCade LD", "", "TRUE"],
                                     [GENERAL, "Stripe Size", "", "FALSE"]])

    def test_group_keys_stop_at_the_first_other_line_which_is_read_again(self):
        items = self.items("RG0", "a : b", "RG1", "c : d", ">LD7", GENERAL)
        self.assertEqual(items, [LD_ROOT, LD_ROOT, title("Logical Drive Information", GENERAL),
                                 [GENERAL, "a", "b", "TRUE"], [GENERAL, "c", "d", "TRUE"],
                                 [GENERAL, "LD List", "", "TRUE"],
                                 [GENERAL, "Associated CacheCade LD", "", "FALSE"]])

    def test_a_last_line_without_line_feed_is_read_again_too(self):
        out = summary(ld="RG0\nRG1\n>LD7\nRG2x\n### T")
        self.assertEqual(out.items, [LD_ROOT] * 3 + [title("Logical Drive Information", "### T")])

    def test_sections_that_begin_at_the_end_of_the_file(self):
        for report, causes in (("RG0", []), ("RG0\n>>PD1 (x)", []), ("RG0\n\n" + GENERAL, []),
                               ("RG0\n\n" + GENERAL + "\nAssociated CacheCade LD",
                                ["ParseAssocLD is FAILED (hr=80000001)."])):
            out = summary(ld=report)
            self.assertEqual((out.return_value, out.reason), (FAILED, "06"), report)
            self.assertEqual(at_level(out, FAILURE)[:-4], ["Invalid Arg."] + causes)
            self.assertEqual(summary(ld=report + "\n").return_value, 0)

    def test_the_pd_list_writes_the_ld_lists_lines(self):
        lines = at_level(summary(ld=text(">>PD1 (x)")), FRAME)
        self.assertIn("CMSRAID_LDInfoGetter::ParseLDList [START], >>PD1 (x)", lines)
        self.assertFalse([line for line in lines if "ParsePDList" in line])

    def test_the_pd_list_gives_the_parent_back(self):
        items = self.items("RG0", "", ">>PD1", "a : 1", "", "b : 2", ">>PD(2)")
        self.assertEqual(items[1:], [
            ["Logical Drive Information", "PD List", "", "TRUE"], ["PD List", "a", "1", "TRUE"],
            ["Logical Drive Information", "b", "2", "TRUE"],
            ["Logical Drive Information", "PD List", "", "TRUE"]])

    def test_the_map_of_groups(self):
        def groups(*lines):
            found = {}
            model.LdReader.read_groups(Stream(text(*lines)), found)
            return found

        self.assertEqual(groups(">>PD1 (x)", "RG No. : RG0", ">>PD2 (x)", " >>PD 3x(y)", ">>PD4",
                                "a>>PD5 (x)"),
                         {2: "RG0", 3: "RG0"})
        self.assertEqual(groups("RG No. : A", ">>PD1(x)", "RG No. : B", ">>PD1(x)", ">>PD2(x)"),
                         {1: "A", 2: "B"})
        self.assertEqual(groups("RG No. : A", "RG No.", ">>PD1(x)", "RG No. :", ">>PD2(x)"), {1: "A"})


class PdReaderTest(unittest.TestCase):
    LD = text("RG0", "RG No. : RG0", "", ">>PD0 (x)")

    def items(self, *lines):
        out = summary(pd=text(*lines), ld=self.LD)
        self.assertEqual(out.return_value, 0, out.trace)
        return out.items[3:]  # behind what the logical drives' report gives

    def header(self, line):
        """The header's items as (name, value), and the level 2 lines of the reader itself."""
        out = summary(pd=text(line, GENERAL, "Temperature:"), ld=self.LD)
        own = [text for text in at_level(out, FAILURE) if "ParsePDLDNo" in text or "m_MapRGNo" in text]
        made = [(name, value) for parent, name, value, _ in out.creations
                if parent == GENERAL and name.endswith("No.")]
        return made, own, out.return_value

    def test_the_command_follows_the_version(self):
        for version, modern in (("4.1", True), ("4.0", True), ("12.3", True), ("4.", True), ("3.9", False),
                                ("3.5", False), ("4.0.1", False), ("4", False), ("", False), (".4", False),
                                ("x.4", False), ("4.1.", False)):
            out = summary(version=f"Product Version : {version}\n")
            self.assertEqual(out.runs[-1][0], "-pdinfo -nosmart -a0" if modern else "-pdinfo -a0", version)
            self.assertIn(f"VDK Version is {version}.", at_level(out, RESULT))

    def test_headers(self):
        for line, expected in (
                ("PD0(LD0)", [("PD No.", "PD0"), ("RG No.", "RG0"), ("LD No.", "LD0")]),
                ("PD0 (LD x )y", [("PD No.", "PD0"), ("RG No.", "RG0"), ("LD No.", "LD x ")]),
                ("PD1(GHS)", [("PD No.", "PD1"), ("RG No.", "-"), ("LD No.", "GHS")]),
                ("PD1(RLDx", [("PD No.", "PD1"), ("RG No.", "-"), ("LD No.", "RLD")]),
                ("PD5(DHS RG2)", [("PD No.", "PD5"), ("RG No.", "RG2"), ("LD No.", "DHS")]),
                ("PD5(DHS RG2 ) \r", [("PD No.", "PD5"), ("RG No.", "RG2"), ("LD No.", "DHS")]),
                ("PD5(DHS RG", [("PD No.", "PD5"), ("RG No.", "R"), ("LD No.", "DHS")]),
                ("PD2(XYZ)", [("PD No.", "PD2"), ("LD No.", "None"), ("RG No.", "-")]),
                ("PD2( LD0)", [("PD No.", "PD2"), ("LD No.", "None"), ("RG No.", "-")]),
                ("PD(LD0)", []), (" PD0(LD0)", []), ("PD\xb2(LD0)", [])):
            self.assertEqual(self.header(line), (expected, [], 0), line)

    def test_broken_headers(self):
        for line, expected, cause in (
                ("PD3", [], "ParsePDLDNo format error.(PD3)"),
                ("PD3(", [("PD No.", "PD3")], "ParsePDLDNo format error.(PD3()"),
                ("PD0(LD0", [("PD No.", "PD0"), ("RG No.", "RG0")], "ParsePDLDNo format error.(PD0(LD0)"),
                ("PD5(DHS)\t", [("PD No.", "PD5"), ("LD No.", "DHS")], "ParsePDLDNo is FAILED.(PD5(DHS)\t)")):
            self.assertEqual(self.header(line), (expected, [cause], FAILED), line)

    def test_a_drive_without_group(self):
        self.assertEqual(self.header("PD7(LD1)"), ([("PD No.", "PD7"), ("RG No.", "-"), ("LD No.", "LD1")],
                                                   ["m_MapRGNo search error.(PD7(LD1))"], 0))

    def test_status(self):
        for detail, basic in (("ONLINE", "NO ERROR"), ("COPYBACK", "NO ERROR"), ("Unconfig GOOD", "NO ERROR"),
                              ("HOT SPARE", "NO ERROR"), ("OFFLINE", "ERROR"), ("Unconfig BAD", "ERROR"),
                              ("FAILED", "ERROR"), ("REBUILD", "REBUILD"), ("Online", "UNKNOWN"),
                              ("", "UNKNOWN")):
            items = self.items("PD1(GHS)", GENERAL, "a : b", f"PD Status : {detail}", "Temperature : 1")
            self.assertEqual(items[5:], [
                [GENERAL, "a", "b", "TRUE"], [GENERAL, "PD Status", basic, "TRUE"],
                [GENERAL, "PD Status(Detail)", detail, "TRUE"], [GENERAL, "Temperature", "1", "TRUE"]])

    def test_temperature_placeholder(self):
        items = self.items("PD1(GHS)", GENERAL, "Power Status : on", "z : 1")
        self.assertEqual(items[5:], [[GENERAL, "Temperature", "", "FALSE"],
                                     [GENERAL, "Power Status", "on", "TRUE"],
                                     [GENERAL, "z", "1", "TRUE"]])
        self.assertEqual(self.items("PD1(GHS)", GENERAL, "z : 1")[6:],
                         [[GENERAL, "Temperature", "", "FALSE"]])

    def test_the_slot_section_begins_with_its_placeholder(self):
        for end in ("\n", ""):  # a title that ends the file is no error here
            out = summary(pd=text("PD1(GHS)") + SLOT + end)
            self.assertEqual(out.items, [PD_ROOT, title("Physical Drive Information", ENCLOSURE),
                                         [ENCLOSURE, "Enclosure ID", "", "FALSE"]])

    def test_the_smart_section_is_dropped_up_to_a_line_of_a_drive(self):
        items = self.items("PD1(GHS)", SMART + " x", "Temperature : 3", "", "### T", "PD2(GHS)", GENERAL)
        self.assertEqual(items[:3], [PD_ROOT, PD_ROOT, title("Physical Drive Information", GENERAL)])

    def test_a_trimmed_drive_line_ends_the_smart_section_but_starts_no_drive(self):
        items = self.items("PD1(GHS)", SMART, "x", " PD2(GHS)", "RAID Controller : 1", "### T", "a : b")
        self.assertEqual(items, [PD_ROOT, ["Physical Drive Information", "RAID Controller", "1", "TRUE"],
                                 title("Physical Drive Information", "### T")])

    def test_pending_header_items_land_under_the_next_drive(self):
        items = self.items("PD1(GHS)", "PD2(RLD)", GENERAL, "Temperature:")
        self.assertEqual([item[2] for item in items[3:]], ["PD1", "-", "GHS", "PD2", "-", "RLD", ""])

    def test_lines_before_the_first_drive_have_no_parent(self):
        items = self.items("RAID Controller 0 : 1", "a : b", "### T", "RAID Controller 1 : 2")
        self.assertEqual(items, [["", "RAID Controller 0", "1", "TRUE"], ["", "### T", "", "TRUE"],
                                 ["### T", "RAID Controller 1", "2", "TRUE"]])

    def test_without_the_map_the_tool_is_not_asked_for_drives(self):
        case = summary_case()
        case.commands["vdkcli -ldpdinfo -a0"] = [Run(""), Run("Error - Invalid input at or near token", 1)]
        out = model.predict(case)
        self.assertEqual((out.return_value, out.reason, out.runs[-1]), (0xA1, "01", ["-ldpdinfo -a0", 4]))
        self.assertEqual(at_level(out, FAILURE)[-4:-1], [
            "Failed to execute vdkcli command 000000a1.",
            "CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (hr=000000a1).",
            "CMSRAID_PDInfoGetter::GetInfo is FAILED (re=000000a1)."])


class SmartReaderTest(unittest.TestCase):
    SATA_HEADER = "ID  " + "Attribute".ljust(40) + "Flag  Raw Data  Status"

    def report(self, kind, *lines):
        return text("PD1(GHS)", GENERAL, "Temperature:", f"Interface Type : {kind}", "", SMART, *lines)

    def smart_items(self, kind, *lines, end=""):
        out = drive(self.report(kind, *lines) + end)
        self.assertEqual(out.return_value, 0, out.trace)
        return out.items[8:]

    def table(self, kind, *lines):
        return [tuple(item[1:3]) for item in self.smart_items(kind, "Temperature:", "Power-On Time:", "",
                                                              *lines)[2:]]

    def throws(self, kind, *lines):
        out = drive(self.report(kind, "", *lines))
        caught = (out.return_value, out.hr) == (0x80000002, 0x80041001)
        return caught and not out.files_left and out.loads == out.unloads

    def test_commands(self):
        out = drive("")
        self.assertEqual(out.runs, [["-ldpdinfo -a0", 0], ["-pdinfo -pd[2:5] -a0", 1]])
        case = drive_case("")
        case.ctrl_no, case.encl_no, case.pd_no = "99999999999999999999", "2147483648", "4294967295x"
        self.assertEqual(model.predict(case).runs, [["-ldpdinfo -a9223372036854775807", 0]])
        case.commands["vdkcli -ldpdinfo -a9223372036854775807"] = [Run("")]
        self.assertEqual(model.predict(case).runs[1][0], "-pdinfo -pd[-2147483648:-1] -a9223372036854775807")

    def test_placeholders(self):
        self.assertEqual(self.smart_items("x", "a : b"), [
            [SMART, "a", "b", "TRUE"], [SMART, "Temperature", "", "FALSE"],
            [SMART, "Power-On Time", "", "FALSE"]])

    def test_no_table(self):
        for kind, expected in (("SAS", [("SMART Detail(SAS)", "")]), ("SATA", [("SMART Detail(SATA)", "")]),
                               ("x", []),
                               ("sas", [])):
            self.assertEqual(self.table(kind), expected)
            self.assertEqual(self.table(kind, "", "### T"), expected + [("### T", "")])

    def test_the_line_that_is_no_header_is_read_again(self):
        items = self.table("SAS", "", " \t", "PD2(GHS)", GENERAL)
        self.assertEqual(items[:3], [("SMART Detail(SAS)", ""), ("Physical Drive Information", ""),
                                     (GENERAL, "")])

    def test_a_last_line_without_line_feed_is_read_again(self):
        self.assertEqual(self.smart_items("SAS", "", end="### T")[3],
                         title("Physical Drive Information", "### T"))

    def test_a_section_that_ends_the_file(self):
        for end in ("", " ", "Temperature : 1"):
            self.assertEqual(self.smart_items("SAS", end=end)[-1], [SMART, "SMART Detail(SAS)", "", "FALSE"])

    def test_another_interface_reads_no_table(self):
        self.assertEqual(self.table("x", "Attribute", "PD2(GHS)"), [("Physical Drive Information", "")])

    def test_sata_rows(self):
        row = "1   " + "Spin Up Time".ljust(40) + "0x1   7  OK"
        self.assertEqual(self.table("SATA", self.SATA_HEADER, "-----", row, "", " " + row), [
            ("SMART Detail(SATA)", ""), ("ID", "1"), ("Attribute", "Spin Up Time"), ("Flag", "0x1"),
            ("Raw Data", "7"),
            ("Status", "OK")] * 2)

    def test_sata_header_columns(self):
        reader = model.SmartReader(model.World(Case()))
        for header, names in (("ID Attribute Flag Raw Data Next",
                               ["ID", "Attribute", "Flag", "Raw Data", "Next"]),
                              ("Attribute\t Raw", ["Attribute", "Raw"]),
                              ("Raw Datum x", ["Raw Data", "m", "x"]),
                              ("Attribute", ["Attribute"])):
            self.assertEqual(reader.split_header(header, raw_rule=True)[0], names)
        for header in ("ID Raw Data", "Raw x", "ID Raw a b"):
            self.assertRaises(OutOfRange, reader.split_header, header, True)
            reader.split_header(header, raw_rule=False)

    def test_sata_cells(self):
        reader = model.SmartReader(model.World(Case()))
        name = "n" * 41
        for row, cells in (("1", ["1"]), ("1 two", ["1", "two"]), ("1 " + name, ["1", name]),
                           ("1 " + name + " x", ["1", "n" * 40, "n", "x"]),
                           ("1\t" + "a b".ljust(40) + "x  y", ["1", "a b", "x", "y"])):
            self.assertEqual(reader.split_sata_row(row), cells)
        for row in ("1 two x", "1 " + "a b".ljust(39) + "x"):
            self.assertRaises(OutOfRange, reader.split_sata_row, row)
        self.assertEqual(reader.split_sata_row("1 " + "a b".ljust(40) + "x"), ["1", "a b", "x"])

    def test_a_row_of_other_length_fails_with_its_group_item(self):
        out = drive(self.report("SATA", "", self.SATA_HEADER, "----", "1 two"))
        self.assertEqual((out.return_value, out.reason, out.items), (FAILED, "06", None))
        self.assertEqual(at_level(out, FAILURE)[:2], ["Parse SmartDeital is FAILED.(1 two)",
                                                      "CreateRAIDItem is FAILED (hr=80000001)."])
        self.assertEqual(out.creations[-1], [SMART, "SMART Detail(SATA)", "", "TRUE"])

    def test_short_lines_throw(self):
        self.assertTrue(self.throws("SATA", "Attribute Raw Data"))
        self.assertTrue(self.throws("SATA", self.SATA_HEADER, "", "1 two three"))
        self.assertTrue(self.throws("SAS", "Attribute  Total  Errors", "", "Read       1"))
        self.assertFalse(self.throws("SAS", "Attribute  Total", "", "Read       1"))

    def test_an_exception_leaves_without_end_lines_but_with_the_destructors(self):
        out = drive(self.report("SAS", "", "Attribute  Total", "", "Read"))
        self.assertEqual([line for _, line in out.trace][-20:], [
            "CMSRAID_PDSMInfoGetter::ParseSMARTInfo [START]", "CMSRAID_PDSMInfoGetter::ParseSMARTSAS [START]",
            "CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]",
            "CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]",
            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
            "CMSRAID_PDSMInfoGetter::~CMSRAID_PDInfoGetter [START]",
            "CMSRAID_PDSMInfoGetter::~CMSRAID_PDInfoGetter [END]",
            "CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [START]",
            "CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [END]",
            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
            "CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]",
            "CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]",
            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
            "CZORBALT_MngSrvRaid::ExecMethodAsync() [exception:basic_string::substr<WHAT>]",
            "CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x00000000",
            "CZORBALT_MngSrvRaid::ExecMethodAsync hr=0x80041001",
            "CZORBALT_MngSrvRaid::ExecMethodAsync() [END]"])
        self.assertEqual(out.created, out.deleted)

    def test_the_heads_label_is_joined_to_the_first_cell(self):
        rows = self.table("SAS", "Attribute   Total", "----", "Plain       1", " [Head 0] ", "Read        2",
                          "",
                          "Write       3 4", "[Head 1", "Read        5")
        self.assertEqual([value for name, value in rows if name == "Attribute"],
                         ["Plain", "[Head 0]Read", "[Head 0]Write", "[Head 1Read"])
        self.assertEqual([value for name, value in rows if name == "Total"], ["1", "2", "3 4", "5"])
        self.assertEqual(rows[0], ("SMART Detail(SAS)", ""))

    def test_the_children_hang_under_the_constant_text(self):
        items = self.smart_items("SAS", "", "Attribute", "--", "Read it")[2:]
        self.assertEqual(items, [[SMART, "SMART Detail(SAS)", "", "TRUE"],
                                 ["SMART Detail(SAS)", "Attribute", "Read it", "TRUE"]])

    def test_a_drive_without_smart_title_gets_nothing(self):
        self.assertEqual(len(drive(text("PD1(GHS)", "### SMART Information", "Attribute")).items), 2)


class MethodTest(unittest.TestCase):
    def test_a_clean_call(self):
        out = summary()
        self.assertEqual((out.return_value, out.mr, out.hr, out.items, out.xml_stored), (0, 0, 0, [], True))
        self.assertEqual((out.indicates, out.set_status, out.loads, out.unloads), (1, [0], 1, 1))
        self.assertEqual(out.runs, [["-v", 0], ["-ctrlinfo -aAll", 1], ["-ctrlinfo -a0", 2],
                                    ["-ldpdinfo -a0", 3],
                                    ["-ldpdinfo -a0", 4], ["-pdinfo -a0", 5]])
        self.assertEqual((at_level(out, FAILURE), out.files_left), ([], []))

    def test_the_tool_is_checked_before_authority(self):
        for method in ("GetInfo", "GetPDInfo"):
            out = model.predict(Case(method=method, tool="missing", has_authority="no", app_key="k"))
            self.assertEqual(out.trace, [
                [FRAME, "CZORBALT_MngSrvRaid::ExecMethodAsync() [START]"],
                [FRAME, f"CZORBALT_MngSrvRaid::{method} [START]"],
                [FAILURE, "VDK is not installed."]]
                + [[FRAME, "CZORBALT_MngSrvRaid::FreeItemList [START]"],
                   [FRAME, "CZORBALT_MngSrvRaid::FreeItemList [END]"]] * (2 if method == "GetInfo" else 1)
                + [[FAILURE, f"CZORBALT_MngSrvRaid::{method}() Error[reason:03]"],
                   [MESSAGE, "MSGID_MNGSRV_RAID_0001_F 03"],
                   [FRAME, f"CZORBALT_MngSrvRaid::{method} [END]"],
                   [RESULT, "CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x000000a0"],
                   [FRAME, "CZORBALT_MngSrvRaid::ExecMethodAsync() [END]"]])
            self.assertEqual((out.return_value, out.hr), (0xA0, 0))

    def test_authority(self):
        self.assertEqual(summary(has_authority="no", app_key="k").return_value, 0x11)
        self.assertEqual(summary(has_authority="no", app_key="").return_value, 0)

    def test_library(self):
        for library, loads, ending in (("absent", 0, ")."), ("incomplete", 1, ") .")):
            out = summary(library=library)
            self.assertEqual((out.return_value, out.reason, out.loads, out.unloads), (FAILED, "05", loads, 0))
            self.assertEqual(at_level(out, FAILURE)[0], "Failed to load MngSrv_QelLib Library(<DLERROR>"
                             + ending)
        out = summary(wrapper="absent")
        self.assertEqual((out.return_value, out.reason), (FAILED, "05"))
        self.assertFalse([line for _, line in out.trace if "CMSRAID_MngLib" in line])

    def test_conversion(self):
        for fields, lines in (({"create_lib_if": "null"}, ["Failed to initialize QelLibIF."]),
                              ({"convert_status": 0x80004005}, ["Failed to convert XML format 80004005."]),
                              ({"convert_text": "null"}, ["Failed to convert XML format 00000000."])):
            out = summary(**fields)
            self.assertEqual((out.return_value, out.reason, out.unloads), (0xA1, "02", 1))
            self.assertEqual(at_level(out, FAILURE)[:2], lines + ["Failed to convert XML format 00000000."])
            out = drive("", **fields)
            self.assertEqual(at_level(out, FAILURE)[:2], lines
                             + ["Failed to convert XML format (hr=00000000)."])

    def test_store(self):
        out = summary(store_status=0x80041002)
        self.assertEqual((out.return_value, out.reason), (FAILED, "08"))
        self.assertEqual(at_level(out, FAILURE)[0],
                         "setParameterClassArrayToIWbemClassObject XmlData is FAILED (hr=80041002).")

    def test_missing_parameter(self):
        case = drive_case("")
        case.encl_no = case.pd_no = None
        out = model.predict(case)
        self.assertEqual((out.return_value, out.reason, out.loads, out.unloads, out.runs),
                         (FAILED, "09", 1, 1, []))
        self.assertEqual(at_level(out, FAILURE)[0],
                         "getStringFromIWbemClassObject EnclNo is FAILED (hr=<HR>).")

    def test_a_later_controller_that_fails(self):
        case = summary_case(text("RAID Controller 0 : 0", GENERAL), count=2)
        case.commands["vdkcli -ctrlinfo -a1"] = [Run(text("RAID Controller 1 : 1"))]
        case.commands["vdkcli -ldpdinfo -a1"] = [Run(None)]
        out = model.predict(case)
        self.assertEqual((out.return_value, out.reason, out.items), (FAILED, "04", None))
        self.assertEqual((out.created, out.deleted), (5, 5))
        path = "<DIR>/<TID>_00000007_MngSrvRaid.txt"
        self.assertEqual(at_level(out, FAILURE), [
            f"Failed to open file output by vdkcli({path}).", f"Failed to delete file({path}).",
            "CMSRAID_LDInfoGetter::GetInfo is FAILED (re=80000001).",
            "CZORBALT_MngSrvRaid::GetInfo() Error[reason:04]"])

    def test_controllers_that_cannot_be_counted(self):
        for run, code, reason in ((Run("", 1), 0xA1, "01"), (Run(None), FAILED, "04")):
            case = summary_case()
            case.commands["vdkcli -ctrlinfo -aAll"] = [run]
            out = model.predict(case)
            self.assertEqual((out.return_value, out.reason), (code, reason))
            self.assertIn(f"CMSRAID_CtrlInfoGetter::GetCtrlNum is FAILED (re={code:08x}).",
                          at_level(out, FAILURE))

    def test_other_methods_go_to_the_base(self):
        out = model.predict(Case(method="getinfo", base_status=0x80041013))
        self.assertEqual((out.mr, out.return_value, out.hr, out.indicates, out.set_status),
                         (0, None, 0x80041013, 0, [0x80041013]))
        self.assertEqual([line for _, line in out.trace], [
            "CZORBALT_MngSrvRaid::ExecMethodAsync() [START]",
            "CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x00000000",
            "CZORBALT_MngSrvRaid::ExecMethodAsync hr=0x80041013",
            "CZORBALT_MngSrvRaid::ExecMethodAsync() [END]"])

    def test_no_class(self):
        out = model.predict(Case(klass="absent"))
        self.assertEqual((out.hr, out.set_status, out.indicates, len(out.trace)),
                         (0x8004100C, [0x8004100C], 0, 1))

    def test_an_empty_install_path_is_traced_for_every_result_file(self):
        lines = at_level(summary(root="empty", cim="empty"), FAILURE)
        self.assertEqual(lines, ["Failed to get INSTALLPATH_CIM."] * 7)

    def test_every_item_that_cannot_be_made_fails_the_call(self):
        ld = text("RG0", "RG No. : RG0", ">LD0 (n, c, s)", ">>PD0 (x)", "a : b", "", GENERAL, "# of PD : 1",
                  "Access Policy : RW", "Associated CacheCade LD", "LD1 (a, b, c)", "", LD_SETTINGS)
        ctrl = text("RAID Controller 0 : 0", "x : y", GENERAL, "", FIRMWARE, "k : v", "", SETTINGS, "k : v",
                    "")
        pd = text("PD0(LD0)", GENERAL, "PD Status : ONLINE", "", SLOT, "a : b", "", SMART)
        whole = summary(ctrl, ld, pd)
        self.assertEqual(whole.return_value, 0)
        for number in range(1, whole.created + 1):
            out = summary(ctrl, ld, pd, create_null_at=number)
            self.assertEqual((out.return_value, out.reason, out.created, out.items),
                             (FAILED, "06", number - 1, None))
            self.assertEqual(out.creations, whole.creations[:number])


class CaseFileTest(unittest.TestCase):
    def test_file_stems(self):
        self.assertEqual(casefile.file_stem("-ctrlinfo -aAll"), "_ctrlinfo__aAll")
        self.assertEqual(casefile.file_stem("-pdinfo -pd[2:5] -a0"), "_pdinfo__pd_2_5___a0")
        self.assertEqual(casefile.file_stem("-v"), "_v")

    def test_cases_read_back_as_written(self):
        with tempfile.TemporaryDirectory() as folder:
            for number in range(60):
                case = cases.make("read back", number)
                casefile.save(case, f"{folder}/{number}")
                self.assertEqual(casefile.load(f"{folder}/{number}"), case)

    def test_cases_are_the_same_every_time(self):
        self.assertEqual(cases.make("x", 3), cases.make("x", 3))
        self.assertNotEqual(cases.make("x", 3), cases.make("x", 4))

    def test_random_cases_keep_the_books(self):
        for number in range(400):
            out = model.predict(cases.make("books", number))
            self.assertEqual(out.created, out.deleted)
            if out.hr == 0:
                self.assertTrue(self.nested(at_level(out, FRAME)), number)

    @staticmethod
    def nested(lines):
        """Every start line has its end line, the later one closed first."""
        open_operations = []
        for line in lines:
            name, _, rest = line.partition(" [")
            if rest.startswith("START]"):
                open_operations.append(name)
            elif not open_operations or open_operations.pop() != name:
                return False
        return not open_operations


class CompareTest(unittest.TestCase):
    MACHINE = {"<DIR>": "/opt/x/tmp/MSRAID", "<TID>": "0001f2b3", "<WHAT>": ": __pos (which is 5)",
               "<DLERROR>": "",
               "<HR>": "80041002"}

    def observation(self, case, first_counter=0):
        """What a module that does exactly as predicted would report."""
        written = json.dumps(compare.as_observation(model.predict(case, first_counter)))
        for placeholder, found in self.MACHINE.items():
            written = written.replace(placeholder, found)
        return json.loads(written)

    def test_an_equal_outcome_has_no_difference(self):
        for number in range(200):
            case = cases.make("equal", number)
            self.assertEqual(compare.differences(case, self.observation(case)), [])

    def test_every_field_is_compared(self):
        case = summary_case(text("RAID Controller 0 : 0", GENERAL))
        for key in compare.REQUIRED:
            seen = self.observation(case)
            seen[key] = {"items": [["", "x", "", "TRUE"]], "trace": seen["trace"][:-1],
                         "runs": seen["runs"][1:]}.get(key, 77)
            self.assertTrue(compare.differences(case, seen), key)
            del seen[key]
            self.assertTrue(compare.differences(case, seen), key)

    def test_placeholders_match_their_kind_only(self):
        self.assertTrue(compare.matches("a(<DIR>/<TID>_0000000a_x)", "a(/opt/t/0001f2b3_0000000a_x)"))
        self.assertFalse(compare.matches("a(<DIR>/<TID>_0000000a_x)", "a(/opt/t/0001f2b3_0000000b_x)"))
        self.assertTrue(compare.matches("[exception:basic_string::substr<WHAT>]",
                                        "[exception:basic_string::substr: __pos (which is 5)]"))
        self.assertTrue(compare.matches("(hr=<HR>)", "(hr=80041002)"))
        self.assertFalse(compare.matches("(hr=<HR>)", "(hr=00041002)"))

    def test_the_counter_may_start_anywhere(self):
        case = summary_case()
        case.commands["vdkcli -ldpdinfo -a0"] = [Run(None)]
        seen = self.observation(case, 900)
        seen["first_counter"] = 900
        self.assertEqual(compare.differences(case, seen), [])
        seen["first_counter"] = 0
        self.assertTrue(compare.differences(case, seen))


if __name__ == "__main__":
    unittest.main()
