#include "Items.h"
#include "test_support/XmlLint.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using testsupport::EvaluateXPath;
using testsupport::ValidateAgainstSchema;

constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

/// Converts, validates, and compares with the whole expected text inside the document element.
void ExpectItems(Items& items, const std::string& expected) {
    const std::string xml = Convert(items);
    EXPECT_EQ(xml, kDeclaration + ("<RAID version=\"1\">\n" + expected) + "</RAID>\n");
    EXPECT_EQ(ValidateAgainstSchema(xml), "");
}

TEST(XmlConverterTest, AListBecomesATreeByItsParentNames) {
    Items items;
    items.Add("", "Controller Information");
    items.Add("Controller Information", "### General Information ###");
    items.Add("### General Information ###", "Controller No.", "0");
    items.Add("### General Information ###", "Product Name", "Storage 9 <8i>");
    items.Add("Controller Information", "### Controller Settings Information ###");
    items.Add("### Controller Settings Information ###", "Reconstruction Rate", "", "FALSE");
    ExpectItems(items,
                "  <Item Name=\"Controller Information\" Valid=\"TRUE\">\n"
                "    <Item Name=\"### General Information ###\" Valid=\"TRUE\">\n"
                "      <Item Name=\"Controller No.\" Value=\"0\" Valid=\"TRUE\"/>\n"
                "      <Item Name=\"Product Name\" Value=\"Storage 9 &lt;8i&gt;\" Valid=\"TRUE\"/>\n"
                "    </Item>\n"
                "    <Item Name=\"### Controller Settings Information ###\" Valid=\"TRUE\">\n"
                "      <Item Name=\"Reconstruction Rate\" Value=\"\" Valid=\"FALSE\"/>\n"
                "    </Item>\n"
                "  </Item>\n");
}

TEST(XmlConverterTest, AnEmptyListIsAnEmptyDocument) {
    Items items;
    const std::string xml = Convert(items);
    EXPECT_EQ(xml, std::string(kDeclaration) + "<RAID version=\"1\"/>\n");
    EXPECT_EQ(ValidateAgainstSchema(xml), "");
}

TEST(XmlConverterTest, AListOfNullsIsAnEmptyDocument) {
    Items items;
    items.List() = {nullptr, nullptr};
    EXPECT_EQ(Convert(items), std::string(kDeclaration) + "<RAID version=\"1\"/>\n");
}

TEST(XmlConverterTest, NullsInTheListArePassedOver) {
    Items items;
    items.List().push_back(nullptr);
    items.Add("", "root");
    items.List().push_back(nullptr);
    items.Add("root", "key", "1");
    items.List().push_back(nullptr);
    ExpectItems(items,
                "  <Item Name=\"root\" Valid=\"TRUE\">\n"
                "    <Item Name=\"key\" Value=\"1\" Valid=\"TRUE\"/>\n"
                "  </Item>\n");
}

TEST(XmlConverterTest, TheDocumentElementIsTheKindOfDocument) {
    Items items;
    items.Add("", "root");
    EXPECT_EQ(Convert(items, "Other-1"), std::string(kDeclaration) +
                                             "<Other-1 version=\"1\">\n"
                                             "  <Item Name=\"root\" Valid=\"TRUE\"/>\n"
                                             "</Other-1>\n");
    EXPECT_EQ(EvaluateXPath(Convert(items, "\xC3\xA9t\xC3\xA9"), "name(/*)"), "\xC3\xA9t\xC3\xA9");
}

TEST(XmlConverterTest, TheParentIsTheNearestItemBeforeThatBearsTheName) {
    Items items;
    items.Add("", "drive", "first");
    items.Add("drive", "key", "1");
    items.Add("", "drive", "second");
    items.Add("drive", "key", "2");
    items.Add("", "drive", "third");
    ExpectItems(items,
                "  <Item Name=\"drive\" Value=\"first\" Valid=\"TRUE\">\n"
                "    <Item Name=\"key\" Value=\"1\" Valid=\"TRUE\"/>\n"
                "  </Item>\n"
                "  <Item Name=\"drive\" Value=\"second\" Valid=\"TRUE\">\n"
                "    <Item Name=\"key\" Value=\"2\" Valid=\"TRUE\"/>\n"
                "  </Item>\n"
                "  <Item Name=\"drive\" Value=\"third\" Valid=\"TRUE\"/>\n");
}

