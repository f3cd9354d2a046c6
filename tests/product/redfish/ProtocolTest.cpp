#include "Items.h"
#include "Scenarios.h"
#include "test_support/XmlLint.h"

#include <thread>

namespace redfish::test {
namespace {

const std::string kDrive = std::string(kSystem) + "/Storage/0/Drives/252-0";

Client Small() {
    return ClientOf("small");
}

TEST(FixedResources, AreWhereTheStandardHasThem) {
    const Client client(EmptyBoard());
    EXPECT_EQ(client.Get("/redfish"), Json({{"v1", "/redfish/v1/"}}));
    const Json root = client.Get("/redfish/v1/");
    EXPECT_EQ(root["@odata.id"], "/redfish/v1/");
    EXPECT_EQ(root["ProtocolFeaturesSupported"]["FilterQuery"], false);
    EXPECT_EQ(root["ProtocolFeaturesSupported"]["ExpandQuery"]["MaxLevels"], 6);
    EXPECT_EQ(client.Get("/redfish/v1"), root) << "the last slash means nothing";
    EXPECT_EQ(client.Get("/redfish/v1/Systems/"), client.Get("/redfish/v1/Systems"));
    const Json services = client.Get("/redfish/v1/odata");
    for (const Json& each : services["value"]) {
        EXPECT_EQ(client.Ask(each["url"]).status, 200) << each;
    }
}

TEST(Metadata, IsWellFormedAndNamesEverySchema) {
    const Client client(EmptyBoard());
    const http::Response response = client.Ask("/redfish/v1/$metadata");
    EXPECT_EQ(HeaderOf(response, "Content-Type"), "application/xml; charset=utf-8");
    const std::string text(response.Text());
    const auto count = [&](const std::string& what) {
        return testsupport::EvaluateXPath(text, "string(count(" + what + "))");
    };
    EXPECT_EQ(count("//*[local-name()='Include'][@Namespace='Drive.v1_22_0']"), "1");
    EXPECT_EQ(count("//*[local-name()='Include'][@Namespace='VolumeCollection']"), "1");
    EXPECT_EQ(count("//*[local-name()='ComplexType'][@Name='Drive']/*[@Name='PowerStatus']"), "1");
}

TEST(Answers, CarryTheHeadersOfTheStandard) {
    const http::Response response = Small().Ask(kDrive);
    EXPECT_EQ(HeaderOf(response, "Content-Type"), "application/json; charset=utf-8");
    EXPECT_EQ(HeaderOf(response, "OData-Version"), "4.0");
    EXPECT_EQ(HeaderOf(response, "Cache-Control"), "no-cache");
    EXPECT_EQ(HeaderOf(response, "Allow"), "GET, HEAD");
    EXPECT_EQ(HeaderOf(response, "Link"),
              "<http://redfish.dmtf.org/schemas/v1/Drive.v1_22_0.json>; rel=describedby");
}

TEST(Answers, AreSharedNotCopied) {
    const Client client = Small();
    EXPECT_EQ(client.Ask(kDrive).body, client.Ask(kDrive + "/").body);
}

TEST(Answers, AreTheSameForThreadsThatAskAtOnce) {
    const Client client = ClientOf("large");
    std::vector<std::thread> threads;
    std::vector<std::string> texts(4);
    for (std::string& text : texts) {
        threads.emplace_back([&] { text = client.Ask(kSystem, {{"$expand", ".($levels=4)"}}).Text(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(texts, std::vector<std::string>(4, texts.front()));
}

TEST(Answers, ToHeadAreThoseToGet) {
    const Client client = Small();
    const http::Response head = client.Ask(kDrive, {}, "HEAD");
    EXPECT_EQ(head.status, 200);
    EXPECT_EQ(head.headers, client.Ask(kDrive).headers);
    EXPECT_EQ(head.body, client.Ask(kDrive).body) << "who sends it leaves it out";
}

TEST(Etags, SpareWhoKnowsTheAnswer) {
    const Client client = Small();
    const std::string etag = HeaderOf(client.Ask(kDrive), "ETag");
    const http::Response same = client.Ask(kDrive, {}, "GET", "", {{"If-None-Match", etag}});
    EXPECT_EQ(same.status, 304);
    EXPECT_EQ(same.Text(), "");
    EXPECT_EQ(client.Ask(kDrive, {{"$select", "Name"}}, "GET", "", {{"If-None-Match", etag}}).status, 200)
        << "another text";
    const Client other(BoardOfXml(DocumentWith(ControllerXml("0") + DriveXml("252", "0"))));
    EXPECT_EQ(other.Ask(kDrive, {}, "GET", "", {{"If-None-Match", etag}}).status, 200) << "another drive";
}

TEST(Refusals, AreInTheStandardsWords) {
    const Client client = Small();
    EXPECT_EQ(client.Refusal(404, "/redfish/v1/Systems/2"), "ResourceMissingAtURI");
    EXPECT_EQ(client.Refusal(404, "/redfish/v1//Systems"), "ResourceMissingAtURI");
    EXPECT_EQ(client.Refusal(404, "/redfish/v1/systems"), "ResourceMissingAtURI");
    EXPECT_EQ(client.Refusal(404, "/"), "ResourceMissingAtURI");
    EXPECT_EQ(client.Refusal(404, ""), "ResourceMissingAtURI");
    const http::Response response = client.Ask("/redfish/v1/\xFF\"\r\n<script>");
    EXPECT_EQ(Client::MessageIn(response, 404), "ResourceMissingAtURI");
    EXPECT_EQ(HeaderOf(response, "OData-Version"), "4.0");
    EXPECT_LT(client.Ask("/redfish/" + std::string(100000, 'x')).Text().size(), 2000U);
}

TEST(Refusals, OfMethodsSayWhichThereAre) {
    const Client client = Small();
    for (const char* const method : {"POST", "PUT", "PATCH", "DELETE", "OPTIONS", "get", ""}) {
        const http::Response response = client.Ask("/redfish/v1/Systems", {}, method, "{}");
        EXPECT_EQ(Client::MessageIn(response, 405), "OperationNotAllowed") << method;
        EXPECT_EQ(HeaderOf(response, "Allow"), "GET, HEAD") << method;
    }
    EXPECT_EQ(HeaderOf(client.Ask("/redfish/v1/SessionService/Sessions", {}, "PUT"), "Allow"),
              "GET, HEAD, POST");
    EXPECT_EQ(client.Ask("/redfish/v1/Systems/2", {}, "PUT").status, 404);
}

TEST(Refusals, OfVersionsThatAreNotHere) {
    const Client client = Small();
    const auto ask = [&](const std::string& version) {
        return client.Ask(kDrive, {}, "GET", "", {{"odata-version", version}});
    };
    EXPECT_EQ(ask("4.0").status, 200);
    EXPECT_EQ(Client::MessageIn(ask("4.01"), 412), "HeaderInvalid");
    EXPECT_EQ(Client::MessageIn(ask(""), 412), "HeaderInvalid");
}

TEST(OpenResources, AreThoseOfTheStandard) {
    const auto isOpen = [](const std::string& method, const std::string& path,
                           std::vector<http::Field> query = {}) {
        return IsOpen({.method = method, .path = path, .query = std::move(query)});
    };
    for (const char* const path : {"/redfish", "/redfish/", "/redfish/v1", "/redfish/v1/",
                                   "/redfish/v1/odata", "/redfish/v1/$metadata"}) {
        EXPECT_TRUE(isOpen("GET", path)) << path;
        EXPECT_TRUE(isOpen("HEAD", path)) << path;
        EXPECT_FALSE(isOpen("POST", path)) << path;
    }
    EXPECT_TRUE(isOpen("POST", "/redfish/v1/SessionService/Sessions"));
    EXPECT_TRUE(isOpen("POST", "/redfish/v1/SessionService/Sessions/Members"));
    EXPECT_FALSE(isOpen("GET", "/redfish/v1/SessionService/Sessions"));
    EXPECT_FALSE(isOpen("GET", "/redfish/v1/SessionService"));
    EXPECT_FALSE(isOpen("GET", "/redfish/v1/Systems"));
    EXPECT_FALSE(isOpen("GET", "/redfish/v1/EventService/SSE"));
    EXPECT_FALSE(isOpen("GET", ""));
    EXPECT_TRUE(isOpen("GET", "/redfish/v1/", {{"x", "y"}}));
    EXPECT_FALSE(isOpen("GET", "/redfish/v1/", {{"$expand", "*($levels=6)"}}))
        << "that would show all the rest";
}

TEST(Unavailable, SaysWhenToAskAgain) {
    const http::Response response = Unavailable(std::chrono::seconds(7));
    EXPECT_EQ(Client::MessageIn(response, 503), "ServiceTemporarilyUnavailable");
    EXPECT_EQ(HeaderOf(response, "Retry-After"), "7");
}

TEST(Unauthorized, SaysHowToProveWhoOneIs) {
    const http::Response response = Unauthorized({.method = "GET", .path = kDrive});
    EXPECT_EQ(Client::MessageIn(response, 401), "NoValidSession");
    EXPECT_EQ(HeaderOf(response, "WWW-Authenticate"), "Basic realm=\"Redfish\", charset=\"UTF-8\"");
}

}  // namespace
}  // namespace redfish::test
