#pragma once

#include "Boards.h"
#include "KnownAccounts.h"
#include "redfish/Service.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

namespace redfish::test {

using Json = nlohmann::ordered_json;

inline constexpr const char* kSystem = "/redfish/v1/Systems/1";
inline const std::string kStorage = "/redfish/v1/Systems/1/Storage/0";

/// A service with accounts of its own, and who asks it.
class Client final {
  public:
    explicit Client(std::shared_ptr<const board::Board> board) : service(std::move(board), accounts) {}

    [[nodiscard]] http::Response Ask(const std::string& path, const std::vector<http::Field>& query = {},
                                     const std::string& method = "GET", const std::string& body = "",
                                     const std::vector<http::Field>& headers = {}) const {
        return service.Answer({method, path, query, headers, body, account});
    }

    /// What is there; null where nothing is.
    [[nodiscard]] Json Get(const std::string& path, const std::vector<http::Field>& query = {}) const {
        const http::Response response = Ask(path, query);
        EXPECT_EQ(response.status, 200) << path << ": " << response.Text();
        return response.status == 200 ? Json::parse(response.Text()) : Json();
    }

    /// The key of the standard's message in a refusal with that status: "ResourceMissingAtURI"; "" of
    /// anything else.
    [[nodiscard]] static std::string MessageIn(const http::Response& response, int status) {
        EXPECT_EQ(response.status, status) << response.Text();
        const Json body = Json::parse(response.Text(), nullptr, false);
        if (response.status != status || !body.is_object()) {
            return "";
        }
        const Json& info = body["error"]["@Message.ExtendedInfo"];
        EXPECT_EQ(info.size(), 1U);
        EXPECT_EQ(info[0]["MessageId"], body["error"]["code"]);
        EXPECT_EQ(info[0]["Message"], body["error"]["message"]);
        const std::string id = info[0]["MessageId"];
        EXPECT_TRUE(id.starts_with("Base.1.18.")) << id;
        return id.substr(id.rfind('.') + 1);
    }

    /// That of a GET.
    [[nodiscard]] std::string Refusal(int status, const std::string& path,
                                      const std::vector<http::Field>& query = {}) const {
        return MessageIn(Ask(path, query), status);
    }

    KnownAccounts accounts;
    Service service;
    std::string account{};
};

/// The paths of a collection's members, or of links.
[[nodiscard]] inline std::vector<std::string> PathsIn(const Json& links) {
    std::vector<std::string> paths;
    for (const Json& link : links) {
        paths.push_back(link["@odata.id"]);
    }
    return paths;
}

[[nodiscard]] inline std::string HeaderOf(const http::Response& response, const std::string& name) {
    const std::string* const value = http::Find(response.headers, name);
    return value == nullptr ? "" : *value;
}

}  // namespace redfish::test
