#include "Redaction.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace capture::test {
namespace {

std::string Redacted(const std::string& text) {
    Redaction redaction;
    redaction.Collect(text);
    return redaction.Redact(text);
}

/// What becomes of a text when the serial number is known from another one.
std::string Beside(const std::string& serial, const std::string& text) {
    Redaction redaction;
    redaction.Collect("Serial Number : " + serial);
    return redaction.Redact(text);
}

TEST(Redaction, ReplacesTheValuesOfKeysByWordsOfTheirKind) {
    EXPECT_EQ(Redacted(" Serial Number                : 7K00025200C4\n"),
              " Serial Number                : serial-0001\n");
    const std::pair<const char*, std::vector<const char*>> kinds[] = {
        {"serial",
         {"SERIAL NO.", "board serial", "Product SerialNumber", "Controller S/N", "PD SN", "Serial  Number"}},
        {"wwn",
         {"WWN", "wwpn 1", "World Wide Name", "world-wide id", "SAS Address 0", "SAS Addr", "NAA", "EUI64",
          "EUI-64", "Unique ID", "Enclosure Logical ID", "WWID"}},
        {"uuid", {"UUID", "LD GUID", "System uuid"}},
        {"tag", {"Asset Tag", "Asset Number", "Service Tag", "Express Service Code", "Inventory No."}},
        {"host", {"Host", "- Host", "Host Name", "hostname", "Server Name", "FQDN", "NTP Server"}},
        {"ip", {"IP", "IP Address", "Mgmt IP Addr", "IPv4", "IPv6 Address", "Gateway"}},
        {"mac", {"MAC", "MAC Address", "NIC 0 MAC"}},
        {"licence",
         {"Licence Key", "License Key", "Activation Code", "License Number", "Feature Key", "Product Key"}},
        {"mail", {"Mail Address", "E-Mail", "E-mail address", "Mail To"}},
    };
    for (const auto& [kind, keys] : kinds) {
        for (const char* const key : keys) {
            EXPECT_EQ(Redacted(std::string(key) + " : 5000C500A1B2C3D4"),
                      std::string(key) + " : " + kind + "-0001");
        }
    }
}

TEST(Redaction, LeavesWhatOtherKeysSay) {
    for (const char* const line :
         {"Product ID : TF600S15AB", "Device ID : 0073AB4711", "Host Interface : PCIe12345678",
          "PCI Address : 0000:03:00.0", "License Type : Premium2031", "Snapshot : AB12CD34",
          "Serial Attached SCSI Ports : 12345678", "Mail Alert : Hourly24", "Guideline : 4711ABCD",
          "Port Address : 3", "Machine : 4711ABCD", "Serial Number 7K00025200C4"}) {
        EXPECT_EQ(Redacted(line), line);
    }
}

TEST(Redaction, LeavesPlaceholders) {
    for (const char* const line :
         {"Serial Number : -", "Serial Number : N/A", "Serial Number :", "Serial Number : Not Available",
          "WWN : 0000000000000000", "WWN : 0xFFFFFFFFFFFFFFFF", "Serial Number : \"\"",
          "WWN : 00:00:00:00:00:00:00:00", "Serial Number : unknown", "Asset Tag : To Be Filled By O.E.M.",
          "Service Tag : None", "Serial Number : 0", ""}) {
        EXPECT_EQ(Redacted(line), line);
    }
}

TEST(Redaction, FindsAKeyBehindAnotherOne) {
    EXPECT_EQ(Redacted("Port 0: SAS Address: 5000c500a1b2c3d4"), "Port 0: SAS Address: wwn-0001");
    EXPECT_EQ(Redacted("Controller 1: Serial Number:AB12"), "Controller 1: Serial Number:serial-0001");
}

TEST(Redaction, AddressOfNoKnownKindIsToldByItsValue) {
    EXPECT_EQ(Redacted("Device Address : 0x5000c500a1b2c3d4"), "Device Address : 0xwwn-0001");
    EXPECT_EQ(Redacted("Device Address : 5000c500"), "Device Address : 5000c500");
}

TEST(Redaction, TheSameValueIsTheSameWordEverywhere) {
    EXPECT_EQ(
        Redacted("Serial Number : AB12\nSerial Number : CD34\nSerial : AB12\nWWN : CD34\nWWN : 5000C500\n"
                 "drive AB12, (CD34)/ab12\n"),
        "Serial Number : serial-0001\nSerial Number : serial-0002\nSerial : serial-0001\n"
        "WWN : serial-0002\nWWN : wwn-0001\ndrive serial-0001, (serial-0002)/serial-0001\n");
}

TEST(Redaction, KeepsItsWordsFromTextToText) {
    Redaction redaction;
    redaction.Collect("Serial : AB12");
    redaction.Collect("Serial : CD34\nSerial : AB12");
    EXPECT_EQ(redaction.Redact("CD34 AB12"), "serial-0002 serial-0001");
}

TEST(Redaction, ReplacesWithinLongerWordsInAnyLetterCase) {
    EXPECT_EQ(Beside("7K00025200C4", "/dev/disk/by-id/scsi-STALLFIR_TF600S15_7k00025200c4-part1\n"),
              "/dev/disk/by-id/scsi-STALLFIR_TF600S15_serial-0001-part1\n");
    EXPECT_EQ(Beside("7K00025200C4", "Product ID : TF600S7K00025200C4X15"),
              "Product ID : TF600Sserial-0001X15");
    EXPECT_EQ(Redacted("WWN : 5000C500A1B2C3D4\nid wwn-0x5000c500a1b2c3d4p1"),
              "WWN : wwn-0001\nid wwn-0xwwn-0001p1");
}

TEST(Redaction, ReplacesLongValuesInTitlesAndKeysToo) {
    EXPECT_EQ(Beside("7K00025200C4", "### Drive 7K00025200C4 ###\n7K00025200C4 Status : OK\n"),
              "### Drive serial-0001 ###\nserial-0001 Status : OK\n");
    EXPECT_EQ(Beside("AB12", "AB12 : failed"), "serial-0001 : failed");
}

TEST(Redaction, ReplacesLongValuesInTheHeadsOfParts) {
    EXPECT_EQ(Beside("7K00025200C4", ">LD0(on:7K00025200C4, 557.861 GB, OPTIMAL)\nPD3(LD0)\n"),
              ">LD0(on:serial-0001, 557.861 GB, OPTIMAL)\nPD3(LD0)\n");
}

TEST(Redaction, FindsAValueThatIsWrittenInGroups) {
    EXPECT_EQ(Redacted("WWN : 50:00:C5:00:A1:B2:C3:D4\n5000c500a1b2c3d4 5000-C500-A1B2-C3D4\n"),
              "WWN : wwn-0001\nwwn-0001 wwn-0001\n");
    EXPECT_EQ(Redacted("WWN : 5000C500A1B2C3D4\npath 50:00:c5:00:a1:b2:c3:d4, 5000-c500-a1b2-c3d4\n"),
              "WWN : wwn-0001\npath wwn-0001, wwn-0001\n");
    EXPECT_EQ(Redacted("Serial : GX:00:11:22\nGX001122 GX-0011-22\n"),
              "Serial : serial-0001\nserial-0001 serial-0001\n");
    EXPECT_EQ(Redacted("WWN : 50 00 C5 00 A1 B2 C3 D4\n50 00 c5 00 a1 b2 c3 d4/5000c500a1b2c3d4\n"),
              "WWN : wwn-0001\nwwn-0001/wwn-0001\n");
    // Short, and never seen so: a time is none.
    EXPECT_EQ(Beside("12345678", "12:34:56:78 1234-5678 12345678"), "12:34:56:78 1234-5678 serial-0001");
}

TEST(Redaction, NumbersOfOneSeveralTimesAreOne) {
    EXPECT_EQ(
        Redacted("WWN : naa.5000C500A1B2C3D4\nWWN : 0x5000c500a1b2c3d4\nUUID : urn:uuid:4711-0815-ab\n"),
        "WWN : naa.wwn-0001\nWWN : 0xwwn-0001\nUUID : urn:uuid:uuid-0001\n");
}

/// How far a serial number reaches beyond the key that names it.
struct Reach {
    const char* serial;
    const char* text;
    const char* redacted;
};

TEST(Redaction, ShortValuesReachLessFar) {
    const Reach reaches[] = {
        // Six characters, letters and digits, or eight digits: into words.
        {"AB1234", "xAB1234y 0ab12345", "xserial-0001y 0serial-00015"},
        {"48210077", "000048210077", "0000serial-0001"},
        // Shorter: whole words, in values and lines without a key.
        {"AB12", "xAB12 AB123 AB12x 1AB12 AB12-3 _AB12.",
         "xAB12 AB123 AB12x 1AB12 serial-0001-3 _serial-0001."},
        {"104857", "Capacity : 104857\n1048576", "Capacity : serial-0001\n1048576"},
        {"1048576", "part 1048576", "part serial-0001"},
        {"TANGO", "Name : Tango\ntangos", "Name : serial-0001\ntangos"},
        // Without letters and digits not in the names of things.
        {"Temperature", "Temperature : high Temperature", "Temperature : high serial-0001"},
        {"Drive", "### Drive ###\nDrive 1 : x", "### Drive ###\nDrive 1 : x"},
        {"1048576", "PD 1048576 : 1", "PD 1048576 : 1"},
        // Still shorter: nowhere else.
        {"1234", "Count : 1234\n1234", "Count : 1234\n1234"},
        {"12345", "Count : 12345", "Count : 12345"},
        {"A1", "Port : A1", "Port : A1"},
        {"ABC", "Port : ABC", "Port : ABC"},
    };
    for (const Reach& reach : reaches) {
        EXPECT_EQ(Beside(reach.serial, reach.text), reach.redacted) << reach.serial;
    }
}

TEST(Redaction, UnderItsOwnKeyNoValueIsTooShort) {
    EXPECT_EQ(Redacted("Serial : 7\nSN : 1234\nHost : raid\nEnclosure No. : 7\nCount : 1234\n"),
              "Serial : serial-0001\nSN : serial-0002\nHost : host-0001\nEnclosure No. : 7\nCount : 1234\n");
}

TEST(Redaction, WordsOfReportsStayWhatTheySay) {
    EXPECT_EQ(
        Redacted(
            "Host Name : optimal\nSerial : PD12\n>LD0(A, 1 GB, OPTIMAL)\n>>PD12(ONLINE)\nStatus : Optimal\n"),
        "Host Name : host-0001\nSerial : serial-0001\n>LD0(A, 1 GB, OPTIMAL)\n>>PD12(ONLINE)\nStatus : "
        "Optimal\n");
}

TEST(Redaction, LongestValueAtAPlaceGoesFirst) {
    EXPECT_EQ(Redacted("Serial : AB12\nSerial : AB12-CD\nAB12-CD AB12-CE"),
              "Serial : serial-0001\nSerial : serial-0002\nserial-0002 serial-0001-CE");
}

TEST(Redaction, ListsAreReplacedOneByOne) {
    EXPECT_EQ(Redacted("SAS Address : 5000c500a1, 5000c500a2\n5000C500A2\n"),
              "SAS Address : wwn-0001, wwn-0002\nwwn-0002\n");
    EXPECT_EQ(Redacted("WWN : 5000c500a1 5000c500a2 (port B)\n"), "WWN : wwn-0001 wwn-0002 (port B)\n");
    EXPECT_EQ(Redacted("IP Address : 10.1.2.3/24; fe80::21\n"), "IP Address : ip-0001/24; ip-0002\n");
}

TEST(Redaction, ValueOfSeveralWordsIsReplacedAsAWholeAndByItsParts) {
    EXPECT_EQ(Redacted("Serial : see label 4711AB\nlabel 4711AB\nsee label 4711ab."),
              "Serial : serial-0001\nlabel serial-0001\nserial-0001.");
    EXPECT_EQ(Redacted("Serial : 4711AB or 4712AB\n4711AB 4712AB"),
              "Serial : serial-0001\nserial-0002 serial-0003");
}

TEST(Redaction, HostIsKnownByItsFirstNameToo) {
    EXPECT_EQ(Redacted("Host Name : storage7.example.com\nstorage7 storage8.example.com\n"),
              "Host Name : host-0001\nhost-0001 storage8.host-0002\n");
    Redaction redaction;
    redaction.AddHost("storage7");
    redaction.AddHost("");
    EXPECT_EQ(redaction.Redact("at STORAGE7: "), "at host-0001: ");
}

TEST(Redaction, FindsAddressesWithoutAKey) {
    EXPECT_EQ(Redacted("Notify raid@example.com, or <RAID@example.com>.\n"),
              "Notify mail-0001, or <mail-0001>.\n");
    EXPECT_EQ(Redacted("up on 00:1b:44:11:3a:b7 and 00-1B-44-11-3A-B8, 001B44113AB7\n"),
              "up on mac-0001 and mac-0002, mac-0001\n");
    EXPECT_EQ(Redacted("00:1b:44:11:3a:b7 is down\n"), "mac-0001 is down\n");
    EXPECT_EQ(Redacted("seen from 192.168.7.21:443 and fe80::21b:44ff:fe11:3ab7%eth0\n"),
              "seen from ip-0001:443 and ip-0002%eth0\n");
    EXPECT_EQ(Redacted("id 3f2504e0-4f89-11d3-9a0c-0305e82c3301, port 50:00:c5:00:a1:b2:c3:d4\n"),
              "id uuid-0001, port wwn-0001\n");
    EXPECT_EQ(Redacted("NIC:00:1b:44:11:3a:b7\n"), "NIC:mac-0001\n");
}

TEST(Redaction, AddressDoesNotReachIntoALongerOne) {
    EXPECT_EQ(Redacted("Gateway : 10.0.0.1\n10.0.0.12 10.0.0.1\n"), "Gateway : ip-0001\nip-0002 ip-0001\n");
    EXPECT_EQ(Redacted("mail to a@b.com\nxa@b.com a@b.com\n"), "mail to mail-0001\nmail-0002 mail-0001\n");
}

TEST(Redaction, LeavesVersions) {
    for (const char* const line :
         {"Firmware Version : 10.2.0.1", "BIOS 12.36.0.3", "fw: 24.21.0.126",
          "### Driver ###\nModule : 14.7.14.4", "at 4.1.2.3", "at 07.714.04.00", "at 24.21.0-0091",
          "at 24.21.0.126-0091", "at v10.1.2.3", "at 10.1.2.3.4", "at 10.300.1.2", "12:34:56",
          "Bus 3: Device 0: Function 0", "252:3", "a@ b", "-pd[252:1] -a0"}) {
        EXPECT_EQ(Redacted(line), line);
    }
    // The next section is about something else.
    EXPECT_EQ(Redacted("### Driver ###\nM : 14.7.14.4\n### Network ###\nN : 14.7.14.5\n"),
              "### Driver ###\nM : 14.7.14.4\n### Network ###\nN : ip-0001\n");
}

TEST(Redaction, WordsOfOnesOwnAreReplacedEverywhere) {
    Redaction redaction;
    redaction.AddWord("acme");
    redaction.AddWord("Rack 7");
    redaction.AddWord("\xC3\x96sterreich");
    EXPECT_EQ(
        redaction.Redact(
            "### ACME Information ###\nAcme Serial : x-acmes\n>LD0(ACME, rack 7)\nin \xC3\x96STERREICH\n"),
        "### word-0001 Information ###\nword-0001 Serial : x-word-0001s\n>LD0(word-0001, word-0002)\nin "
        "word-0003\n");
}

TEST(Redaction, WordOfAnEarlierTimeStaysAndIsNotGivenAgain) {
    Redaction redaction;
    redaction.Keep({Kind::Serial, 7});
    const std::string text = "Serial Number : serial-0007\nid xserial-0007\nSerial : AB12CD\n";
    redaction.Collect(text);
    EXPECT_EQ(redaction.Redact(text), "Serial Number : serial-0007\nid xserial-0007\nSerial : serial-0008\n");
    ASSERT_EQ(redaction.Replacements().size(), 1U);
    EXPECT_EQ(WordFor(redaction.Replacements().front().word), "serial-0008");
}

TEST(Redaction, SomebodysOwnValueMayLookLikeAWord) {
    EXPECT_EQ(Redacted("Host Name : host-0042\n"), "Host Name : host-0001\n");
}

TEST(Redaction, ColumnsOfTablesStayWhereTheyAre) {
    EXPECT_EQ(Beside("48210077",
                     "Attribute  Fast      Slow\n"
                     "---------- --------- ------\n"
                     "Read       48210077  12\n"
                     "Raw 000048210077     13\n"
                     "\n"
                     "[Head 1]   48210077  14\n"
                     "PD3(LD0)\n"
                     "after 48210077 it\n"),
              "Attribute  Fast      Slow\n"
              "---------- --------- ------\n"
              "Read       xxxxxxxx  12\n"
              "Raw 0000xxxxxxxx     13\n"
              "\n"
              "[Head 1]   xxxxxxxx  14\n"
              "PD3(LD0)\n"
              "after serial-0001 it\n");
    EXPECT_EQ(Beside("7K0002520000C4", "--- ---\n7K0002520000C4 1\n"), "--- ---\nserial-0000001 1\n");
    EXPECT_EQ(Redacted("------\nSerial : 7K0002520000C4\n"), "------\nSerial : serial-0001\n");
}

TEST(Redaction, InstructionsStayButForLongValues) {
    Redaction redaction;
    redaction.Collect("Serial : 7K00025200C4\nSerial : AB12\n");
    redaction.AddWord("exit");
    EXPECT_EQ(
        redaction.RedactInstructions("exit 3  # as AB12 does, exit\nmarker 7K00025200C4\nmarker AB12\n"),
        "exit 3  # as serial-0002 does, word-0001\nmarker serial-0001\nmarker AB12\n");
}

TEST(Redaction, CountsThePlacesOfEachWord) {
    Redaction redaction;
    const std::string text =
        "SN : 1234\nSerial : 7K00025200C4\nWWN : AB12\nx7K00025200C4 ab12 AB12 1234\nSN : 1234\n";
    redaction.Collect(text);
    EXPECT_TRUE(redaction.Replacements().empty());
    (void)redaction.Redact(text);
    std::string list;
    for (const Redaction::Replacement& each : redaction.Replacements()) {
        list += WordFor(each.word) + "=" + std::to_string(each.places) + " ";
    }
    EXPECT_EQ(list, "serial-0001=2 serial-0002=2 wwn-0001=3 ");
}

TEST(Redaction, LeavesAllOtherBytesAlone) {
    std::string bytes;
    for (int round = 0; round < 3; ++round) {
        for (int byte = 0; byte < 256; ++byte) {
            bytes += static_cast<char>(byte);
        }
    }
    EXPECT_EQ(Redacted(bytes), bytes);
    EXPECT_EQ(Redacted("Serial\t:\tAB12\t\r\n" + bytes), "Serial\t:\tserial-0001\t\r\n" + bytes);
}

}  // namespace
}  // namespace capture::test