TEST(XmlConverterTest, AnItemBelowAnotherLevelCanBeTheNearestThatBearsTheName) {
    Items items;
    items.Add("", "x");
    items.Add("x", "y");
    items.Add("y", "x");
    items.Add("x", "leaf", "1");
    ExpectItems(items,
                "  <Item Name=\"x\" Valid=\"TRUE\">\n"
                "    <Item Name=\"y\" Valid=\"TRUE\">\n"
                "      <Item Name=\"x\" Valid=\"TRUE\">\n"
                "        <Item Name=\"leaf\" Value=\"1\" Valid=\"TRUE\"/>\n"
                "      </Item>\n"
                "    </Item>\n"
                "  </Item>\n");
}

TEST(XmlConverterTest, ALateChildStandsInItsParentBehindTheEarlierOnes) {
    Items items;
    items.Add("", "a");
    items.Add("a", "a1", "1");
    items.Add("", "b");
    items.Add("b", "b1", "1");
    items.Add("a", "a2", "2");
    items.Add("", "c");
    items.Add("b", "b2", "2");
    items.Add("a", "a3", "3");
    ExpectItems(items,
                "  <Item Name=\"a\" Valid=\"TRUE\">\n"
                "    <Item Name=\"a1\" Value=\"1\" Valid=\"TRUE\"/>\n"
                "    <Item Name=\"a2\" Value=\"2\" Valid=\"TRUE\"/>\n"
                "    <Item Name=\"a3\" Value=\"3\" Valid=\"TRUE\"/>\n"
                "  </Item>\n"
                "  <Item Name=\"b\" Valid=\"TRUE\">\n"
                "    <Item Name=\"b1\" Value=\"1\" Valid=\"TRUE\"/>\n"
                "    <Item Name=\"b2\" Value=\"2\" Valid=\"TRUE\"/>\n"
                "  </Item>\n"
                "  <Item Name=\"c\" Valid=\"TRUE\"/>\n");
}

TEST(XmlConverterTest, AnItemWhoseParentIsNotFoundKeepsTheParentsName) {
    Items items;
    items.Add("", "root");
    items.Add("nobody & co", "key", "1");
    items.Add("key", "below", "2");
    ExpectItems(items,
                "  <Item Name=\"root\" Valid=\"TRUE\"/>\n"
                "  <Item Name=\"key\" Value=\"1\" Valid=\"TRUE\" Parent=\"nobody &amp; co\">\n"
                "    <Item Name=\"below\" Value=\"2\" Valid=\"TRUE\"/>\n"
                "  </Item>\n");
}

TEST(XmlConverterTest, AParentThatComesLaterIsNotFound) {
    Items items;
    items.Add("root", "early", "1");
    items.Add("", "root");
    items.Add("root", "late", "2");
    ExpectItems(items,
                "  <Item Name=\"early\" Value=\"1\" Valid=\"TRUE\" Parent=\"root\"/>\n"
                "  <Item Name=\"root\" Valid=\"TRUE\">\n"
                "    <Item Name=\"late\" Value=\"2\" Valid=\"TRUE\"/>\n"
                "  </Item>\n");
}

TEST(XmlConverterTest, AnItemIsNeverItsOwnParent) {
    Items items;
    items.Add("x", "x", "1");
    items.Add("x", "x", "2");
    ExpectItems(items,
                "  <Item Name=\"x\" Value=\"1\" Valid=\"TRUE\" Parent=\"x\">\n"
                "    <Item Name=\"x\" Value=\"2\" Valid=\"TRUE\"/>\n"
                "  </Item>\n");
}

TEST(XmlConverterTest, AnEmptyParentNameIsTheDocumentEvenBehindANamelessItem) {
    Items items;
    items.Add("", "");
    items.Add("", "root");
    items.Add("root", "key");
    items.Add("", "other root");
    ExpectItems(items,
                "  <Item Name=\"\" Valid=\"TRUE\"/>\n"
                "  <Item Name=\"root\" Valid=\"TRUE\">\n"
                "    <Item Name=\"key\" Value=\"\" Valid=\"TRUE\"/>\n"
                "  </Item>\n"
                "  <Item Name=\"other root\" Valid=\"TRUE\"/>\n");
}

TEST(XmlConverterTest, NamesAreComparedWhole) {
    Items items;
    items.AddBytes("", std::string("a\0b", 3), "");
    items.AddBytes(std::string("a\0b", 3), "found", "1");
    items.AddBytes("a", "lost", "2");
    items.AddBytes("A", "case", "3");
    ExpectItems(items,
                "  <Item Name=\"a\xEF\xBF\xBD"
                "b\" Valid=\"TRUE\">\n"
                "    <Item Name=\"found\" Value=\"1\" Valid=\"TRUE\"/>\n"
                "  </Item>\n"
                "  <Item Name=\"lost\" Value=\"2\" Valid=\"TRUE\" Parent=\"a\"/>\n"
                "  <Item Name=\"case\" Value=\"3\" Valid=\"TRUE\" Parent=\"A\"/>\n");
}

