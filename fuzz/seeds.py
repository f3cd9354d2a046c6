#!/usr/bin/env python3
"""Makes first inputs for the fuzz targets out of the scenarios: seeds.py SCENARIOS OUTPUT, a folder per target."""
import pathlib
import struct
import sys

SECTION, FIELD = b"\x1e", b"\x1f"
LONGEST = 1024

# A table that the reader leaves by exception while it still holds items back.
SHORT_ROW = b"""PD0(LD0)
### General Information ###
Interface Type: SATA

PD1(GHS)
### SMART Information ###

Attribute Raw x
"""

CONFIGURATION = b"""interval = "90s"
smart_interval = "0"
smart_of_sleeping = true
timeout = "2m"
history = "/srv/history.db"
expect = "/srv/expect.json"
calm = "0s"
failures_to_tell = 5
[limits]
max_temperature = 50
max_media_error_growth = 5
[growth]
media_errors = 1
[[channel]]
kind = "journal"
stderr = true
level = "ok"
[[channel]]
kind = "exec"
program = "/bin/page"
arguments = ["-c", "%s"]
timeout = "5s"
queue = 10
[[channel]]
name = "night"
kind = "mail"
to = ["root", "a@example.org"]
from = "b@example.org"
[[channel]]
kind = "http"
url = "https://alerts.example.org/hook"
ca_file = "/srv/ca.pem"
headers = ["X-Team: storage"]
headers_file = "/srv/headers"
plain = false
"""

EXPECTATIONS = b"""{"version": 1, "host": "a", "saved_at": "b", "controllers": [{"number": "0", "product": "Gate",
"serial": "C0", "groups": [{"number": "RG0", "raid_level": "RAID 1", "logical_drives": ["LD0"]}], "drives": [
{"enclosure": "252", "slot": "0", "model": "TF", "serial": "A", "role": "LD0", "media_errors": 3}, {"slot": "1"}]}],
"accepted": [{"place": "controller 0, RG0, LD0", "serial": "A", "what": "OFFLINE", "until": "2031-06-30", "reason": "known"}]}
"""


def item(name, *inner):
    """An item with a value, or with others in it."""
    if len(inner) == 1 and not inner[0].startswith(b"<"):
        return b'<Item Name="%s" Value="%s" Valid="TRUE"/>' % (name, inner[0])
    return b'<Item Name="%s" Valid="TRUE">%s</Item>' % (name, b"".join(inner))


GENERAL, PLACE = b"### General Information ###", b"### Enclosure Properties Information ###"
DOCUMENT = b'<RAID version="1">%s</RAID>' % b"".join([
    item(b"Controller Information", item(GENERAL, item(b"Controller No.", b"0"), item(b"Serial Number", b"C1")),
         item(b"### Battery Backup Unit Information ###", item(b"Status", b"Low"))),
    item(b"Logical Drive Information", item(b"PD List", item(b"PD No.", b"PD0"), item(b"Slot No.", b"0")),
         item(GENERAL, item(b"RG No.", b"RG0"), item(b"RAID Level", b"RAID 1"), item(b"# of PD", b"1"),
              item(b"LD List", item(b"LD No.", b"LD0"), item(b"State", b"DEGRADED")))),
    item(b"Physical Drive Information",
         item(GENERAL, item(b"PD No.", b"PD0"), item(b"RG No.", b"RG0"), item(b"LD No.", b"LD0"),
              item(b"PD Status", b"ERROR"), item(b"Serial Number", b"A"), item(b"Temperature", b"41 C"),
              item(b"Media Error Count", b"20")),
         item(PLACE, item(b"Enclosure No.", b"252"), item(b"Slot No.", b"0"))),
])

PART = (b'"part_kind": "drive", "rule": "state", "controller": "0", "part": "PD0", "enclosure": "252", "slot": "0", '
        b'"serial": "A", "what": "FAILED"')
ALARM = (b'{"level": "CRITICAL", %s, "part_key": "drive/A", "place_key": "slot/0/252/0", "since": "2009-12-01T00:00:00Z", '
         b'"told": "2009-12-01T00:00:00Z", "returns": 2, "vanished": true}' % PART)
