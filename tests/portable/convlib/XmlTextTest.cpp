#include "XmlText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace convlib {
namespace {

std::string AttributeText(std::string_view text) {
    std::string written = "before ";
    AppendAttributeText(written, text);
    EXPECT_TRUE(written.starts_with("before "));
    return written.substr(std::string_view("before ").size());
}

TEST(XmlTextTest, TextIsWrittenSoThatAParserReadsItBack) {
    struct Case {
        std::string text;
        std::string written;
    };
    const std::string bad = "\xEF\xBF\xBD";
    const std::vector<Case> cases = {
        {"", ""},
        {"Product Name", "Product Name"},
        {" two  blanks kept ", " two  blanks kept "},
        {"it's", "it's"},
        {"&", "&amp;"},
        {"&amp;", "&amp;amp;"},
        {"<a href=\"x\">", "&lt;a href=&quot;x&quot;&gt;"},
        {"]]>", "]]&gt;"},
        {"a\tb\nc\rd", "a&#9;b&#10;c&#13;d"},
        {"\r\n", "&#13;&#10;"},
        {std::string("a\0b", 3), "a" + bad + "b"},
        {"\x01\x08\x0B\x0C\x0E\x1F", bad + bad + bad + bad + bad + bad},
        {"\x1B[31mred", bad + "[31mred"},
        {"\x7F", "\x7F"},
        {"\xC2\x85", "\xC2\x85"},
        {"\xE2\x80\xA8", "\xE2\x80\xA8"},
        {"\xEF\xBF\xBD", bad},
        {"\xEF\xBF\xBE", bad},
        {"\xEF\xBF\xBF", bad},
        {"\xEF\xB7\x90", "\xEF\xB7\x90"},
        {"\xF0\x9F\xBF\xBE", "\xF0\x9F\xBF\xBE"},
        {"\xEF\xBB\xBFmark", "\xEF\xBB\xBFmark"},
        {"caf\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80",
         "caf\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80"},
        {"caf\xE9", "caf" + bad},
        {"a\xC0\xAF"
         "b",
         "a" + bad + bad + "b"},
        {"a\xED\xA0\x80"
         "b",
         "a" + bad + bad + bad + "b"},
        {"a\xF4\x90\x80\x80"
         "b",
         "a" + bad + bad + bad + bad + "b"},
        {"a\xF0\x9F\x98", "a" + bad},
        {"\xE2\x82<", bad + "&lt;"},
    };
    for (const Case& testCase : cases) {
        EXPECT_EQ(AttributeText(testCase.text), testCase.written) << testCase.text;
    }
}

TEST(XmlTextTest, EveryByteAloneIsWrittenAsACharacterThatXmlCanCarry) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(static_cast<unsigned char>(byte)));
        const std::string written = AttributeText(text);
        if (byte >= 0x80 || (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r')) {
            EXPECT_EQ(written, "\xEF\xBF\xBD") << byte;
        } else if (written != text) {
            EXPECT_TRUE(written.starts_with('&') && written.ends_with(';')) << byte;
        }
    }
}

TEST(XmlTextTest, ElementNamesAreXmlNamesWithoutAColon) {
    for (const char* name : {"RAID", "_", "a", "A-1.b_2", "\xC3\xA9t\xC3\xA9", "\xE6\x97\xA5", "a\xC2\xB7",
                             "\xF0\x90\x80\x80", "e\xCC\x81", "\xE2\x80\x8C", "\xEF\xBF\xBD"}) {
        EXPECT_TRUE(IsElementName(name)) << name;
    }
}

TEST(XmlTextTest, WhatIsNoElementNameIsRefused) {
    const std::vector<std::string> names = {
        "",
        "1a",
        "-a",
        ".a",
        "a b",
        " RAID",
        "RAID ",
        "a:b",
        ":",
        "a/",
        "a>",
        "a\"",
        "a&",
        "a\n",
        "\xC2\xB7",
        "\xC3\x97",
        "\xC3\xB7",
        "\xCC\x81",
        "\xCD\xBE",
        "\xE2\x80\x8B",
        "\xE2\x80\xBF",
        "a\xE9",
        "a\xC3",
        "\xEF\xBF\xBE",
        "\xF3\xB0\x80\x80",
        std::string("a\0b", 3),
    };
    for (const std::string& name : names) {
        EXPECT_FALSE(IsElementName(name)) << name;
    }
}

}  // namespace
}  // namespace convlib