TEST(XmlConverterTest, FieldsCountAsTheyStandWhenTheConversionRuns) {
    Items items;
    items.Add("", "root");
    CItemDisp& number = items.Add("root", "RAID Controller #0", "0");
    CItemDisp& title = items.Add("root", "### Slot Information ###");
    items.Add("### Enclosure Properties Information ###", "Enclosure ID", "", "FALSE");
    title.m_Name = "### Enclosure Properties Information ###";
    number.m_ParentName = "";
    number.m_Name = "Controller No.";
    number.m_Value = "7";
    ExpectItems(items,
                "  <Item Name=\"root\" Valid=\"TRUE\">\n"
                "    <Item Name=\"### Enclosure Properties Information ###\" Valid=\"TRUE\">\n"
                "      <Item Name=\"Enclosure ID\" Value=\"\" Valid=\"FALSE\"/>\n"
                "    </Item>\n"
                "  </Item>\n"
                "  <Item Name=\"Controller No.\" Value=\"7\" Valid=\"TRUE\"/>\n");
}

TEST(XmlConverterTest, OnlyAnEmptyValueOfARootATitleOrAParentIsLeftOut) {
    Items items;
    items.Add("", "root");
    items.Add("root", "### Title ###");
    items.Add("root", "### ");
    items.Add("root", "###Key");
    items.Add("root", " ### Key");
    items.Add("root", "group");
    items.Add("group", "in group", "1");
    items.Add("root", "plain");
    items.Add("nobody", "lost");
    items.Add("nobody", "### Lost title");
    ExpectItems(items,
                "  <Item Name=\"root\" Valid=\"TRUE\">\n"
                "    <Item Name=\"### Title ###\" Valid=\"TRUE\"/>\n"
                "    <Item Name=\"### \" Valid=\"TRUE\"/>\n"
                "    <Item Name=\"###Key\" Value=\"\" Valid=\"TRUE\"/>\n"
                "    <Item Name=\" ### Key\" Value=\"\" Valid=\"TRUE\"/>\n"
                "    <Item Name=\"group\" Valid=\"TRUE\">\n"
                "      <Item Name=\"in group\" Value=\"1\" Valid=\"TRUE\"/>\n"
                "    </Item>\n"
                "    <Item Name=\"plain\" Value=\"\" Valid=\"TRUE\"/>\n"
                "  </Item>\n"
                "  <Item Name=\"lost\" Value=\"\" Valid=\"TRUE\" Parent=\"nobody\"/>\n"
                "  <Item Name=\"### Lost title\" Valid=\"TRUE\" Parent=\"nobody\"/>\n");
}

TEST(XmlConverterTest, AValueThatIsNotEmptyIsAlwaysWritten) {
    Items items;
    items.Add("", "root", "r");
    items.Add("root", "### Title ###", "t");
    items.Add("### Title ###", "group", " ");
    items.Add("group", "key", "k");
    ExpectItems(items,
                "  <Item Name=\"root\" Value=\"r\" Valid=\"TRUE\">\n"
                "    <Item Name=\"### Title ###\" Value=\"t\" Valid=\"TRUE\">\n"
                "      <Item Name=\"group\" Value=\" \" Valid=\"TRUE\">\n"
                "        <Item Name=\"key\" Value=\"k\" Valid=\"TRUE\"/>\n"
                "      </Item>\n"
                "    </Item>\n"
                "  </Item>\n");
}

TEST(XmlConverterTest, ThePlaceholderFlagIsKeptOnEveryKindOfItem) {
    Items items;
    items.Add("", "root", "", "FALSE");
    items.Add("root", "### Title ###", "", "FALSE");
    items.Add("### Title ###", "key", "1", "FALSE");
    ExpectItems(items,
                "  <Item Name=\"root\" Valid=\"FALSE\">\n"
                "    <Item Name=\"### Title ###\" Valid=\"FALSE\">\n"
                "      <Item Name=\"key\" Value=\"1\" Valid=\"FALSE\"/>\n"
                "    </Item>\n"
                "  </Item>\n");
}

TEST(XmlConverterTest, TheSameItemTwiceInTheListIsTwoElements) {
    Items items;
    items.Add("", "root");
    CItemDisp& key = items.Add("root", "key", "1");
    items.List().push_back(&key);
    ExpectItems(items,
                "  <Item Name=\"root\" Valid=\"TRUE\">\n"
                "    <Item Name=\"key\" Value=\"1\" Valid=\"TRUE\"/>\n"
                "    <Item Name=\"key\" Value=\"1\" Valid=\"TRUE\"/>\n"
                "  </Item>\n");
}

