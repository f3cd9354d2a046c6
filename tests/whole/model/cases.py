"""Random cases: reports made from the vocabulary that the readers know, whole or broken in many ways.

    python3 cases.py --seed 7 --count 2000 --out FOLDER

Case N of a seed is always the same, whatever the count.
"""

import argparse
import os
import random

from casefile import Case, Run, load, save

MARKER = "Error - Invalid input at or near token"
NOT_FOUND, TYPE_MISMATCH = 0x80041002, 0x80041005  # how a class can refuse "XmlData"
SIZES = ("0 MB", "278.875 GB", "1.818 TB", "465 GB", "")
WORDS = ("Enabled", "Disabled", "Yes", "No", "30%", "64KB", "Optimal", "a:b", "1 : 2", "-", "", "x" * 60)

# Lines that some rule looks at, thrown anywhere into any report.
STRAYS = (
    "", " ", "\t", "\r", ":", ": x", "  : x", "x", "x:", "x: ", "a:b:c", " lead : v", "\tlead\t:\tv\t",
    "\rcr : v", "nul\0key : v", "key : v\0w", "\0", "\xff\xfe : \x80", "###", "### ", "###x", "### x",
    "### x : y ###", " ### General Information ###", "### General Information ###",
    "### General Information ### \t", "###\tGeneral Information ###", "###  General Information ###",
    "### General\tInformation ###", "### General Information", "### general information ###",
    "### General Information ###\0x", "### Firmware/BIOS/Driver Information ###",
    "### Controller Settings Information ###", "### LD Settings Information ###",
    "### LD\tSettings Information ###", "### Slot Information ###", "### SMART Information ###",
    "### SMART Information ### (1)", "### SMART Information", "### Other ###",
    "### Enclosure Properties Information ###", "RAID Controller", "RAID Controller 0",
    "RAID Controller 0: 0", "RAID Controller:", " RAID Controller 0 : 0", "RAID Controllers : 7",
    "RAID Controller\0 : 1", "raid controller : 0", "RG", "RG0", "RG1 (scattered)", "RGX", "RG: 3", "RG 4",
    "sRG1", "scRG", "scRG12", "scRGx", " RG2", "RG\xb2", "RG No. : RG0", "RG No. : RG1", "RG No. :", "RG No.",
    " RG No. : 7", "RG No.: a:b", "RG No. : RG\0001", ">LD", ">LD0", ">LD0 (", ">LD0 ()", ">LD0 (only)",
    ">LD0 (n,", ">LD0 (n,c", ">LD0 (n,c,", ">LD0 (n,c, ", ">LD0 (n,c,\r", ">LD0 (n,c,s", ">LD0 (n,c,s)",
    ">LD0 (n,c,s,t)", ">LD0 (n,,)", ">LD0 (,,,)", ">LD (n,c,s)", ">LD(n,c,s)", "(>LD0", " >LD1 (n,c,s)",
    "x>LD2 ( n , c , s ) tail", ">>LD3 (n,c,s)", ">LD4 (n:1,c,s)", "### >LD", ">>PD", ">>PD0", ">>PD0 (",
    ">>PD0 (Slot 1)", ">>PD(1)", ">>PD (1)", ">>PD 1 (x)", " >>PD2 (x)", "a>>PD3(x)", ">>PD-1(x)",
    ">>PD+2(x)", ">>PD 03x(y)", ">>PDx(y)", ">>PD99999999999999999999(x)", ">>PD1\0002(x)", "(>>PD5", "PD",
    "PD0", "PDX", "PD(LD0)", "PD Status", "PD(", " PD0(LD0)", "PD0(", "PD0 (LD0)", "PD0( LD0)", "PD0(LD0",
    "PD0(LD)", "PD0(LDx y)z", "PD1(GHS)", "PD1(GHS", "PD1(GHSx)", "PD2(RLD)", "PD2(RLD", "PD3(DHS)",
    "PD3(DHS RG2)", "PD3(DHS RG2", "PD3(DHSRG)", "PD3(DHS RG", "PD3(DHS scRG4 )", "PD3(DHS R G)", "PD4(XYZ)",
    "PD4()", "PD4( GHS)", "PD5(LD1)\t \r", "PD6(LD\0001)", "PD7x(LD1)", "PD1.5(LD1)", "PD0:3(LD0)",
    "PD00(LD0)", "PD9999999999999999999(LD0)", "PD\xb2(LD0)", "SubVendor ID : 1734", "SubDevice ID: 11E4",
    "SubVendor ID x : 1", "Subvendor ID : 1", "SubVendor ID\0 : 9", "Reconstruction Rate : 30%",
    "Reconstruction Rate", "Consistency Check Rate : 20%", "Consistency Check Rate:",
    "Firmware Package Version : 23.1", "Firmware Version : 3.2", "Firmware Build Time : 10:11:12",
    "Firmware Version", "Associated CacheCade LD", "Associated CacheCade LD :",
    "  Associated CacheCade LD x : y", "associated : LD", "# of PD : 2", "# of PD:", "#of PD : 2",
    "Access Policy : Read Write", "Access Policy :", "Access Policy", "Stripe Size : 64KB", "LD0 (a,b,c)",
    "LD1(a", "(a,b,c)", "LD2 (a,b, ", "PD Status : ONLINE", "PD Status : Online", "PD Status :",
    "PD Status : HOT SPARE", "PD Status : REBUILD", "PD Status(Detail) : x", "Temperature : 30",
    "Temperature:", "temperature : 1", "Power Status : Spun up", "Power-On Time : 12 hours", "Power-On Time",
    "Interface Type : SAS", "Interface Type : SATA", "Interface Type : NVMe", "Interface Type :",
    "Interface Type : SAS\0x", "Enclosure ID : 252", "Attribute", "An Attribute : x", "ID Attribute Raw",
    "Attribute Raw Data", "Attribute Raw Data x", "Raw", "[Head 0]", " [Head 1", "[Head", "[head 2]",
    "---- ----", "Product Version : 4.1", MARKER + " -x", " " + MARKER,
)


