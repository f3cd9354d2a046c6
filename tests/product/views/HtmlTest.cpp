#include "Documents.h"
#include "test_support/XmlLint.h"
#include "views/Views.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <cstdlib>
#include <new>
#include <utility>

namespace views::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// Of a page, what an XPath yields; a page that is no XML is a failure. Names need no namespace.
std::string Query(std::string page, const std::string& path) {
    constexpr std::string_view kNamespace = " xmlns=\"http://www.w3.org/1999/xhtml\"";
    page.erase(page.find(kNamespace), kNamespace.size());
    try {
        return testsupport::EvaluateXPath(page, path);
    } catch (const std::exception& error) {
        ADD_FAILURE() << path << ": " << std::string(error.what()).substr(0, 1000);
        return "";
    }
}

std::string PageOf(const std::string& items) {
    return Html(SnapshotFrom(items));
}

class HtmlOfScenario : public testing::TestWithParam<const char*> {};

TEST_P(HtmlOfScenario, IsWellFormedAndShowsEveryDrive) {
    const inventory::Snapshot snapshot = SnapshotOf(GetParam());
    const std::string drives = std::to_string(snapshot.TheHealth().counts.drives);
    const std::string page = Html(snapshot);
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n<html lang=\"en\""));
    EXPECT_EQ(page.back(), '\n');
    EXPECT_EQ(Query(page, "count(//li[starts-with(@class, 'slot ')][@id])"), drives);
    EXPECT_EQ(Query(page, "count(//tbody/tr/th[@scope='row'])"), drives);
    EXPECT_EQ(Query(page, "count(//thead/tr/th[not(@scope='col')])"), "0");
    EXPECT_EQ(Query(page, "count(//h1)"), "1");
    EXPECT_EQ(Query(page, "count(//@id[. = ../following::*/@id])"), "0") << "an anchor is there twice";
    EXPECT_EQ(Query(page, "count(//a[not(substring(@href, 2) = //@id)])"), "0") << "a link leads nowhere";
}

TEST_P(HtmlOfScenario, NeedsNothingFromElsewhere) {
    const std::string page = Html(SnapshotOf(GetParam()));
    for (const char* const word :
         {"<script", "<link", "<img", "<iframe", "src=", "url(", "@import", "@font-face"}) {
        EXPECT_THAT(page, Not(HasSubstr(word)));
    }
    EXPECT_EQ(page.find("://"), page.rfind("://")) << "the name of the namespace alone looks like an address";
}

INSTANTIATE_TEST_SUITE_P(All, HtmlOfScenario, testing::Values("awkward", "empty", "large", "old", "small"),
                         [](const auto& scenario) { return scenario.param; });

TEST(Html, PageOfAHugeServerIsWellFormedAndNotTooLarge) {
    const std::string page = Html(SnapshotOf("huge"));
    EXPECT_EQ(Query(page, "count(//li[starts-with(@class, 'slot ')][@id])"), "4096");
    EXPECT_LT(page.size(), 5'000'000U);
}

TEST(Html, RollUpComesFirstWithWordAndSign) {
    const std::string page = Html(SnapshotOf("large"));
    EXPECT_THAT(Query(page, "string(//title)"), testing::StartsWith("RAID CRITICAL: 2 critical"));
    EXPECT_EQ(Query(page, "string(//header/div/@class)"), "rollup critical");
    EXPECT_EQ(Query(page, "string(//header/div/p/b)"), "CRITICAL");
    EXPECT_EQ(Query(page, "string(//header//span[@class='sign critical'])"), "\xC3\x97");
    EXPECT_EQ(Query(page, "string(//time/@datetime)"), "2031-04-05T06:07:08Z");
    EXPECT_EQ(Query(page, "count(//main/ul[@class='findings']/li)"), "7");
}

TEST(Html, FindingLeadsToTheSlotOfItsDrive) {
    const std::string page = Html(SnapshotOf("large"));
    const std::string finding = "//ul[@class='findings']/li[contains(., 'PD10 in enclosure 16 slot 2')]";
    EXPECT_EQ(Query(page, "string(" + finding + "//b)"), "FAILED, failure predicted (7)");
    EXPECT_EQ(Query(page, "string(" + finding + "//a/@href)"), "#d0-10");
    EXPECT_THAT(Query(page, "string(//li[@id='d0-10'])"), HasSubstr("PD10"));
    EXPECT_EQ(Query(page, "string(//li[@id='d0-10']/@class)"), "slot warning");
}

