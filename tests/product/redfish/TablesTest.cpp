// docs/redfish.md shows the tables that the code translates by.

#include "Tables.h"

#include "Kinds.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

namespace redfish::test {
namespace {

std::string Docs() {
    std::ostringstream text;
    text << std::ifstream(REDFISH_TEST_DOCS).rdbuf();
    return text.str();
}

std::string Code(std::string_view text) {
    return text.empty() ? "" : "`" + std::string(text) + "`";
}

/// The rows of the table behind a heading.
std::multiset<std::string> RowsBehind(const std::string& heading) {
    const std::string docs = Docs();
    std::istringstream lines(docs.substr(std::min(docs.find("\n" + heading + "\n"), docs.size())));
    std::multiset<std::string> rows;
    std::size_t heads = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("| ") || line.starts_with("|-")) {
            heads < 2 ? ++heads : (rows.insert(line), heads);
        } else if (heads == 2) {
            break;
        }
    }
    return rows;
}

void ExpectTable(const std::string& heading, const std::multiset<std::string>& expected) {
    const std::multiset<std::string> rows = RowsBehind(heading);
    EXPECT_FALSE(expected.empty());
    for (const std::string& row : expected) {
        EXPECT_TRUE(rows.contains(row)) << "missing: " << row;
    }
    for (const std::string& row : rows) {
        EXPECT_TRUE(expected.contains(row)) << "too much: " << row;
    }
}

TEST(TheDocument, ShowsTheTableOfStates) {
    std::multiset<std::string> rows;
    for (const PropertyNames& names : AllPropertyNames()) {
        for (const Translation& each : Translations()) {
            if (each.property == names.property) {
                rows.insert("| " + std::string(names.name) + " | " + std::string(names.from) + " | " +
                            (each.told.empty() ? "no such item" : Code(each.told)) + " | " +
                            Code(each.value) + " |");
            }
        }
    }
    EXPECT_EQ(rows.size(), Translations().size());
    ExpectTable("### States and other words", rows);
}

TEST(TheDocument, ShowsOurOwnKeys) {
    std::multiset<std::string> rows;
    for (const OemKey& key : OemKeys()) {
        rows.insert("| `" + std::string(key.type) + "` | `" + std::string(key.key) + "` | " +
                    std::string(key.meaning) + " |");
    }
    ExpectTable("### Our own keys", rows);
}

TEST(TheDocument, ShowsTheMessages) {
    std::multiset<std::string> rows;
    for (const EventNames& names : AllEventNames()) {
        rows.insert("| `Zorbalt.1.0." + std::string(names.key) + "` | `" + std::string(names.eventType) +
                    "` | " + std::string(names.meaning) + " |");
    }
    ExpectTable("### Messages", rows);
}

TEST(Health, IsNeverOkForWhatIsUnknown) {
    using inventory::Level;
    EXPECT_EQ(HealthOf(Level::Ok), "OK");
    EXPECT_EQ(HealthOf(Level::Unknown), "Warning");
    EXPECT_EQ(HealthOf(Level::Warning), "Warning");
    EXPECT_EQ(HealthOf(Level::Critical), "Critical");
}

TEST(Words, AreTranslatedInAnyCaseAndWhole) {
    EXPECT_EQ(Translate(Property::DriveState, "Online"), "Enabled");
    EXPECT_EQ(Translate(Property::DriveState, "ONLINE "), "");
    EXPECT_EQ(Translate(Property::DriveState, ""), "");
    EXPECT_EQ(Translate(Property::ControllerState, ""), "Enabled");
    EXPECT_EQ(Translate(Property::VolumeState, "HOT SPARE"), "") << "a word of drives";
}

}  // namespace
}  // namespace redfish::test
