#include "http/Framing.h"

#include <gtest/gtest.h>

namespace {

using http::Field;
using http::IsAmbiguous;

http::Request With(std::vector<Field> headers) {
    return {.method = "POST", .path = "/", .headers = std::move(headers)};
}

TEST(Requests, ThatAreOneThingAreNotAmbiguous) {
    for (const std::vector<Field>& headers : {std::vector<Field>{},
                                              {{"Host", "x"}, {"Content-Length", "4"}},
                                              {{"Transfer-Encoding", "chunked"}},
                                              {{"content-length", "0"}},
                                              {{"X-a.b!#$%&'*+^_`|~1", ""}, {"X-a.b!#$%&'*+^_`|~1", ""}}}) {
        EXPECT_FALSE(IsAmbiguous(With(headers)));
    }
    EXPECT_EQ(http::LengthOf(With({{"Content-Length", "123456789012345678"}})), 123456789012345678U);
    EXPECT_EQ(http::LengthOf(With({})), 0U);
}

TEST(Requests, ThatMayBeTwoThingsAreAmbiguous) {
    for (const std::vector<Field>& headers :
         {std::vector<Field>{{"Content-Length", "4"}, {"content-length", "4"}},
          {{"Content-Length", "4"}, {"Transfer-Encoding", "chunked"}},
          {{"Transfer-Encoding", "chunked"}, {"Transfer-Encoding", "chunked"}},
          {{"Transfer-Encoding", "gzip, chunked"}},
          {{"Transfer-Encoding", "Chunked "}},
          {{"Content-Length", ""}},
          {{"Content-Length", "+4"}},
          {{"Content-Length", "4,4"}},
          {{"Content-Length", "0x4"}},
          {{"Content-Length", "1234567890123456789"}},
          {{"Content-Length ", "4"}},
          {{"", "4"}},
          {{"a b", "4"}},
          {{"a\x7F", "4"}},
          {{"Host", "x"}, {"host", "y"}}}) {
        EXPECT_TRUE(IsAmbiguous(With(headers))) << headers.front().first << ": " << headers.front().second;
    }
}

TEST(HeaderTexts, StayInTheirLine) {
    EXPECT_TRUE(http::IsHeaderText("a b\tc \xC3\xA4"));
    EXPECT_TRUE(http::IsHeaderText(""));
    for (const std::string text : {"a\r\nX: y", "a\n", "\x7F", "\x01"}) {
        EXPECT_FALSE(http::IsHeaderText(text));
    }
    EXPECT_FALSE(http::IsHeaderText(std::string("\0", 1)));
}

}  // namespace