TEST(Html, FindingLeadsToADriveWithoutANumberByItsSlot) {
    const std::vector<std::string> keys = {ItemXml("PD No.", ""), ItemXml("PD Status", "ERROR"),
                                           ItemXml("PD Status(Detail)", "FAILED")};
    const std::string page = PageOf(ControllerXml() + DriveXml("1") + DriveXml("2", keys));
    EXPECT_EQ(Query(page, "string(//ul[@class='findings']/li//a/@href)"), "#d0-1");
    EXPECT_EQ(Query(page, "string(//li[@id='d0-1']/span[@class='state'])"), "FAILED");
}

TEST(Html, FindingLeadsToItsGroupItsLogicalDriveItsUnitOrItsController) {
    const std::string controller = ParentXml(
        "Controller Information",
        {ParentXml("### General Information ###",
                   {ItemXml("Controller No.", "0"), ItemXml("Controller Status", "Needs Attention")}),
         ParentXml("### Battery Backup Unit Information ###", {ItemXml("Status", "Failed")}),
         ParentXml("### Controller Settings Information ###", {ItemXml("Rebuild Rate", "30 %")})});
    const std::string group = ParentXml(
        "Logical Drive Information",
        {ParentXml("PD List", {ItemXml("PD No.", "PD7"), ItemXml("Slot No.", "7")}),
         ParentXml("### General Information ###",
                   {ItemXml("RG No.", "RG0"),
                    ParentXml("LD List", {ItemXml("LD No.", "LD0"), ItemXml("State", "OPTIMAL")}),
                    ParentXml("LD List", {ItemXml("LD No.", "LD1"), ItemXml("State", "OFFLINE")})})});
    const std::string page = PageOf(controller + group + DriveXml("1"));
    const auto link = [&](const std::string& place) {
        return Query(page, "string(//ul[@class='findings']/li//a[. = '" + place + "']/@href)");
    };
    EXPECT_EQ(link("controller 0"), "#c0");
    EXPECT_EQ(link("controller 0, Battery Backup Unit"), "#u0-0");
    EXPECT_EQ(link("controller 0, RG0"), "#g0-0");
    EXPECT_EQ(link("controller 0, RG0, LD1"), "#l0-0-1");
    EXPECT_EQ(link("controller 0, RG0, PD7 in slot 7"), "#g0-0") << "the group that names it";
    EXPECT_EQ(Query(page, "string(//*[@id='c0']//h2)"), "Controller 0");
    EXPECT_EQ(Query(page, "string(//*[@id='u0-0']/dt)"), "Battery Backup Unit");
    EXPECT_THAT(Query(page, "string(//*[@id='g0-0']/h4)"), HasSubstr("RG0"));
    EXPECT_EQ(Query(page, "string(//*[@id='l0-0-1']/b)"), "LD1");
    EXPECT_EQ(Query(page, "count(//ul[@class='findings']/li[not(.//a)])"), "0");
}

TEST(Html, OnlyWhatIsWellLooksWell) {
    const std::string page = Html(SnapshotOf("large"));
    const auto look = [&](const std::string& path) {
        return Query(page, "string(" + path + "/span[contains(@class, 'sign')]/@class)");
    };
    EXPECT_EQ(look("//*[@id='d0-0']"), "sign ok");
    EXPECT_EQ(look("//*[@id='d0-14']"), "sign busy");
    EXPECT_EQ(Query(page, "string(//*[@id='d0-14']/@class)"), "slot busy");
    EXPECT_EQ(look("//tr[td[@class='state'][contains(., 'COPYBACK')]]/td"), "sign busy");
    EXPECT_EQ(look("//li[a[@href='#d0-14']]"), "sign busy");
    EXPECT_EQ(look("//*[@id='u0-0']/dd"), "sign ok");
    EXPECT_EQ(look("//*[@id='u1-0']/dd"), "sign busy");
    EXPECT_EQ(look("//*[@id='c0']//div[dt='Status']/dd"), "") << "OK, beside drives that failed";
    EXPECT_EQ(look("//*[@id='c1']//div[dt='Status']/dd"), "sign ok");
    EXPECT_EQ(Query(page, "string(//*[@id='c0']//div[dt='Status']/dd)"), "OK");
}

TEST(Html, TellsWhichServerItIs) {
    inventory::Snapshot snapshot = SnapshotOf("small");
    EXPECT_EQ(Query(Html(snapshot), "string(//h1)"), "RAID report");
    snapshot.host = "storage7";
    EXPECT_EQ(Query(Html(snapshot), "string(//h1)"), "RAID report of storage7");
    EXPECT_THAT(Query(Html(snapshot), "string(//title)"),
                testing::StartsWith("RAID OK on storage7: 1 contr"));
    snapshot.host = "<b>\x1b</title>";
    EXPECT_EQ(Query(Html(snapshot), "string(//h1)"), "RAID report of <b>\xEF\xBF\xBD</title>");
}

