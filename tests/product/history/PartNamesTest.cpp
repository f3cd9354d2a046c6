// Parts as people type them.

#include "Remembering.h"

namespace history::test {
namespace {

using inventory::Finding;
using inventory::PartKind;
using testing::ElementsAre;
using testing::IsEmpty;

Part PartOf(const std::string& key, Finding about, bool isThere = true) {
    Part part{key, std::move(about), {}};
    part.state.level = isThere ? std::optional(Level::Ok) : std::nullopt;
    return part;
}

Finding DriveIn(const std::string& controller, const std::string& slot, const std::string& serial) {
    Finding about;
    about.kind = PartKind::Drive;
    about.controller = controller;
    about.group = "RG1";
    about.part = "PD" + slot;
    about.enclosure = "252";
    about.slot = slot;
    about.product = "TF6";
    about.serial = serial;
    return about;
}

Finding Other(PartKind kind, const std::string& controller, const std::string& group,
              const std::string& name) {
    Finding about;
    about.kind = kind;
    about.controller = controller;
    about.group = group;
    about.part = name;
    return about;
}

const std::vector<Part> kParts = {
    PartOf("controller/0", Other(PartKind::Controller, "0", "", "")),
    PartOf("controller/1", Other(PartKind::Controller, "1", "", "")),
    PartOf("unit/0/Battery Backup Unit", Other(PartKind::Unit, "0", "", "Battery Backup Unit")),
    PartOf("group/0/RG1", Other(PartKind::Group, "0", "RG1", "")),
    PartOf("group/1/RG1", Other(PartKind::Group, "1", "RG1", "")),
    PartOf("logical-drive/0/LD4", Other(PartKind::LogicalDrive, "0", "RG1", "LD4")),
    PartOf("drive/7K0003C4", DriveIn("0", "3", "7K0003C4")),
    PartOf("drive/7K0004C4", DriveIn("1", "3", "7K0004C4")),
    PartOf("drive/OLD", DriveIn("0", "3", "OLD"), false),
};

std::vector<std::string> Named(const std::string& words) {
    std::vector<std::string> keys;
    for (const Part& part : PartsNamed(kParts, words)) {
        keys.push_back(part.key);
    }
    return keys;
}

TEST(PartsAreNamed, BySerialNumber) {
    EXPECT_THAT(Named("7K0003C4"), ElementsAre("drive/7K0003C4"));
    EXPECT_THAT(Named(" 7k0003c4 "), ElementsAre("drive/7K0003C4"));
    EXPECT_THAT(Named("old"), ElementsAre("drive/OLD"));
    EXPECT_THAT(Named("TF6, serial number OLD"), ElementsAre("drive/OLD"));
}

TEST(PartsAreNamed, BySlot) {
    EXPECT_THAT(Named("0 252:3"), ElementsAre("drive/7K0003C4"));
    EXPECT_THAT(Named("1 252 3"), ElementsAre("drive/7K0004C4"));
    EXPECT_THAT(Named("252:3"), ElementsAre("drive/7K0003C4", "drive/7K0004C4"));
    EXPECT_THAT(Named("controller 1, 252:3"), ElementsAre("drive/7K0004C4"));
    EXPECT_THAT(Named("0 PD3"), ElementsAre("drive/7K0003C4"));
}

TEST(PartsAreNamed, ByNumber) {
    EXPECT_THAT(Named("controller 0"), ElementsAre("controller/0"));
    EXPECT_THAT(Named("1"), ElementsAre("controller/1"));
    EXPECT_THAT(Named("RG1"), ElementsAre("group/0/RG1", "group/1/RG1"));
    EXPECT_THAT(Named("1 rg1"), ElementsAre("group/1/RG1"));
    EXPECT_THAT(Named("LD4"), ElementsAre("logical-drive/0/LD4"));
    EXPECT_THAT(Named("battery  backup unit"), ElementsAre("unit/0/Battery Backup Unit"));
}

TEST(PartsAreNamed, AsTheyArePrinted) {
    EXPECT_THAT(Named("controller 0, RG1, PD3 in enclosure 252 slot 3"), ElementsAre("drive/7K0003C4"));
    EXPECT_THAT(Named("controller 0, RG1, LD4"), ElementsAre("logical-drive/0/LD4"));
    EXPECT_THAT(Named("drive/OLD"), ElementsAre("drive/OLD"));
}

TEST(PartsAreNamed, ByNothingElse) {
    for (const char* const words : {"", " ", "7K", "RG", "RG11", "2", "252", "controller", "0 252:4", "PD"}) {
        EXPECT_THAT(Named(words), IsEmpty()) << words;
    }
}

}  // namespace
}  // namespace history::test