class Maker:
    """Everything random about one case comes from one generator."""

    def __init__(self, rng):
        self.rng = rng

    def chance(self, share):
        return self.rng.random() < share

    def pick(self, *choices):
        return self.rng.choice(choices)

    def weighted(self, **weights):
        return self.rng.choices(list(weights), list(weights.values()))[0]

    def key(self, name, *values):
        separator = self.rng.choice((" : ", " : ", ": ", ":", "\t: ", " :\t"))
        return name + separator + self.rng.choice(values or WORDS)

    def some(self, share, *lines):
        return [line for line in lines if self.chance(share)]

    # whole reports, as lists of lines

    def ctrl_count(self, count):
        lines = []
        for number in range(count):
            lines += [f"RAID Controller {number} : {number}"]
            if count < 10:
                lines += self.some(0.5, "### General Information ###", self.key("Product Name"), "")
        return lines

    def ctrl_info(self, number):
        lines = [f"RAID Controller {number} : {number}"]
        lines += self.some(0.2, self.key("SubVendor ID", "1734"), self.key("Bus"), "")
        if self.chance(0.9):
            lines += ["### General Information ###"]
            lines += self.some(0.6, self.key("Product Name"), self.key("Serial No."),
                               self.key("Vendor ID", "1A2B"),
                               self.key("SubVendor ID", "1734"), self.key("SubDevice ID", "11E4"),
                               self.key("Subsystem ID", "1"))
            lines += [""]
        sections = [
            ["### Firmware/BIOS/Driver Information ###"] + self.some(
                0.5, self.key("Firmware Package Version", "7.1.0-0042"),
                self.key("Firmware Version", "3.4.5"),
                self.key("Firmware Build Time", "Jan 01 2014 10:11:12"), self.key("BIOS Version"),
                self.key("Firmware Version", "again")),
            ["### Controller Settings Information ###"] + self.some(
                0.5, self.key("Rebuild Rate"), self.key("Consistency Check Rate", "30%"),
                self.key("Reconstruction Rate", "30%"), self.key("Consistency Check Rate", "twice"),
                self.key("SubVendor ID", "1"), self.key("Alarm")),
            ["### Battery Information ###"] + self.some(0.5, self.key("State"), self.key("SubDevice ID")),
        ]
        self.rng.shuffle(sections)
        for section in sections:
            if self.chance(0.85):
                lines += section + [""]
        return lines

    def drive_group(self, prefix, number, drives):
        lines = [f"{prefix}{number}" + self.pick("", " ", " (RAID 5)", ": x")]
        keys = self.some(0.5, self.key("RAID Level", "5"), self.key("Hot Spare"))
        keys.append(self.key("RG No.", f"{prefix}{number}"))
        self.rng.shuffle(keys)
        lines += keys + self.some(0.3, "")
        for number_of_ld in range(self.rng.randrange(3)):
            lines.append(f">LD{number_of_ld} (disk{number_of_ld}, {self.rng.choice(SIZES)}, Optimal)")
            lines += self.some(0.2, "")
        for drive in drives:
            lines.append(f">>PD{drive} (Slot {drive})")
            lines += self.some(0.5, self.key("Capacity", *SIZES), self.key("State")) + [""]
        if self.chance(0.9):
            lines += ["### General Information ###"]
            lines += self.some(0.6, self.key("LD No.", "0"), self.key("Stripe Size", "64KB"),
                               self.key("# of PD", "2"),
                               self.key("Access Policy", "Read Write"), self.key("Type"))
            if self.chance(0.4):
                lines += [self.pick("Associated CacheCade LD", "Associated CacheCade LD :")]
                lines += self.some(0.6, "LD4 (cache, 100 GB, Optimal)", "LD5(c", " LD6 (x, y, z, w)", "LD7",
                                   "(,,)")
            lines += [""]
        if self.chance(0.8):
            lines += [self.pick("### LD Settings Information ###", "### LD Settings\tInformation ###")]
            lines += self.some(0.6, self.key("Read Policy"), self.key("Write Policy")) + [""]
        return lines

    def ld_info(self, number):
        lines = [f"RAID Controller {number} : {number}", ""]
        free = list(range(8))
        self.rng.shuffle(free)
        for group in range(self.rng.randrange(4)):
            drives = [free.pop() for _ in range(min(len(free), self.rng.randrange(4)))]
            if self.chance(0.1):
                drives.append(self.rng.randrange(8))
            lines += self.drive_group(self.pick("RG", "RG", "scRG"), group, drives)
        return lines

    def smart_table(self, kind):
        if kind == "SAS":
            return self.sas_table()
        return self.sata_table() if kind == "SATA" else self.pick([], self.sas_table(), self.sata_table())

    def sas_table(self):
        widths = [self.rng.randrange(6, 14) for _ in range(self.rng.randrange(1, 6))]
        names = ["Attribute", "Total", "Corrected", "Delayed", "Rewrites", "Raw"][:len(widths)]
        widths = [max(width, len(name) + 1) for name, width in zip(names, widths)]
        lines = ["".join(name.ljust(width) for name, width in zip(names, widths)).rstrip(), "-" * 20]
        for _ in range(self.rng.randrange(4)):
            if self.chance(0.4):
                lines.append(f"[Head {self.rng.randrange(3)}]")
            cells = [self.pick("Read", "Write", "Verify")]
            cells += [str(self.rng.randrange(10**6)) for _ in widths[1:]]
            row = "".join(cell.ljust(width) for cell, width in zip(cells, widths))
            lines.append(row if self.chance(0.7) else row.rstrip() + self.pick("", " more", "\r"))
            lines += self.some(0.2, "", "  " + row)
        return lines

    def sata_table(self):
        tail = self.pick(["Flag", "Value", "Raw Data"], ["Flag", "Raw Data", "Status"], ["Value", "Raw"], [],
                         ["Raw Data", "Flag"], ["Raw Value", "X"], ["Raw\tData", "X"], ["Raw Datum", "X"])
        lines = ["ID  " + "Attribute".ljust(self.rng.choice((12, 40))) + "  ".join(tail), "=" * 30]
        columns = len(tail)
        for _ in range(self.rng.randrange(4)):
            name = self.pick("Raw Read Error Rate", "Spin Up Time", "Temperature", "x" * 39, "y" * 40,
                             "z" * 45)
            count = columns + self.pick(0, 0, 0, 0, -1, 1)
            cells = [self.pick("0x0001", "100", "200", "-") for _ in range(count)]
            row = f"{self.rng.randrange(256):<4}{name:<40}" + self.pick(" ", "   ", "\t").join(cells)
            lines.append(row if self.chance(0.85) else self.pick(row.replace("  ", " "), row[:30], " " + row))
            lines += self.some(0.1, "")
        return lines

    def drive(self, number, with_smart):
        kind = self.pick("SAS", "SATA", "SAS", "SATA", "NVMe", "", "sas")
        member = self.pick("LD0", "LD1", "LD12", "GHS", "RLD", "DHS RG2", "DHS scRG0", "None", "", "XYZ")
        lines = [f"PD{number}" + self.pick("", "", " ") + f"({member})"]
        if self.chance(0.9):
            keys = self.some(0.5, self.key("Vendor"), self.key("Temperature", "31"),
                             self.key("Power Status", "Spun up"),
                             self.key("Capacity", *SIZES))
            keys.append(self.key("PD Status", "ONLINE", "COPYBACK", "Unconfig GOOD", "HOT SPARE", "OFFLINE",
                                 "Unconfig BAD", "FAILED", "REBUILD", "Online", ""))
            keys.append(self.key("Interface Type", kind))
            self.rng.shuffle(keys)
            lines += ["### General Information ###"] + keys + [""]
        if self.chance(0.7):
            lines += ["### Slot Information ###"] + self.some(0.6, self.key("Enclosure No."),
                                                              self.key("Slot No."))
            lines += [""]
        if with_smart:
            lines += [self.pick("### SMART Information ###", "### SMART Information ###",
                                "### SMART Information ### *")]
            lines += self.some(0.5, self.key("Temperature", "30"), self.key("Power-On Time", "12 hours"),
                               self.key("Alert"))
            lines += [""] * self.rng.randrange(3)
            if self.chance(0.8):
                lines += self.smart_table(kind)
        lines += self.some(0.2, "### Other ###", self.key("Note"), "")
        return lines

    def pd_info(self, number, share_of_smart):
        lines = [f"RAID Controller {number} : {number}"] if self.chance(0.2) else []
        for drive in range(self.rng.randrange(4)):
            lines += self.drive(drive, self.chance(share_of_smart))
        return lines

    def one_drive(self, number):
        return self.drive(number, self.chance(0.9)) if self.chance(0.9) else self.pd_info(number, 0.8)

    def version(self):
        key = self.pick("Product Version : ", "Product Version:", "Product Version : V", "Product Version",
                        "x: Product Version ")
        number = self.pick("4.1", "4.0", "12.3", "3.9", "4", "4.1.2", "4.", ".4", ".", "", "x.y", " 4.1",
                           "+4.1", "4a.1", "99999999999999999999.1", "-4.1", "4.1 \t", "4.\0001", "4\0.1")
        good = ["Command line tool", key + number]
        odd = self.pick(["Product Version :"], ["Product Version :", "Product Version : 4.1"], [],
                        ["Product Version 4.1"], ["Product version : 4.1"], ["Product Version : "],
                        ["Product Version 4", "Product Version : 4.1"], [" Product Version : 4.1 : 5"])
        return good if self.chance(0.85) else odd

    # breaking

    def broken(self, lines):
        lines = list(lines)
        for _ in range(self.rng.randrange(1, 5)):
            self.break_once(lines)
        return lines

    def break_once(self, lines):
        at = self.rng.randrange(len(lines) + 1)
        if at == len(lines) or self.chance(0.35):
            lines.insert(at, self.rng.choice(STRAYS))
            return
        other = self.rng.randrange(len(lines))
        how = self.rng.randrange(12)
        if how == 0:
            del lines[at]
        elif how == 1:
            lines.insert(other, lines[at])
        elif how == 2:
            lines[at], lines[other] = lines[other], lines[at]
        elif how == 3:
            lines[at] = lines[at][:self.rng.randrange(len(lines[at]) + 1)]
        elif how == 4:
            lines[at] = self.pick(" ", "\t", "\r", " \t", "#", "\0") + lines[at]
        elif how == 5:
            lines[at] += self.pick(" ", "\t", "\r", "\r\r", ":", " x", "\0", "(", ")", ",")
        elif how == 6:
            lines[at] = lines[at].replace(":", self.pick("", "::", "\t:\t", " "), 1)
        elif how == 7:
            lines[at] = lines[at].replace(self.pick("(", ")", ",", " ", "#"), self.pick("", " ", "\t", "(("))
        elif how == 8:
            lines[at] = self.rng.choice(STRAYS)
        elif how == 9:
            del lines[at:]
        elif how == 10:
            del lines[min(at, other):max(at, other)]
        elif lines[at]:
            hit = self.rng.randrange(len(lines[at]))
            lines[at] = lines[at][:hit] + chr(self.rng.randrange(256)) + lines[at][hit + 1:]

    def soup(self):
        return [self.rng.choice(STRAYS) for _ in range(self.rng.randrange(1, 25))]

    def text(self, lines):
        end = self.weighted(**{"\n": 20, "\r\n": 3, "\n\n": 1, "\r": 0.3})
        text = end.join(lines) + (end if lines else "")
        if self.chance(0.12):
            text = text.rstrip("\r\n")
        elif self.chance(0.06):
            # Sections whose first line is the file's last: with its line feed or without.
            starts = [line for line in lines if line[:3] in ("###", "RG0", "RG1", "RG2", ">>P", "Ass")]
            if starts:
                last = self.rng.choice(starts)
                text = text[:text.find(last) + len(last)] + self.pick("", "", end, "\r", " \n")
        if self.chance(0.03):
            text = text[:self.rng.randrange(len(text) + 1)]
        return text

    def report(self, lines):
        how = self.weighted(whole=5, broken=4, soup=0.7, mixed=0.3)
        if how == "broken":
            lines = self.broken(lines)
        elif how == "soup":
            lines = self.soup()
        elif how == "mixed":
            lines = self.broken(lines) + self.soup()
        return self.text(lines)

    # runs

    def failing_run(self, output):
        run = Run(self.pick("", "oops\n", "x" + MARKER + "\n", "\n" + MARKER, output),
                  self.pick(1, 2, 127, 137, 255))
        how = self.rng.randrange(8)
        if how == 0:
            run.exit, run.signal = 0, self.pick(9, 15)
        elif how == 1:
            run.output = None
        elif how == 2:
            run.output = self.pick(MARKER, MARKER + "\n", MARKER + " -x\nmore\n", MARKER[:-1] + "\n")
        return run

    def runs(self, output, trouble):
        if not self.chance(trouble):
            return [Run(output)]
        how = self.weighted(retried=5, failed=2, rejected=2, gone=1, marked=1, changing=2)
        if how == "retried":
            return [self.failing_run(output) for _ in range(self.rng.randrange(1, 3))] + [Run(output)]
        if how == "failed":
            return [self.failing_run(output)]
        if how == "rejected":
            return [Run(MARKER + self.pick("", " -a9", "\n", " x\n"), self.pick(1, 5))]
        if how == "gone":
            return [Run(None)]
        if how == "marked":
            return [Run(MARKER + " x\n" + output)]
        return [Run(output), Run(self.text(self.soup()))]

    # cases

    def surroundings(self, case):
        """Mostly all is well around the reports; now and then one thing is not."""
        if self.chance(0.05):
            case.root = "empty"
        if self.chance(0.03):
            case.cim = "empty"
        if self.chance(0.05):
            case.create_null_at = self.rng.randrange(1, self.pick(10, 40, 120))
        if not self.chance(0.12):
            return
        how = self.rng.randrange(11)
        if how == 0:
            case.tool = "missing"
        elif how == 1:
            case.has_authority = "no"
            case.app_key = self.pick("", "secret")
        elif how == 2:
            case.has_authority, case.app_key = "yes", "secret"
        elif how == 3:
            case.library = self.pick("absent", "incomplete")
        elif how == 4:
            case.create_lib_if = "null"
        elif how == 5:
            case.convert_status = self.pick(1, 0xA1, 0x80004005)
        elif how == 6:
            case.convert_text = "null"
        elif how == 7:
            case.tool, case.has_authority, case.app_key = "missing", "no", "secret"
        elif how == 8:
            case.store_status = self.pick(NOT_FOUND, TYPE_MISMATCH)
        elif how == 9:
            case.wrapper = "absent"
        else:
            case.klass = "absent"
        if case.app_key:
            case.root = "normal"  # The key stands in a file below the install root.

    def number_text(self, value):
        return self.pick(f"{value}", f"{value}", f"{value}", f" {value}", f"+{value}", f"0{value}",
                         f"{value}x")

    def get_info(self, case):
        trouble = self.pick(0, 0, 0, 0.1, 0.3)
        version = self.report(self.version()) if self.chance(0.3) else self.text(self.version())
        case.commands["vdkcli -v"] = self.runs(version, trouble)
        count = self.rng.choices((0, 1, 2, 3, 130, 200, 255, 256, 258), (5, 60, 15, 8, 1, 1, 1, 1, 1))[0]
        counting = self.ctrl_count(count)
        text = self.report(counting) if self.chance(0.15) else self.text(counting)
        case.commands["vdkcli -ctrlinfo -aAll"] = self.runs(text, trouble / 2)
        for number in range(4):
            summary = self.report(self.pd_info(number, 0.6))
            # The physical drives' command depends on the version, so both forms answer.
            bare = summary if self.chance(0.3) else self.report(self.pd_info(number, 0.1))
            for arguments, report in (("-ctrlinfo", self.report(self.ctrl_info(number))),
                                      ("-ldpdinfo", self.report(self.ld_info(number))),
                                      ("-pdinfo", summary), ("-pdinfo -nosmart", bare)):
                case.commands[f"vdkcli {arguments} -a{number}"] = self.runs(report, trouble)
            if number + 1 >= min(count, 4) and self.chance(0.9):
                break

    def get_pd_info(self, case):
        trouble = self.pick(0, 0, 0, 0.1, 0.3)
        ctrl, encl, pd = self.rng.randrange(3), self.pick(0, 1, 2, 252), self.rng.randrange(8)
        case.ctrl_no, case.encl_no, case.pd_no = (self.number_text(number) for number in (ctrl, encl, pd))
        if self.chance(0.05):
            case.ctrl_no, ctrl = self.pick(("", 0), ("x", 0), ("-1", -1), ("99999999999999999999", 2**63 - 1),
                                           ("0x1F", 0), ("\t7", 7))
        if self.chance(0.05):
            case.encl_no, encl = self.pick(("", 0), ("-1", -1), ("4294967297", 1), ("2147483648", -2**31),
                                           ("-99999999999999999999", 0))
        if self.chance(0.03):
            setattr(case, self.pick("ctrl_no", "encl_no", "pd_no"), None)
        case.commands[f"vdkcli -ldpdinfo -a{ctrl}"] = self.runs(self.report(self.ld_info(ctrl)), trouble)
        command = f"vdkcli -pdinfo -pd[{encl}:{pd}] -a{ctrl}"
        case.commands[command] = self.runs(self.report(self.one_drive(pd)), trouble)


def make(seed, number):
    """Case `number` of a seed."""
    maker = Maker(random.Random(f"{seed}/{number}"))
    case = Case()
    case.method = maker.weighted(GetInfo=50, GetPDInfo=50, getinfo=0.3, GetInfoX=0.3, Nothing=0.3)
    maker.surroundings(case)
    if case.method == "GetInfo":
        maker.get_info(case)
    else:
        maker.get_pd_info(case)
    return case


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seed", default="1")
    parser.add_argument("--first", type=int, default=0)
    parser.add_argument("--count", type=int, default=1000)
    parser.add_argument("--out", required=True)
    arguments = parser.parse_args()
    for number in range(arguments.first, arguments.first + arguments.count):
        folder = os.path.join(arguments.out, f"{number:06}")
        case = make(arguments.seed, number)
        save(case, folder)
        if load(folder) != case:
            raise RuntimeError(f"{folder} does not read back as it was written")


if __name__ == "__main__":
    main()