TEST(Html, SaysWhatAReplacedDriveIs) {
    const std::string note = "count(//p[starts-with(., 'RLD: another drive has taken the place')])";
    const std::string page = Html(SnapshotOf("large"));
    EXPECT_EQ(Query(page, note), "1");
    EXPECT_EQ(Query(page, "count(//tr[th='PD10']/td[. = 'replaced (RLD)'])"), "1");
    EXPECT_EQ(Query(Html(SnapshotOf("small")), note), "0");
}

TEST(Html, EnclosureIsDrawnWithItsGaps) {
    const std::string page = PageOf(ControllerXml() + DriveXml("7") + DriveXml("2") + DriveXml("4") +
                                    DriveXml("4") + DriveXml("90") + DriveXml("none") + DriveXml(""));
    const auto slot = [&](int place) {
        return Query(page, "normalize-space(//ol[@class='slots']/li[" + std::to_string(place) + "])");
    };
    EXPECT_EQ(slot(1), "slot 2 \xE2\x9C\x93OK PD2 ONLINE");
    EXPECT_EQ(slot(2), "slot 3 empty");
    EXPECT_EQ(slot(3), "slot 4 ?UNKNOWN PD4 the document tells it m\xE2\x80\xA6");
    EXPECT_EQ(slot(4), slot(3));
    EXPECT_EQ(slot(5), "slot 5 empty");
    EXPECT_EQ(slot(6), "slot 6 empty");
    EXPECT_EQ(slot(7), "slot 7 \xE2\x9C\x93OK PD7 ONLINE");
    EXPECT_EQ(slot(8),
              "slot 8\xE2\x80\x93"
              "89 empty");
    EXPECT_EQ(slot(9), "slot 90 \xE2\x9C\x93OK PD90 ONLINE");
    EXPECT_EQ(slot(10), "");
    EXPECT_EQ(Query(page, "count(//ul[@class='slots']/li)"), "2");
    EXPECT_EQ(Query(page, "string(//ol/@aria-label)"), "Enclosure 252: 7 drives, 3 not well");
}

TEST(Html, SlotSaysWhatIsWrongInAWord) {
    const auto state = [](const std::vector<std::string>& keys) {
        return Query(PageOf(DriveXml("1", keys)), "string(//li[@id='d0-0']/span[@class='state'])");
    };
    const std::string failure = ItemXml("Predictive Failure Count", "3");
    EXPECT_EQ(state({}), "ONLINE");
    EXPECT_EQ(state({failure}), "failure predicted (3)");
    EXPECT_EQ(state({ItemXml("PD Status", "ERROR"), ItemXml("PD Status(Detail)", "FAILED"), failure}),
              "FAILED");
    EXPECT_EQ(state({ItemXml("PD Status", "UNKNOWN"), ItemXml("PD Status(Detail)", "Diagnosing")}),
              "Diagnosing");
    EXPECT_EQ(state({ItemXml("PD Status(Detail)", std::string(99, 'x'))}),
              std::string(23, 'x') + "\xE2\x80\xA6");
}

TEST(Html, ADriveShowsAllThatIsWrongTheWorstFirst) {
    const inventory::Snapshot snapshot(
        inventory::Document::Read(DocumentOf("large")), "", {},
        {.expectations =
             inventory::Expectations{.host = "",
                                     .savedAt = "",
                                     .accepted = {{"controller 0, RG2, PD13 in enclosure 16 slot 5", "",
                                                   "OFFLINE", "2031-06-30", "ordered"}}},
         .limits = {.temperature = 35},
         .today = "2031-04-05"});
    const std::string page = Html(snapshot);
    EXPECT_EQ(Query(page, "string(//li[@class='accepted']//a/@href)"), "#d0-13");
    EXPECT_EQ(Query(page, "string(//li[@id='d0-13']/span[@class='state'])"), "OFFLINE");
    EXPECT_EQ(Query(page, "normalize-space(//tr[th='PD13']/td[@class='state'])"),
              "\xC3\x97"
              "CRITICAL OFFLINE, 36 C, limit 35 C");
    EXPECT_EQ(Query(page, "string(//li[@id='d0-14']/span[@class='state'])"), "37 C") << "which was well else";
}

TEST(Html, GroupNamesItsLogicalDrivesAndMembers) {
    const std::string page = Html(SnapshotOf("large"));
    const std::string group = "//section[h4[contains(., 'RG1')]][1]";
    EXPECT_EQ(Query(page, "string(" + group + "/@class)"), "group warning");
    EXPECT_EQ(Query(page, "count(" + group + "/ul[@class='lds']/li[contains(., 'DEGRADED')])"), "2");
    EXPECT_EQ(Query(page, "count(" + group + "/ul[@class='lds']/li[contains(., 'cache:')])"), "1");
    EXPECT_EQ(Query(page, "string(" + group + "/ul[@class='members']/li[3]/a)"), "PD4");
    EXPECT_EQ(Query(page, "string(" + group + "/ul[@class='members']/li[3]/a/@href)"), "#d0-4");
}

