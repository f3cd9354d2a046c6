#include "scenario/ScenarioFolder.h"

#include "basics/Failure.h"
#include "test_support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace scenario::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

/// A folder of scenarios.
class ScenarioFolder : public testing::Test {
  protected:
    void Make(const std::string& file) const {
        fs::create_directories((m_Shipped.Path() / file).parent_path());
        m_Shipped.Write(file, "");
    }

    [[nodiscard]] std::string Find(const std::string& name) const {
        try {
            return fs::canonical(FindScenario(name, m_Shipped.Path())).lexically_relative(m_Shipped.Path());
        } catch (const basics::Failure& failure) {
            return failure.what();
        }
    }

    testsupport::TempFolder m_Shipped;
};

TEST_F(ScenarioFolder, NamesAreThoseOfFoldersWithScenarioFiles) {
    for (const char* file :
         {"small/v.txt", "small/README.md", "faults/slow/any.do", "huge/server.conf", "notes/x"}) {
        Make(file);
    }
    EXPECT_THAT(ScenarioNames(m_Shipped.Path()), ElementsAre("faults/slow", "huge", "small"));
    EXPECT_THAT(ScenarioNames(m_Shipped.Path() / "none"), ElementsAre());
}

TEST_F(ScenarioFolder, StagesAreFoundAndNotListed) {
    for (const char* file : {"mirror/timeline", "mirror/failed/pdinfo_a0.txt", "mirror/worse/any.do",
                             "mirror/by-inquiry/timeline", "mirror/by-inquiry/odd/v.txt"}) {
        Make(file);
    }
    EXPECT_THAT(ScenarioNames(m_Shipped.Path()), ElementsAre("mirror", "mirror/by-inquiry"));
    for (const char* name : {"mirror", "mirror/failed", "mirror/by-inquiry", "mirror/by-inquiry/odd"}) {
        EXPECT_EQ(Find(name), name);
        EXPECT_EQ(Find(m_Shipped / name), name);
    }
    EXPECT_EQ(Find("mirror/fialed"), "there is no scenario mirror/fialed; did you mean mirror/failed?");
    EXPECT_EQ(Find("worse"), "there is no scenario worse; did you mean mirror/worse?");
    fs::remove(m_Shipped.Path() / "mirror/timeline");
    EXPECT_THAT(Find("mirror/failed"),
                HasSubstr("is no scenario: it has no v.txt, server.conf or timeline; "));
}

}  // namespace
}  // namespace scenario::test