EVENT = (b'{"id": "1", "at": "2009-12-01T00:00:00Z", "kind": "began", "level": "CRITICAL", "before": "OK", %s, '
         b'"words": "a", "advice": "b"}' % PART)

HISTORY = [
    [b"m", b"answered", b"#1933113600"],
    [b"p", b"#1", b"drive/A", b"#4", b"0", b"", b"PD0", b"252", b"0", b"TF6", b"A"],
    [b"p", b"#2", b"group/0/RG1", b"#2", b"0", b"RG1", b"", b"", b"", b"", b""],
    [b"s", b"#1", b"#1", b"#1933000000", b"#0", b"ONLINE", b"controller 0, PD0", b"#1933010000"],
    [b"s", b"#2", b"#1", b"#1933020000", b"~", b"", b"controller 0, PD0", b"#1933113600"],
    [b"s", b"#3", b"#2", b"#1933020000", b"#3", b"", b"controller 0, RG1", b"#1933113600"],
    [b"c", b"#1", b"temperature"],
    [b"c", b"#2", b"SMART Reallocated, Raw Data"],
    [b"v", b"#22373", b"#1", b"#1", b"#3600", b"#31"],
    [b"v", b"#22374", b"#1", b"#1", b"#3600", b".32.5"],
    [b"v", b"#22330", b"#1", b"#2", b"#3600", b"#5"],
    [b"d", b"#1", b"#1", b"#22350", b"#28", b"#40", b"#31", b"#3"],
    [b"d", b"#1", b"#2", b"#22320", b"#5", b"#5", b"#5", b"#20"],
    [b"e", b"#7", b"1", b"#1933020000", EVENT],
    [b"o", b"#7", b"mail"],
    [b"w", b"alarm a", ALARM],
    [b"x", b"#1", DOCUMENT[:100]],
    [b"?0 252:0"],
]


def main():
    scenarios, output = map(pathlib.Path, sys.argv[1:])
    for name, inputs in all_inputs(scenarios).items():
        folder = output / name
        folder.mkdir(parents=True, exist_ok=True)
        for number, text in enumerate(inputs):
            (folder / f"seed{number:03}").write_bytes(text)


def redfish_requests():
    """Each request with a document, and some with a server that has not answered yet."""
    storage = b"/redfish/v1/Systems/1/Storage/0"
    sessions = b"/redfish/v1/SessionService/Sessions"
    requests = [[b"GET", storage + path, query] for path in (b"", b"/Drives/252-0", b"/Volumes/LD0", b"/Controllers/0/")
                for query in (b"", b"$expand=*($levels=2)", b"$select=Name,Status/Health")]
    requests += [[b"GET", b"/redfish/v1/Chassis/1/Drives", query] for query in (
        b"$top=1&$skip=0", b"only", b"$filter=a", b"$expand=.&$select=Oem", b"$expand=~", b"$top=-1", b"$expand=.($levels=9)")]
    requests += [[b"HEAD", b"/redfish/v1/$metadata"], [b"GET", b"/redfish"], [b"GET", b"/redfish/v1/odata"], [b"PUT", b"/redfish/v1/"],
                 [b"GET", storage, b"", b"OData-Version: 4.01"], [b"GET", storage, b"", b"If-None-Match: *"],
                 [b"GET", b"/redfish/v1/EventService/SSE", b"", b"Last-Event-ID: 0"], [b"DELETE", sessions + b"/s1"],
                 [b"GET", sessions, b"$expand=."],
                 [b"GET", b"/redfish/v1/Systems/1/LogServices/Events/Entries", b"$expand=."]]
    requests += [[b"POST", sessions, b"", b"", body] for body in (
        b'{"UserName": "a", "Password": "p"}', b'{"UserName": "a", "Password": "no"}', b'{"UserName": 1, "Password": "p"}', b"[[")]
    texts = [FIELD.join(each) for each in requests]
    return [SECTION.join([DOCUMENT, b"!A", text]) for text in texts] + [SECTION.join([b""] + texts[::4])]