TEST(Html, ManyControllersThatAreWellAreClosed) {
    std::string items;
    for (int number = 0; number < 5; ++number) {
        items += WellControllerXml(std::to_string(number)) +
                 DriveXml("1", {ItemXml("PD Status", number == 3 ? "ERROR" : "NO ERROR")});
    }
    EXPECT_EQ(Query(PageOf(items), "count(//details[@class='controller'][@open])"), "1");
    EXPECT_EQ(Query(PageOf(items), "count(//details[@class='controller'][not(@open)])"), "4");
    EXPECT_EQ(Query(Html(SnapshotOf("large")), "count(//details[@class='controller'][@open])"), "2");
}

TEST(Html, ManyFindingsAreAllThere) {
    std::string items = ControllerXml();
    for (int slot = 0; slot < 100; ++slot) {
        items += DriveXml(std::to_string(slot), {ItemXml("PD Status", "ERROR")});
    }
    EXPECT_EQ(Query(PageOf(items), "count(//ul[@class='findings']/li)"), "101");
    EXPECT_EQ(Query(PageOf(items), "string(//main/details/summary)"), "and 81 more");
}

TEST(Html, SmartDataStandWithTheirKeysAndTables) {
    const std::string page = Html(SnapshotOf("large", {"0", "252", "0"}));
    EXPECT_EQ(Query(page, "string(//dl/div[dt='Power-On Time']/dd)"), "20411 Hours");
    EXPECT_EQ(Query(page, "string(//details[contains(summary, 'SMART')]/@open)"), "open");
    EXPECT_EQ(Query(page, "string(//div[starts-with(@aria-label, 'SMART')]//tbody/tr[1]/td[1])"),
              "[Head 0]Read");
    EXPECT_EQ(Query(Html(SnapshotWithSmart("large")), "count(//details[contains(summary, 'SMART')][@open])"),
              "0");
}

TEST(Html, HostileNamesAreOnlyText) {
    const std::string name = "</title><script>alert(\"1\")</script>'&amp;\x01\xFF]]>";
    const std::string shown = "</title><script>alert(\"1\")</script>'&amp;\xEF\xBF\xBD\xEF\xBF\xBD]]>";
    std::vector<std::string> keys;
    for (const char* const key :
         {"PD Status(Detail)", "PD No.", "Vendor", "Product ID", "Serial Number", "Capacity"}) {
        keys.push_back(ItemXml(key, name));
    }
    keys.push_back(ItemXml("PD Status", "ERROR"));
    const std::string page =
        PageOf(ControllerXml({ItemXml("Controller No.", name), ItemXml("Controller Status", name)}) +
               DriveXml(name, keys, {ParentXml("### SMART Information ###", {ItemXml(name, name)})}));
    EXPECT_EQ(Query(page, "count(//script)"), "0");
    EXPECT_EQ(Query(page, "count(//title)"), "1");
    EXPECT_EQ(Query(page, "string(//tbody/tr/th)"), shown);
    EXPECT_EQ(Query(page, "string(//h2[contains(., 'Controller')])"), "Controller " + shown);
    EXPECT_THAT(page, Not(HasSubstr("<script")));
}

/// While there is one, the library that writes the page gets no memory at its request number `failing`.
class PageMemory final {
  public:
    explicit PageMemory(std::size_t failing) {
        g_UntilFailure = failing;
        pugi::set_memory_management_functions(
            [](std::size_t size) { return g_UntilFailure-- == 0 ? nullptr : std::malloc(size); },
            m_Before.second);
    }
    PageMemory(const PageMemory&) = delete;
    PageMemory& operator=(const PageMemory&) = delete;
    ~PageMemory() { pugi::set_memory_management_functions(m_Before.first, m_Before.second); }

  private:
    static inline std::size_t g_UntilFailure = 0;
    const std::pair<pugi::allocation_function, pugi::deallocation_function> m_Before = {
        pugi::get_memory_allocation_function(), pugi::get_memory_deallocation_function()};
};

TEST(Html, APageForWhichThereIsNoMemoryIsNone) {
    const inventory::Snapshot snapshot = SnapshotOf("large");
    const std::string whole = Html(snapshot);
    std::size_t failures = 0;
    for (std::string page; page.empty();) {
        const PageMemory memory(failures);
        try {
            page = Html(snapshot);
            EXPECT_EQ(page, whole);
        } catch (const std::bad_alloc&) {
            ++failures;
        }
    }
    EXPECT_GT(failures, 3U);
}

}  // namespace
}  // namespace views::test
