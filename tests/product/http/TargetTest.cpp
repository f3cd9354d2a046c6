#include "http/Target.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using http::TargetFrom;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(Targets, AreTakenApartAndDecodedOnce) {
    const auto target = TargetFrom("/a%20b/%2e%2E/c?$select=Name%2CStatus&only&a=b=c&&%C3%A4=1+1");
    ASSERT_TRUE(target);
    EXPECT_EQ(target->path, "/a b/../c");
    EXPECT_THAT(target->query, ElementsAre(Pair("$select", "Name,Status"), Pair("only", ""), Pair("a", "b=c"),
                                           Pair("\xC3\xA4", "1+1")));
    EXPECT_EQ(TargetFrom("/%2541")->path, "/%41");
    EXPECT_EQ(TargetFrom("/a%5a")->path, "/aZ");
    EXPECT_THAT(TargetFrom("/?")->query, IsEmpty());
    EXPECT_THAT(TargetFrom("/")->query, IsEmpty());
}

TEST(Targets, ThatAreNoneAreRefused) {
    for (const char* const text : {"",           "a",
                                   "*",          "http://host/",
                                   "/%",         "/%4",
                                   "/%4g",       "/%g4",
                                   "/a?b=%",     "/a?%zz=1",
                                   "/%00",       "/%0d%0aX: 1",
                                   "/a?b=%0A",   "/\x7F",
                                   "/%7f",       "/\xFF",
                                   "/%C3",       "/%C0%80",
                                   "/%ED%A0%80", "/%F4%90%80%80",
                                   "/%E0%80%80", "/%F0%80%80%80",
                                   "/%80",       "/a\tb"}) {
        EXPECT_FALSE(TargetFrom(text)) << text;
    }
    for (const char* const text : {"/%C3%A4", "/%E2%82%AC", "/%F0%9F%98%80", "/%ED%9F%BF", "/%F4%8F%BF%BF"}) {
        EXPECT_TRUE(TargetFrom(text)) << text;
    }
}

}  // namespace