def all_inputs(scenarios):
    reports = sorted(scenarios.rglob("*.txt"))
    controllers = [pieces(each) for each in reports if each.name.startswith("ctrlinfo_")]
    groups = [pieces(each) for each in reports if each.name.startswith("ldpdinfo_")]
    drives = [pieces(each) for each in reports if each.name.startswith("pdinfo_")]
    groups_start = [each[0][:150] for each in groups if each]
    # A report that no longer ends well is a first input like any other.
    return {
        "ctrl_report": joined(flat(controllers)),
        "ld_report": joined(flat(groups)),
        "pd_report": [SECTION.join(pair) for pair in paired(groups_start, flat(drives))],
        "smart_report": [SECTION.join(pair) for pair in paired(groups_start, flat(drives))] + [SHORT_ROW],
        "conversion": conversions(flat(controllers) + flat(groups) + flat(drives)),
        "get_info": whole_calls(scenarios),
        "get_pd_info": drive_calls(scenarios),
        "scenario": scenario_files(scenarios),
        "configuration": [CONFIGURATION],
        "redfish": redfish_requests(),
        "redaction": captures((flat(controllers) + flat(drives))[::8]),
        "expectations": [SECTION.join([EXPECTATIONS, DOCUMENT])],
        "doors": door_inputs(),
        "history": [SECTION.join(FIELD.join(row) for row in HISTORY)],
        "wbem": wbem_requests(),
        "watch": [SECTION.join([b"alarm a" + FIELD + ALARM, DOCUMENT, b"", EVENT, DOCUMENT])],
    }


def door_inputs():
    """Each kind behind its letter."""
    number = lambda value: value.to_bytes(8, "little")
    text = lambda value: number(len(value)) + value
    none, time = number(0), number(1933113600000000)
    runs = number(10) + number(1) + number(3) + struct.pack("<d", 1.5)
    report = [number(7), text(b"storage7"), time, text(DOCUMENT[:300]), time + runs, none, number(1), number(50), none, none, none,
              text(b"2031-06-30"), number(1), time, text(b"no answer"), number(2)]
    return [
        b"T/redfish/v1/Systems/1?$select=Name%2CStatus&only", b"T/%c3%a9/%2e%2e/x?a=b=c&&d", b"T/%00", b"Thttp://a/",
        b"R" + b"".join(report + [number(1), text(EVENT), number(1), number(4), text(EVENT)]),
        b"R" + b"".join(report[:5] + [number(1), text(EXPECTATIONS)] + report[6:] + [none, none]),
        b"D" + number(1) + text(b"0") + text(b"252") + text(b"3") + text(DOCUMENT[:200]),
        b"C" + number(1) + number(2) + b"".join(number(1) + number(each) for each in (0, 252, 3)) + number(1) + text(b"key") + none,
        b"O" + number(1) + text(b"") + none + number(1) + none + number(1) + text(b"<RAID/>"),
        b"S" + number(1) + number(7) + number(1) + text(b"key") + text(b"crt") + number(1) + text(b"a:b") + number(1)
        + text(b"10.0.0.0/8") + number(65534) + number(65534) + number(300),
        b"A# who\na.b:$y$j9T$QSy3M4RXIjJCtDAsKvyX4/$lXzDFxBWBVbOFNxSjVLUFVYHMHSyCFm5OlGrlPKwHd1\r\n",
        b"N" + FIELD.join([b"192.0.2.7", b"192.0.2.0/25", b"2001:db8::/33"]), b"Lhttps://[::1]:8443", b"L127.0.0.1:8282",
        b"Lunix:/run/a.sock"]


