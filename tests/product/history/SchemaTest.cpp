// Files of earlier versions are brought to this one, and others are left alone.

#include "Schema.h"

#include "Database.h"
#include "Remembering.h"

namespace history::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// What there is, as SQL.
std::string LayoutOf(Database& database) {
    std::string layout;
    database.Prepare("SELECT sql FROM sqlite_schema ORDER BY name").Each([&layout](const Row& row) {
        layout += row.Text(0) + ";\n";
    });
    return layout;
}

std::string VersionOne() {
    return testsupport::ReadFile(HISTORY_TEST_FOLDER "/version1.sql");
}

TEST(TheSchema, HasAFixtureOfWhatVersionOneWas) {
    Database made = Database::InMemory();
    Upgrade(made, 1);
    Database kept = Database::InMemory();
    kept.Run(VersionOne());
    EXPECT_EQ(LayoutOf(made), LayoutOf(kept));
    EXPECT_EQ(KindOf(made), FileKind::Ours);
    EXPECT_EQ(made.Integer("PRAGMA application_id"), kept.Integer("PRAGMA application_id"));
    EXPECT_EQ(VersionOf(made), VersionOf(kept));
}

TEST(TheSchema, IsTheSameByHoweverManySteps) {
    Database fresh = Database::InMemory();
    EXPECT_EQ(KindOf(fresh), FileKind::New);
    Upgrade(fresh);
    Database upgraded = Database::InMemory();
    upgraded.Run(VersionOne());
    Upgrade(upgraded);
    EXPECT_EQ(LayoutOf(fresh), LayoutOf(upgraded));
    EXPECT_EQ(VersionOf(upgraded), kSchemaVersion);
    EXPECT_EQ(DamageOf(upgraded), "");
    Upgrade(upgraded);
    EXPECT_EQ(LayoutOf(fresh), LayoutOf(upgraded));
}

TEST(TheSchema, IsUpgradedAsAWholeOrNotAtAll) {
    Database database = Database::InMemory();
    database.Run(VersionOne() + "CREATE INDEX events_by_time ON events(id);");  // which is in the way
    EXPECT_THROW(Upgrade(database), DatabaseError);
    EXPECT_EQ(VersionOf(database), 1);
    EXPECT_EQ(database.Integer("SELECT count(*) FROM pragma_table_info('days') WHERE name = 'run'"), 0);
}

TEST(TheSchema, TellsAnotherProgramsFileFromOurs) {
    Database database = Database::InMemory();
    database.Run("CREATE TABLE songs(title)");
    EXPECT_EQ(KindOf(database), FileKind::Foreign);
    database.Run("PRAGMA user_version = 2");
    EXPECT_EQ(KindOf(database), FileKind::Foreign);
    database.Run("PRAGMA application_id = " + std::to_string(kApplicationId));
    EXPECT_EQ(KindOf(database), FileKind::Ours);
    database.Run("PRAGMA user_version = 3");
    EXPECT_EQ(KindOf(database), FileKind::Newer);
}

using AnOldFile = Remembering;

TEST_F(AnOldFile, IsReadOnAfterItsUpgrade) {
    Change(m_Path, VersionOne());
    EXPECT_THROW((void)Reader(m_Path).Parts(), basics::Failure);
    ASSERT_EQ(Open().trouble, "");
    ASSERT_EQ(m_Restored.rows.size(), 1U);
    ASSERT_EQ(m_Restored.deliveries.size(), 1U);
    EXPECT_EQ(m_Restored.deliveries.front().event.id, "two");
    EXPECT_EQ(m_Restored.document->xml, "<RAID version=\"1\"/>");
    EXPECT_THAT(Readings("drive/A", kTemperature), ElementsAre("30 to 34, 32: 04-01 - 04-01", "31", "32.5"));
    EXPECT_THAT(Readings("drive/A", kMediaErrors),
                ElementsAre("0 to 0, 0: 04-01 - 04-01", "0 to 0, 0: 04-02 - 04-02", "3"));
    EXPECT_THAT(StatesOf("drive/A"), ElementsAre("2031-04-05T06:00:00Z 2031-04-05T06:05:00Z OK ONLINE",
                                                 "2031-04-05T06:05:00Z 2031-04-05T06:10:00Z CRITICAL FAILED",
                                                 "2031-04-05T06:10:00Z 2031-04-05T06:10:00Z OK ONLINE"));
    m_Now = At("2031-04-05T07:00:00Z");
    ASSERT_EQ(Sees({{.serial = "A", .temperature = 33, .mediaErrors = 3}}).trouble, "");
    EXPECT_THAT(Readings("drive/A", kMediaErrors, At("2031-04-05T00:00:00Z")), ElementsAre("3"));
    EXPECT_EQ(IntegrityOf(m_Path), "ok");
}

TEST_F(AnOldFile, SaysToReadersWhoHasToUpgradeIt) {
    Change(m_Path, VersionOne());
    try {
        Reader reader(m_Path);
        FAIL();
    } catch (const basics::Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("brought up to date when mngsrvraidd starts"));
    }
}

}  // namespace
}  // namespace history::test
