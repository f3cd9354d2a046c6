#include "XmlText.h"

#include "Xml.h"

#include <gtest/gtest.h>

namespace wbem {
namespace {

std::string Text(std::string_view text) {
    std::string xml;
    AppendText(xml, text);
    return xml;
}

std::string Attribute(std::string_view text) {
    std::string xml;
    AppendAttribute(xml, text);
    return xml;
}

TEST(XmlText, HasThreeCharactersAsNamedEntities) {
    EXPECT_EQ(Text("<A B=\"1\">it's &amp;\n</A>"), "&lt;A B=\"1\"&gt;it's &amp;amp;\n&lt;/A&gt;");
    EXPECT_EQ(Text("]]>"), "]]&gt;");
    EXPECT_EQ(Text(""), "");
}

TEST(XmlText, HasNoCharacterThatXmlCannotCarry) {
    EXPECT_EQ(Text(std::string_view("a\0b\x1f", 4)),
              "a\xef\xbf\xbd"
              "b\xef\xbf\xbd");
    EXPECT_EQ(Text("\xef\xbf\xbe\xef\xbf\xbf."), "\xef\xbf\xbd\xef\xbf\xbd.");
    EXPECT_EQ(Text("\xc3"), "\xef\xbf\xbd");
    EXPECT_EQ(Text("\xe2\x82.\xe9"), "\xef\xbf\xbd\xef\xbf\xbd.\xef\xbf\xbd");
    EXPECT_EQ(Text("\xf0\x9f\x92\xbe \xc3\xa9"), "\xf0\x9f\x92\xbe \xc3\xa9");
}

TEST(XmlText, OfAnAttributeIsReadBackAsItWas) {
    const std::string text = "a\tb\r\nc \"d\" <e> & 'f'";
    EXPECT_EQ(*ReadXml("<A B=\"" + Attribute(text) + "\"/>").Attribute("B"), text);
}

TEST(XmlText, OfABytesOfAllKindsIsWellFormed) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    EXPECT_FALSE(IsXmlText(all));
    EXPECT_TRUE(IsXmlText(Text(all)));
    EXPECT_NO_THROW((void)ReadXml("<A B=\"" + Attribute(all) + "\">" + Text(all) + "</A>"));
}

}  // namespace
}  // namespace wbem
