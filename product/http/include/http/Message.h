#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace http {

// What lies between a server of HTTP and whoever answers: plain values, whatever library reads the network.

/// A name and its value: a header, or a field of a query.
using Field = std::pair<std::string, std::string>;

/// The value of the first field of that name, whatever its case; null where there is none.
[[nodiscard]] const std::string* Find(const std::vector<Field>& fields, std::string_view name);

/// A request, whole, as the server took it apart. Nothing in it is to be trusted.
///
///     GET /redfish/v1/Systems/1?$select=Name,Status HTTP/1.1
struct Request {
    std::string method;          ///< "GET"
    std::string path;            ///< "/redfish/v1/Systems/1", percent-decoded once
    std::vector<Field> query{};  ///< ("$select", "Name,Status"), decoded; "" where there is no "="
    std::vector<Field> headers{};
    std::string body{};
    std::string account{};  ///< who asks, where that was proved; else empty
    std::string session{};  ///< the one by which it was proved, by its name; else empty

    [[nodiscard]] const std::string* Header(std::string_view name) const { return Find(headers, name); }
    [[nodiscard]] const std::string* Query(std::string_view name) const { return Find(query, name); }
};

/// What is answered. A body is shared, not copied: it may be that of many answers.
struct Response {
    int status = 200;
    std::vector<Field> headers{};  ///< without those of the connection, and without Content-Length
    std::shared_ptr<const std::string> body{};  ///< null: empty
    /// The connection stays open, and gets the events that happen from now on, as they are written by
    /// `EventSource` of whoever answers. The body comes first.
    bool isStream = false;

    [[nodiscard]] std::string_view Text() const {
        return body ? std::string_view(*body) : std::string_view();
    }
};

/// An answer with a text, "application/json" say.
[[nodiscard]] Response MakeResponse(int status, const std::string& contentType, std::string text);

/// A line of words for people.
[[nodiscard]] Response MakeWords(int status, const std::string& words);

/// 304 with the same ETag where the request's If-None-Match names the one of this answer, or is "*"; else the
/// answer with the header. Only for answers with status 200 to GET and HEAD.
[[nodiscard]] Response WithEtag(const Request& request, Response response, const std::string& etag);

/// A strong entity tag of this text: "\"5f1d3c0a9be27461\"".
[[nodiscard]] std::string EtagOf(std::string_view text);

}  // namespace http