def wbem_requests():
    """One for each operation, and calls with what came of them."""
    flags = b"".join(b'<IPARAMVALUE NAME="%s"><VALUE>TRUE</VALUE></IPARAMVALUE>' % each
                     for each in (b"LocalOnly", b"IncludeQualifiers", b"IncludeClassOrigin"))
    name = b'<IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="ZORBALT_MngSrvRaidHealth"/></IPARAMVALUE>'
    instance = (b'<IPARAMVALUE NAME="InstanceName"><INSTANCENAME CLASSNAME="ZORBALT_MngSrvRaidHealth"><KEYBINDING '
                b'NAME="InstanceID"><KEYVALUE VALUETYPE="string">ZORBALT:RAID</KEYVALUE></KEYBINDING></INSTANCENAME></IPARAMVALUE>')
    some = (b'<IPARAMVALUE NAME="PropertyList"><VALUE.ARRAY><VALUE>Health</VALUE><VALUE>Alarms</VALUE></VALUE.ARRAY></IPARAMVALUE>')
    path = b'<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="zorbalt"/></LOCALNAMESPACEPATH>'
    calls = [(b"GetClass", name + flags + some), (b"EnumerateClasses", flags), (b"EnumerateClassNames", b""),
             (b"EnumerateInstances", name + flags), (b"EnumerateInstanceNames", name), (b"GetInstance", instance + some),
             (b"GetProperty", instance + b'<IPARAMVALUE NAME="PropertyName"><VALUE>Health</VALUE></IPARAMVALUE>'),
             (b"DeleteInstance", instance)]
    inputs = []
    for method, arguments in calls:
        call = b'<IMETHODCALL NAME="%s">%s%s</IMETHODCALL>' % (method, path, arguments)
        inputs.append(wbem_request(method, b"root%2Fzorbalt", call))
    for target, keys in ((b"CLASSPATH><LOCALNAMESPACEPATH", b'<CLASSNAME NAME="ZORBALT_MngSrvRaid"/></LOCALCLASSPATH>'),
                         (b"INSTANCEPATH><LOCALNAMESPACEPATH",
                          b'<INSTANCENAME CLASSNAME="ZORBALT_MngSrvRaid"/></LOCALINSTANCEPATH>')):
        call = b'<METHODCALL NAME="GetPDInfo"><LOCAL%s>%s%s%s</METHODCALL>' % (
            target, path[20:], keys, b"".join(b'<PARAMVALUE NAME="%s" PARAMTYPE="string"><VALUE>1</VALUE></PARAMVALUE>' % each
                                              for each in (b"CtrlNo", b"EnclNo", b"PDNo", b"__AppKey")))
        inputs.append(wbem_request(b"GetPDInfo", b"root/zorbalt:ZORBALT_MngSrvRaid", call))
    whole = wbem_request(b"A", b"root/zorbalt", b"<A/>")
    return inputs + [b"OPTIONS", b"M-POST", b"GET", whole.replace(b"SIMPLEREQ", b"MULTIREQ"), whole.replace(b"\"2.0", b"\"3.0"),
                     whole.replace(b"<CIM", b"<!DOCTYPE CIM [<!ENTITY a 'b'>]><CIM"), whole.replace(b"utf-8\"?", b"latin1\"?"),
                     SECTION.join([b"", b"0", b" 252", b"3 <&", b"key", b"", DOCUMENT[:300]]),
                     SECTION.join([b"", b"0", b"252", b"3", b"", b"it took longer\nthan 60 s", b"<RAID/>"])]


def wbem_request(method, target, call):
    headers = [b"Content-Type: application/xml; charset=\"utf-8\"", b"CIMProtocolVersion: 1.0", b"CIMOperation: MethodCall",
               b"CIMMethod: " + method, b"CIMObject: " + target]
    return SECTION.join([b"POST", FIELD.join(headers),
                         b'<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="4711" '
                         b'PROTOCOLVERSION="1.0"><SIMPLEREQ>%s</SIMPLEREQ></MESSAGE></CIM>' % call])


def captures(texts):
    """Each report as all of a capture's files, with a line of each kind that is replaced."""
    lines = (b"WWN : 50:00:c5:00:a1:b2:c3:d4\nSAS Address : 0x5000c500a1b2c3d4, 5000c500a1\nHost : storage7.example.com\n"
             b"UUID : 3f2504e0-4f89-11d3-9a0c-0305e82c3301\nAsset Tag : see label 4711AB\nSN : A1\nIP : 10.1.2.3/24\n"
             b"MAC : 00:1b:44:11:3a:b7\nLicence Key : QX7P-ZZ19\nMail : raid@example.com\n--- ---\nRead 48210077 1\n")
    readme = (b"# Capture of a RAID server\n\nRecorded by `mngsrvraid capture` from the scenario x/y, 2031-01-01 00:00:00 UTC.\n"
              b"\n- Host: storage7\n- Not redacted: all\n\n## What failed\n\n- in /a/b: the scenario x/y\n")
    listed = b"# A server\n\n## What was replaced\n\n- 1 serial number, in 1 place\n\n    serial-0007  1\n"
    inputs = [SECTION.join([b"acme", b"storage7", text[:900], b"fail-first 2 1 # acme", readme, lines]) for text in texts]
    return inputs + [SECTION.join([b"", b"", lines, b"", listed, b"Serial : serial-0007\nWWN : naa.serial-0007\n"])]


