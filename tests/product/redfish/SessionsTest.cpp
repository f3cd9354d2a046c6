#include "Client.h"

#include <gmock/gmock.h>

namespace redfish::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kSessions = "/redfish/v1/SessionService/Sessions";
const std::string kProof = R"({"UserName": "monitoring", "Password": "secret"})";

class SessionsTest : public testing::Test {
  protected:
    [[nodiscard]] http::Response Post(const std::string& body, const std::string& path = kSessions) const {
        return m_Client.Ask(path, {}, "POST", body);
    }
    [[nodiscard]] std::string Refusal(int status, const std::string& body) const {
        return Client::MessageIn(Post(body), status);
    }
    [[nodiscard]] std::vector<std::string> Seen() const {
        return PathsIn(m_Client.Get(kSessions)["Members"]);
    }

    Client m_Client{EmptyBoard()};
};

TEST_F(SessionsTest, BeginWithAProofAndEndWhenTheirOwnerSaysSo) {
    const http::Response made = Post(kProof);
    EXPECT_EQ(made.status, 201);
    EXPECT_EQ(HeaderOf(made, "Location"), kSessions + "/s1");
    EXPECT_EQ(HeaderOf(made, "X-Auth-Token"), "token-1");
    EXPECT_EQ(HeaderOf(made, "Cache-Control"), "no-store");
    EXPECT_EQ(made.Text().find("secret"), std::string::npos);
    EXPECT_EQ(made.Text().find("token"), std::string::npos);
    EXPECT_EQ(m_Client.accounts.WhoIs("token-1"), "monitoring");
    EXPECT_EQ(m_Client.Get(kSessions + "/s1"), Json::parse(made.Text()));
    EXPECT_EQ(Json::parse(made.Text())["UserName"], "monitoring");
    EXPECT_THAT(Seen(), ElementsAre(kSessions + "/s1"));

    m_Client.account = "monitoring";
    EXPECT_EQ(m_Client.Ask(kSessions + "/s1", {}, "DELETE").status, 204);
    EXPECT_EQ(m_Client.accounts.WhoIs("token-1"), std::nullopt);
    EXPECT_THAT(Seen(), IsEmpty());
    EXPECT_EQ(m_Client.Ask(kSessions + "/s1", {}, "DELETE").status, 404);
}

TEST_F(SessionsTest, AreNobodyElsesBusiness) {
    EXPECT_EQ(Post(kProof, kSessions + "/Members").status, 201) << "the standard's other name";
    m_Client.account = "somebody";
    EXPECT_THAT(Seen(), IsEmpty());
    EXPECT_EQ(m_Client.Refusal(404, kSessions + "/s1"), "ResourceMissingAtURI");
    EXPECT_EQ(m_Client.Ask(kSessions + "/s1", {}, "DELETE").status, 404);
    EXPECT_EQ(m_Client.Get(kSessions, {{"$expand", "."}})["Members"].size(), 0U);
    m_Client.account = "monitoring";
    EXPECT_EQ(m_Client.Get(kSessions, {{"$expand", "."}})["Members"][0]["UserName"], "monitoring");
    EXPECT_EQ(m_Client.Get(kSessions, {{"only", ""}})["Id"], "s1");
}

TEST_F(SessionsTest, AreRefusedWithAReason) {
    EXPECT_EQ(Refusal(401, R"({"UserName": "monitoring", "Password": "Secret"})"),
              "ResourceAtUriUnauthorized");
    EXPECT_EQ(Refusal(401, R"({"UserName": "", "Password": ""})"), "ResourceAtUriUnauthorized");
    EXPECT_EQ(Refusal(400, R"({"UserName": "monitoring"})"), "PropertyMissing");
    EXPECT_EQ(Refusal(400, R"({"UserName": "monitoring", "Password": ["secret"]})"),
              "PropertyValueTypeError");
    EXPECT_EQ(Post(R"({"UserName": "monitoring", "Password": ["secret"]})").Text().find("secret"),
              std::string::npos);
    for (const char* const body : {"", "{", "[]", "null", "\"secret\"", "{\"UserName\": \"\xFF\"}"}) {
        EXPECT_EQ(Refusal(400, body), "MalformedJSON") << body;
    }
    EXPECT_EQ(Refusal(413, std::string(20000, ' ') + kProof), "GeneralError");
    EXPECT_EQ(Refusal(400, std::string(16000, '[')), "MalformedJSON") << "however deep";
    EXPECT_THAT(Seen(), IsEmpty());
}

TEST_F(SessionsTest, AreNotForAnyNumberNorAtAnyTime) {
    m_Client.accounts.mostSessions = 0;
    EXPECT_EQ(Refusal(503, kProof), "SessionLimitExceeded");
    m_Client.accounts.wait = std::chrono::seconds(7);
    const http::Response response = Post(kProof);
    EXPECT_EQ(Client::MessageIn(response, 503), "ServiceTemporarilyUnavailable");
    EXPECT_EQ(HeaderOf(response, "Retry-After"), "7");
}

}  // namespace
}  // namespace redfish::test