TEST(XmlConverterTest, AllItemsAlikeFormAChain) {
    Items items;
    items.Add("", "x");
    items.Add("x", "x");
    items.Add("x", "x");
    ExpectItems(items,
                "  <Item Name=\"x\" Valid=\"TRUE\">\n"
                "    <Item Name=\"x\" Valid=\"TRUE\">\n"
                "      <Item Name=\"x\" Value=\"\" Valid=\"TRUE\"/>\n"
                "    </Item>\n"
                "  </Item>\n");
}

TEST(XmlConverterTest, AParserReadsBackTheTextsAsTheyWere) {
    const std::string text = " a\tb\nc\rd  <e> & \"f\" 'g' ]]> &#10; caf\xC3\xA9 \xF0\x9F\x98\x80 ";
    Items items;
    items.Add("", text);
    items.Add(text, text, text);
    items.Add("lost" + text, "key", "");
    const std::string xml = Convert(items);
    EXPECT_EQ(ValidateAgainstSchema(xml), "");
    EXPECT_EQ(EvaluateXPath(xml, "string(/RAID/Item[1]/@Name)"), text);
    EXPECT_EQ(EvaluateXPath(xml, "string(/RAID/Item[1]/Item/@Name)"), text);
    EXPECT_EQ(EvaluateXPath(xml, "string(/RAID/Item[1]/Item/@Value)"), text);
    EXPECT_EQ(EvaluateXPath(xml, "string(/RAID/Item[2]/@Parent)"), "lost" + text);
}

TEST(XmlConverterTest, AnyBytesMakeAValidDocument) {
    std::string bytes;
    for (unsigned int first = 0; first < 256; ++first) {
        for (unsigned int second = 0; second < 256; second += 5) {
            bytes.push_back(static_cast<char>(static_cast<unsigned char>(first)));
            bytes.push_back(static_cast<char>(static_cast<unsigned char>(second)));
        }
    }
    Items items;
    items.AddBytes("", bytes, bytes);
    items.AddBytes(bytes, bytes + bytes, bytes);
    items.AddBytes(bytes + "?", std::string(1, '\0'), "\xFF\xFE");
    const std::string xml = Convert(items);
    EXPECT_EQ(ValidateAgainstSchema(xml), "");
    EXPECT_EQ(EvaluateXPath(xml, "count(/RAID/Item)"), "2");
    EXPECT_EQ(EvaluateXPath(xml, "count(/RAID/Item/Item)"), "1");
}

TEST(XmlConverterTest, TheTextLivesUntilTheNextConversionOfTheSameObject) {
    Items one;
    one.Add("", "one");
    Items two;
    two.Add("", "two");
    const LibIFPointer first = MakeLibIF();
    const LibIFPointer second = MakeLibIF();
    const char* xmlOne = nullptr;
    const char* xmlTwo = nullptr;
    ASSERT_EQ(first->ConvertToXml(0, "RAID", &one.List(), &xmlOne), 0U);
    ASSERT_EQ(second->ConvertToXml(0, "RAID", &two.List(), &xmlTwo), 0U);
    EXPECT_EQ(xmlOne, Convert(one));
    EXPECT_EQ(xmlTwo, Convert(two));
    ASSERT_EQ(first->ConvertToXml(0, "RAID", &two.List(), &xmlOne), 0U);
    EXPECT_STREQ(xmlOne, xmlTwo);
}

TEST(SchemaTest, DocumentsOfAnotherShapeAreRefused) {
    for (const char* xml : {
             "<RAID/>",
             "<RAID version=\"2\"/>",
             "<Raid version=\"1\"/>",
             "<RAID version=\"1\">text</RAID>",
             "<RAID version=\"1\"><Item Name=\"a\"/></RAID>",
             "<RAID version=\"1\"><Item Valid=\"TRUE\"/></RAID>",
             "<RAID version=\"1\"><Item Name=\"a\" Valid=\"true\"/></RAID>",
             "<RAID version=\"1\"><Item Name=\"a\" Valid=\"TRUE\" Other=\"\"/></RAID>",
             "<RAID version=\"1\"><Item Name=\"a\" Valid=\"TRUE\" Parent=\"\"/></RAID>",
             "<RAID version=\"1\"><Item Name=\"a\" Valid=\"TRUE\"><Item Name=\"b\" Valid=\"TRUE\" "
             "Parent=\"c\"/></Item></RAID>",
             "<RAID version=\"1\"><Other/></RAID>",
             "no XML at all",
         }) {
        EXPECT_NE(ValidateAgainstSchema(xml), "") << xml;
    }
}

}  // namespace
