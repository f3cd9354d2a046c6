#include "DocumentText.h"

#include <gtest/gtest.h>

namespace inventory::test {
namespace {

std::vector<std::string> NamesOf(const Siblings& items) {
    std::vector<std::string> names;
    for (const Item& item : items) {
        names.push_back(item.name);
    }
    return names;
}

std::string ErrorOf(const std::string& xml) {
    try {
        (void)Document::Read(xml);
    } catch (const DocumentError& error) {
        return error.what();
    }
    return "no error";
}

TEST(DocumentTest, KeepsItemsInTheirOrderAndLevels) {
    const Document document =
        Read(Node("a", Key("b", "1") + Node("c", Key("d", "2")) + Key("b", "3")) + Key("e", ""));
    EXPECT_EQ(document.Count(), 6U);
    EXPECT_EQ(NamesOf(document.Roots()), (std::vector<std::string>{"a", "e"}));
    const Item& root = *document.Roots().begin();
    EXPECT_EQ(NamesOf(ChildrenOf(root)), (std::vector<std::string>{"b", "c", "b"}));
    EXPECT_EQ(NamesOf(ChildrenOf(*++ChildrenOf(root).begin())), std::vector<std::string>{"d"});
}

TEST(DocumentTest, TellsValuesPlaceholdersAndLostParentsApart) {
    const Document document = Read(Key("empty", "") + Placeholder("missing") + Node("none", "") +
                                   R"(<Item Name="lost" Value="x" Valid="TRUE" Parent="away"/>)");
    auto item = document.Roots().begin();
    EXPECT_TRUE(item->hasValue && !item->isPlaceholder);
    ++item;
    EXPECT_TRUE(item->isPlaceholder);
    ++item;
    EXPECT_FALSE(item->hasValue);
    ++item;
    EXPECT_EQ(item->lostParent, "away");
}

TEST(DocumentTest, GivesBackEveryCharacter) {
    const Document document = Read(Key("&lt;&amp;&gt;&quot;&#9;&#10;&#13;'  x  ", "\xC3\xA4 \xEF\xBF\xBD"));
    EXPECT_EQ(document.Roots().begin()->name, "<&>\"\t\n\r'  x  ");
    EXPECT_EQ(document.Roots().begin()->value, "\xC3\xA4 \xEF\xBF\xBD");
}

TEST(DocumentTest, IsWrittenAsItWasRead) {
    for (const std::string xml :
         {"<RAID version=\"1\"/>",
          "<RAID version=\"1\"><Item Name=\"a\" Valid=\"TRUE\"><Item Name=\"b\" Value=\"\" Valid=\"FALSE\" "
          "Parent=\"away\"/></Item><Item Name=\"&lt;&amp;&quot;&#10;&#09;\" Value=\"\xC3\xA4\" "
          "Valid=\"TRUE\"/>"
          "</RAID>"}) {
        EXPECT_EQ(XmlOf(Document::Read(xml)), xml);
    }
}

TEST(DocumentTest, MayHaveNoItem) {
    EXPECT_TRUE(Document::Read("<RAID version=\"1\"/>").Roots().IsEmpty());
}

TEST(DocumentTest, SurvivesBeingMoved) {
    Document document = Read(Node("a", Key("b", "1")));
    const Item* const root = &*document.Roots().begin();
    const Document moved = std::move(document);
    EXPECT_EQ(&*moved.Roots().begin(), root);
}

TEST(DocumentTest, SaysWhyATextIsNone) {
    EXPECT_EQ(ErrorOf(""), "it is no XML (at byte 0): No document element found");
    EXPECT_EQ(ErrorOf("<RAID version=\"1\"><Item Name=\"a\""),
              "it is no XML (at byte 31): Error parsing start element tag");
    EXPECT_EQ(ErrorOf("<html/>"), "its document element is html, not RAID");
    EXPECT_EQ(ErrorOf("<RAID version=\"2\"/>"), "its version is \"2\", and only 1 is known");
    EXPECT_EQ(ErrorOf("<RAID/>"), "its version is \"\", and only 1 is known");
    EXPECT_EQ(ErrorOf(Xml("<Drive/>")), "it holds something that is no item: Drive");
}

TEST(DocumentTest, SaysWhereSomethingStandsThatIsNoPartOfIt) {
    const std::string empty = "<RAID version=\"1\"/>";
    EXPECT_EQ(ErrorOf(" <!-- saved --> " + empty + " \n<!-- end -->\n"), "no error");
    EXPECT_EQ(ErrorOf(empty + "\n" + empty), "it is no XML (at byte 21): A second document element");
    EXPECT_EQ(ErrorOf(empty + "\nmore"), "it is no XML (at byte 19): Text outside the document element");
    EXPECT_EQ(ErrorOf("more" + empty), "it is no XML (at byte 0): Text outside the document element");
    EXPECT_EQ(ErrorOf(empty + std::string(1, '\0') + "more"), "it is no XML (at byte 19): A NUL byte");
    EXPECT_EQ(ErrorOf("<RAID version=\"1\">" + Key("a", "b") + " more </RAID>"),
              "it holds text between its items (at byte 57)");
    EXPECT_EQ(ErrorOf("<RAID version=\"1\"><![CDATA[ ]]></RAID>"),
              "it holds text between its items (at byte 27)");
}

TEST(DocumentTest, RefusesAnItemThatIsNeitherValidNorAPlaceholder) {
    for (const char* const valid : {" Valid=\"true\"", " Valid=\"\"", ""}) {
        EXPECT_EQ(ErrorOf("<RAID version=\"1\"><Item Name=\"a\"" + std::string(valid) + "/></RAID>"),
                  "the item at byte 19 has a Valid that is neither TRUE nor FALSE")
            << valid;
    }
}

TEST(DocumentTest, RefusesOnlyDepthsThatNoRealOneHas) {
    std::string items;
    for (std::size_t level = 0; level < Document::kMaxDepth; ++level) {
        items = Node("x", items);
    }
    EXPECT_EQ(Document::Read(Xml(items)).Count(), Document::kMaxDepth);
    EXPECT_EQ(ErrorOf(Xml(Node("x", items))), "its items stand deeper than 256 levels");
}

}  // namespace
}  // namespace inventory::test
