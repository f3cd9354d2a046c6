#include "http/Message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using http::MakeResponse;
using http::Request;
using http::Response;
using testing::Pair;

Request Asking(const std::string& ifNoneMatch) {
    return {.method = "GET", .path = "/a", .headers = {{"if-none-match", ifNoneMatch}}};
}

TEST(Fields, AreFoundByTheirNameWhateverItsCaseAndTheFirstOfThemCounts) {
    const Request request{.method = "GET",
                          .path = "/",
                          .query = {{"$select", "Name"}, {"only", ""}},
                          .headers = {{"X-One", "1"}, {"x-one", "2"}}};
    ASSERT_NE(request.Header("x-ONE"), nullptr);
    EXPECT_EQ(*request.Header("x-ONE"), "1");
    ASSERT_NE(request.Query("only"), nullptr);
    EXPECT_EQ(*request.Query("only"), "");
    EXPECT_EQ(request.Query("$selec"), nullptr);
    EXPECT_EQ(request.Header("X-One-More"), nullptr);
}

TEST(Responses, HaveATextAndItsType) {
    const Response response = MakeResponse(404, "text/plain", "no\n");
    EXPECT_EQ(response.status, 404);
    EXPECT_EQ(response.Text(), "no\n");
    EXPECT_THAT(response.headers, testing::ElementsAre(Pair("Content-Type", "text/plain")));
    EXPECT_EQ(Response{}.Text(), "");
}

TEST(Etags, AreThoseOfTheTextAndOfNoOther) {
    EXPECT_EQ(http::EtagOf("drive"), http::EtagOf("drive"));
    EXPECT_NE(http::EtagOf("drive"), http::EtagOf("drivE"));
    EXPECT_NE(http::EtagOf(""), http::EtagOf(std::string_view("\0", 1)));
    EXPECT_THAT(http::EtagOf("drive"), testing::MatchesRegex("\"[0-9a-f]{16}\""));
}

TEST(Etags, SpareWhoeverKnowsTheTextTheText) {
    for (const char* known :
         {"\"t1\"", "*", "W/\"t1\"", "\"t0\" , \"t1\"", "\t\"t0\",W/\"t1\",", ",,\"t1\""}) {
        const Response response =
            WithEtag(Asking(known), MakeResponse(200, "text/plain", "all of it"), "\"t1\"");
        EXPECT_EQ(response.status, 304) << known;
        EXPECT_EQ(response.Text(), "") << known;
        EXPECT_THAT(response.headers, testing::Contains(Pair("ETag", "\"t1\""))) << known;
    }
    for (const char* known : {"\"t0\"", "t1", "", ",", "\"t1", "W/", "\"t1\"x"}) {
        const Response response =
            WithEtag(Asking(known), MakeResponse(200, "text/plain", "all of it"), "\"t1\"");
        EXPECT_EQ(response.status, 200) << known;
        EXPECT_EQ(response.Text(), "all of it") << known;
        EXPECT_THAT(response.headers, testing::Contains(Pair("ETag", "\"t1\""))) << known;
    }
    EXPECT_EQ(WithEtag({.method = "GET", .path = "/"}, MakeResponse(200, "text/plain", ""), "\"t\"").status,
              200);
}

}  // namespace
