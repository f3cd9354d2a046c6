#include "Xml.h"

#include <gtest/gtest.h>

namespace wbem {
namespace {

std::string Repeated(const std::string& text, std::size_t times) {
    std::string all;
    while (times-- > 0) {
        all += text;
    }
    return all;
}

TEST(Xml, IsReadAsATree) {
    const Element read = ReadXml(
        "\xef\xbb\xbf<?xml version='1.0' encoding='UTF-8'?><!-- a --><A B=\"1 &lt;\" C='&#50;'>"
        "x<?y?><D/>&amp;<![CDATA[<]]><E>\xc3\xa9</E></A>\n");
    EXPECT_EQ(read.name, "A");
    EXPECT_EQ(*read.Attribute("B"), "1 <");
    EXPECT_EQ(*read.Attribute("C"), "2");
    EXPECT_EQ(read.Attribute("D"), nullptr);
    EXPECT_EQ(read.text, "x&<");
    ASSERT_EQ(read.children.size(), 2U);
    EXPECT_EQ(read.Child("E")->text, "\xc3\xa9");
    EXPECT_EQ(read.Child("F"), nullptr);
}

struct BadText {
    const char* name;
    std::string text;
};

class IllFormed : public testing::TestWithParam<BadText> {};

TEST_P(IllFormed, IsRefused) {
    try {
        (void)ReadXml(GetParam().text);
        FAIL() << "it was read";
    } catch (const XmlError& error) {
        EXPECT_EQ(error.TheKind(), XmlError::Kind::NotWellFormed) << error.what();
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Xml, IllFormed,
    testing::Values(
        BadText{"Nothing", ""}, BadText{"Blank", " \n"}, BadText{"NoXml", "hello"},
        BadText{"TwoRoots", "<A/><B/>"}, BadText{"TextBehind", "<A/>x"}, BadText{"CutOff", "<A><B/>"},
        BadText{"CutOffTag", "<A B="}, BadText{"WrongOrder", "<A><B></A></B>"},
        BadText{"BareLess", "<A>1 < 2</A>"}, BadText{"BareAmpersand", "<A>a & b</A>"},
        BadText{"UnknownEntity", "<A>&nbsp;</A>"}, BadText{"UnknownEntityInAttribute", "<A B='&x;'/>"},
        BadText{"TwiceTheAttribute", "<A B='1' B='2'/>"}, BadText{"NoQuotes", "<A B=1/>"},
        BadText{"ControlCharacter", "<A>\x01</A>"}, BadText{"ReferenceToControlCharacter", "<A>&#1;</A>"},
        BadText{"NoCharacter", "<A>\xef\xbf\xbe</A>"}, BadText{"NoUtf8", "<A>\xe9</A>"},
        BadText{"Overlong", "<A>\xc0\xbc</A>"}, BadText{"Zero", std::string("<A>\0</A>", 8)},
        BadText{"Surrogate", "<A>\xed\xa0\x80</A>"},
        BadText{"OtherEncoding", "<?xml version='1.0' encoding='ISO-8859-1'?><A/>"},
        BadText{"OtherEncodingBehindTheMark", "\xef\xbb\xbf<?xml version='1.0' encoding='latin1'?><A/>"},
        BadText{"OtherEncodingByMark", std::string("\xff\xfe<\0A\0/\0>\0", 10)},
        BadText{"LateDeclaration", " <?xml version='1.0'?><A/>"}),
    [](const auto& test) { return test.param.name; });

std::string Deep(std::size_t levels) {
    return Repeated("<A>", levels) + Repeated("</A>", levels);
}

std::string Broad(std::size_t attributes) {
    std::string text = "<A";
    for (std::size_t number = 0; number < attributes; ++number) {
        text += " a" + std::to_string(number) + "='<'";
        text.replace(text.size() - 2, 1, "x");
    }
    return text + "/>";
}

class Refused : public testing::TestWithParam<BadText> {};

TEST_P(Refused, WhateverElseItIs) {
    try {
        (void)ReadXml(GetParam().text);
        FAIL() << "it was read";
    } catch (const XmlError& error) {
        EXPECT_EQ(error.TheKind(), XmlError::Kind::Refused) << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Xml, Refused,
    testing::Values(BadText{"DocumentType", "<!DOCTYPE A><A/>"},
                    BadText{"BrokenDocumentType", "<!DOCTYPE A [<!ENTITY <"},
                    BadText{"OutsideDocumentType", "<!DOCTYPE A SYSTEM 'file:///etc/passwd'><A/>"},
                    BadText{"OutsideEntity",
                            "<!DOCTYPE A [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><A>&e;</A>"},
                    BadText{"BillionLaughs",
                            "<!DOCTYPE A [<!ENTITY a 'ha'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>"
                            "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'>]><A>&c;&c;&c;&c;</A>"},
                    BadText{"TooDeep", Deep(kDeepest + 1)}, BadText{"TooBroad", Broad(kMostAttributes + 1)}),
    [](const auto& test) { return test.param.name; });

TEST(Xml, IsReadUpToTheLimits) {
    EXPECT_EQ(ReadXml(Deep(kDeepest)).name, "A");
    EXPECT_EQ(ReadXml(Broad(kMostAttributes)).attributes.size(), kMostAttributes);
}

}  // namespace
}  // namespace wbem