def flat(lists):
    return [each for inner in lists for each in inner]


def joined(texts):
    """Each alone, and each before the next."""
    pairs = [SECTION.join(pair) for pair in zip(texts, texts[1:]) if sum(map(len, pair)) < LONGEST]
    return texts + pairs


def paired(firsts, others):
    return [(firsts[number % len(firsts)], other) for number, other in enumerate(others)]


def pieces(path, most=8):
    """The report's sections, some together and each by itself, all of them short enough."""
    sections = [each[:LONGEST // 4] + b"\n\n" for each in path.read_bytes().split(b"\n\n")]
    together = [b""]
    for section in sections:
        if len(together[-1]) + len(section) > LONGEST * 3 // 4:
            together.append(b"")
        together[-1] += section
    return together[:most] + sections[:most]


def conversions(texts):
    """Key lines as items below the title before them."""
    inputs = [b"RAID", b"RAID\x1e0", b"9\x1eTa", b"RAID\x1exroot", b"RAID\x1eTnobody\x1fa\x1fb"]
    for text in texts:
        items, parent = [b"RAID", b"T\x1froot\x1f"], b"root"
        for line in text.split(b"\n")[:40]:
            key, colon, value = line.partition(b":")
            if line.startswith(b"### "):
                items.append(b"T" + FIELD.join([b"root", line, b""]))
                parent = line
            elif colon:
                flag = b"T" if value.strip() else b"F"
                items.append(flag + FIELD.join([parent, key.strip(), value.strip()]))
        items.append(b"F" + FIELD.join([b"nobody", b"a", b"<&\">\xff\xef\xbf\xbe\t", b"root", b"b\xc3\xa9\x01"]))
        inputs.append(SECTION.join(items)[:LONGEST])
    return inputs


def text_of(folder, name, longest=500):
    path = folder / name
    return path.read_bytes()[:longest] if path.exists() else b""


def whole_calls(scenarios):
    inputs = []
    for folder in sorted(each for each in scenarios.iterdir() if (each / "v.txt").exists()):
        version = text_of(folder, "v.txt")
        for number in (0, 1):
            controller = text_of(folder, f"ctrlinfo_a{number}.txt", 700)
            groups = text_of(folder, f"ldpdinfo_a{number}.txt")
            drives = text_of(folder, f"pdinfo_a{number}.txt", 700)
            all_controllers = b"RAID Controller : 0\n"
            again = FIELD + b"=" + b"\x03"
            runs = [b"", version, all_controllers, controller, groups, again, drives]
            inputs.append(SECTION.join(runs))
            inputs.append(SECTION.join(runs[:2] + [all_controllers * 2] + runs[3:] + runs[3:]))
    runs = [b"", b"Product Version : 4.1\n", b"RAID Controller : 0\n", b"RAID Controller : 0\n", b"RG0\nRG No.: 1\n",
            b"RG No.: 1\n>>PD0(x)\n", b"PD0(LD0)\n### General Information ###\nPD Status: ONLINE\n"]
    inputs.append(SECTION.join(runs))
    marker = b"Error - Invalid input at or near token -v\n"
    for directive in (b"x\x01", b"x\xff", b"s\x09", b"s\x0b", b"t\x00", b"c\x00", b"f\x00", b"w\x00", b"i\x02", b"n\x00"):
        for at in range(1, len(runs)):
            failing = FIELD + directive
            inputs.append(SECTION.join(runs[:at] + [failing + runs[at]] + runs[at:]))
            if directive == b"x\x01":
                inputs.append(SECTION.join(runs[:at] + [failing + marker] + runs[at:]))
                inputs.append(SECTION.join(runs[:at] + [failing] * 3 + runs[at:]))
    for option in (b"u\x00", b"u\x01", b"u\x03", b"k\x00", b"k\x01", b"l\x00", b"r\x00", b"r\x05", b"R\x00"):
        inputs.append(SECTION.join([FIELD + option] + runs[1:]))
    inputs.append(SECTION.join([b"", b"Product Version :"]))
    inputs.append(SECTION.join([b"", b"Product Version"]))
    return inputs


def drive_calls(scenarios):
    inputs = []
    for path in sorted(scenarios.rglob("pdinfo_pd*_a*.txt")):
        number = path.stem[-1].encode()
        groups = text_of(path.parent, f"ldpdinfo_a{path.stem[-1]}.txt", 400)
        inputs.append(SECTION.join([number + b" 252 3", groups, path.read_bytes()[:1500]]))
    runs = [b"0 252 3", b"RG No.: 1\n>>PD0(x)\n",
            b"PD0(LD0)\n### General Information ###\nInterface Type: SATA\n\n### SMART Information ###\nTemperature: 1\n"]
    for option in (b"u\x00", b"u\x01", b"k\x00", b"k\x01", b"l\x00", b"r\x00", b"r\x05", b"R\x00"):
        inputs.append(SECTION.join([FIELD + option + runs[0]] + runs[1:]))
    for directive in (b"x\x01", b"s\x09", b"t\x00", b"f\x00", b"w\x00", b"i\x02", b"n\x00"):
        inputs.append(SECTION.join([runs[0], FIELD + directive + runs[1], FIELD + directive] + runs[1:]))
        inputs.append(SECTION.join(runs[:2] + [FIELD + directive] * 3))
    inputs.append(SECTION.join([b"0"] + runs[1:]))
    return inputs


def scenario_files(scenarios):
    """Arguments, then server.conf, v.txt, the command's own instructions and text, any.do, timeline and inquiries."""
    inputs = []
    commands = (b"-v", b"-ctrlinfo -a0", b"-ctrlinfo -aAll", b"-ldpdinfo -a1", b"-pdinfo -a0", b"-pdinfo -nosmart -a0",
                b"-pdinfo -pd[8:3] -a0", b"-pdinfo -x")
    report = b"PD0(LD0)\n### General Information ###\n a : b\n### SMART Information ###\n c : d\nPD1(GHS)\n"
    servers = [each.read_bytes() for each in sorted(scenarios.rglob("server.conf"))] + [b""]
    instructions = [each.read_bytes() for each in sorted(scenarios.rglob("*.do"))]
    instructions += [b"fail-first 2K 3 # busy\nsleep 0.5\n", b"exit 255\nmarker a\n", b"marker\nsignal SIGTERM\nstop\n",
                     b"endless\nstderr\nclose-stdout\n", b"repeat 3\nbytes 1G\ntruncate 64K\nspawn-holder 1.5\n", b"exti\n",
                     b"sleep 90000\n", b""]
    for number, words in enumerate(commands):
        for other, lines in enumerate(instructions):
            server = servers[(number + other) % len(servers)]
            texts = [words, server, b"Product Version : 4.1\n", lines, report if other % 2 else b"", b"" if other % 3 else lines]
            inputs.append(SECTION.join(texts))
    inquiries = b"".join(b"%015d\n" % time for time in (5000, 9000, 27000))
    timelines = [b"0 well\n20 failed # for good\n", b"count inquiries\n0 .\n1 failed\n2 well\nrepeat 3\n",
                 b"count seconds\n0 failed\n30 well\nrepeat 31\n", b"5 well\n", b"0 ../well\n", b"0 well\n10 faild\n",
                 b"0 well\nrepeat 0\n", b"repeat 3\n0 well\n", b"0 well\n5 .\n5 failed\n", b"count days\n", b"#\n"]
    for timeline in timelines:
        for state in (b"", inquiries, inquiries[:40], b"soon, very soon\n"):
            inputs.append(SECTION.join([b"-pdinfo -a0", b"drives 2\n", b"", b"", report, b"", timeline, state]))
    drive = b" Enclosure No. : 8\n Slot No. : 3\n"
    for text in (report + drive, b"PD0(LD0)\n" + drive + b"PD1(GHS)\n" + drive, drive):
        inputs.append(SECTION.join([b"-pdinfo -pd[8:3] -a0", b"", b"", b"", text]))
    return inputs


if __name__ == "__main__":
    main()
