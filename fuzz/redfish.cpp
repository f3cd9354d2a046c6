// A RAID document, or none where the first section is empty, and up to 16 requests of a client, a section
// each. A request has five fields: method, path, query ("a=b&c"), headers ("Name: value" a line), body; one
// that is missing is empty, the method then GET. A section that begins with "!" is an event about a drive
// whose serial number is the rest.

#include "redfish/Service.h"

#include "support/Input.h"
#include "support/Property.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

using fuzzing::Require;
using Json = nlohmann::json;

constexpr std::size_t kMostSections = 17;  // More of them find nothing that fewer do not.

/// Who knows the password "p" has one session, which does not end.
class OneSession final : public redfish::Accounts {
  public:
    [[nodiscard]] std::variant<redfish::NewSession, redfish::SessionRefusal> Create(
        const std::string& account, const std::string& password) override {
        if (password == "p") {
            return redfish::NewSession{{"s1", account, {}}, "token"};
        }
        return redfish::SessionRefusal{static_cast<redfish::SessionRefusal::Why>(password.size() % 3)};
    }
    [[nodiscard]] bool End(const std::string& id) override { return id == "s1"; }
    [[nodiscard]] std::vector<redfish::Session> List() const override { return {{"s1", "a", {}}}; }
};

std::string FieldAt(const fuzzing::Sections& fields, std::size_t place) {
    return place < fields.size() ? std::string(fields[place]) : "";
}

std::vector<http::Field> Fields(const std::string& text, char between, std::string_view middle) {
    std::vector<http::Field> fields;
    for (const std::string_view each : fuzzing::Split(text, between)) {
        const std::size_t end = std::min(each.find(middle), each.size());
        const std::size_t value = std::min(end + middle.size(), each.size());
        if (!each.empty()) {
            fields.emplace_back(each.substr(0, end), each.substr(value));
        }
    }
    return fields;
}

http::Request RequestFrom(std::string_view section) {
    const fuzzing::Sections fields = fuzzing::Split(section, fuzzing::kFieldEnd);
    http::Request request{.method = FieldAt(fields, 0), .path = FieldAt(fields, 1)};
    request.method = request.method.empty() ? "GET" : request.method;
    request.query = Fields(FieldAt(fields, 2), '&', "=");
    request.headers = Fields(FieldAt(fields, 3), '\n', ": ");
    request.body = FieldAt(fields, 4);
    return request;
}

void CheckHeaders(const http::Response& response) {
    for (const auto& [name, value] : response.headers) {
        const std::string text = name + value;
        Require(std::all_of(text.begin(), text.end(), [](char each) { return each >= ' ' && each <= '~'; }),
                "a header is printable ASCII on one line");
    }
    const std::string* const version = http::Find(response.headers, "OData-Version");
    Require(version != nullptr && *version == "4.0", "every answer has the version of OData");
    Require(response.status != 405 || http::Find(response.headers, "Allow") != nullptr,
            "405 says what is allowed");
}

/// Most answers are refusals of a few kinds. Reading each once is what makes this target fast; the digests of
/// all that has been read are kept while they are few.
bool WasLookedAt(const http::Response& response) {
    constexpr std::size_t kMostKept = 1U << 16U;
    static std::unordered_set<std::size_t> looked;
    if (looked.size() >= kMostKept) {
        looked.clear();
    }
    const std::string* const type = http::Find(response.headers, "Content-Type");
    const std::string kind = std::to_string(response.status) + (type == nullptr ? "" : *type);
    const std::size_t text = std::hash<std::string_view>()(response.Text());
    return !looked.insert(text ^ (std::hash<std::string>()(kind) << 1U)).second;
}

void CheckBody(const http::Response& response) {
    constexpr std::size_t kMost = 20U << 20U;
    Require(response.Text().size() < kMost, "an answer has a bound");
    if (WasLookedAt(response)) {
        return;
    }
    if (response.Text().empty()) {
        Require(response.status == 204 || response.status == 304, "other answers have a body");
        return;
    }
    const std::string* const type = http::Find(response.headers, "Content-Type");
    Require(type != nullptr, "a body has a type");
    if (!type->starts_with("application/json")) {
        Require(response.status == 200, "errors are JSON");
        return;
    }
    const Json body = Json::parse(response.Text(), nullptr, false);
    Require(body.is_object(), "a body is a JSON object");
    const bool isError = response.status >= 400;
    Require(isError == body.contains("error"), "errors alone are errors");
    if (isError) {
        Require(body["error"]["@Message.ExtendedInfo"][0]["MessageId"].get<std::string>().starts_with(
                    "Base.1.18."),
                "an error has a message of the standard");
    }
}

void CheckAnswer(const redfish::Service& service, const http::Request& request, bool isAskedAgain) {
    static const std::set<int> known = {200, 201, 204, 304, 400, 401, 404, 405, 412, 413, 501, 503, 507};
    const http::Response response = service.Answer(request);
    Require(known.contains(response.status), "a status is a known one");
    CheckHeaders(response);
    CheckBody(response);
    (void)redfish::IsOpen(request);
    if (isAskedAgain) {  // By now it has been written.
        const http::Response again = service.Answer(request);
        Require(again.status == response.status && again.Text() == response.Text(), "the same again");
        Require(redfish::Unauthorized(request).status == 401, "who is nobody is told so");
    }
}

void CollectLinks(const Json& value, std::vector<std::string>& links) {
    if (value.is_object() && value.contains("@odata.id")) {
        const std::string link = value["@odata.id"];
        links.push_back(link.substr(0, link.find('#')));
    }
    if (value.is_structured()) {
        for (const Json& each : value) {
            CollectLinks(each, links);
        }
    }
}

/// Whatever the document is, every resource names itself, and every link leads to one.
void WalkTree(const redfish::Service& service) {
    std::set<std::string> seen;
    std::vector<std::string> links = {"/redfish/v1/"};
    while (!links.empty()) {
        const std::string path = links.back();
        links.pop_back();
        if (!seen.insert(path).second) {
            continue;
        }
        const http::Response response = service.Answer({.method = "GET", .path = path});
        Require(response.status == 200, "a link leads to a resource");
        CheckHeaders(response);
        const Json body = Json::parse(response.Text());
        Require(body["@odata.id"] == path, "a resource is what was asked for");
        Require(!body.contains("Members") || body["Members"].size() == body["Members@odata.count"],
                "members are counted");
        CollectLinks(body, links);
    }
}

std::shared_ptr<board::Board> BoardFrom(std::string_view xml) {
    auto board = std::make_shared<board::Board>();
    if (xml.empty()) {
        return board;
    }
    try {
        board->snapshot = std::make_shared<inventory::Snapshot>(inventory::Document::Read(xml));
    } catch (const inventory::DocumentError&) {
        return nullptr;
    }
    board->host = xml.substr(0, 10);
    for (const inventory::Finding& finding : board->snapshot->TheHealth().findings) {
        board->alarms.push_back({{}, finding});
    }
    return board;
}

board::NumberedEvent EventFrom(std::string_view serial, std::size_t number) {
    watch::Event event;
    event.id = event.words = event.about.serial = event.about.slot = serial;
    event.kind = static_cast<watch::EventKind>(serial.size() % 12);
    event.about.kind = inventory::PartKind::Drive;
    event.about.controller = "0";
    return {static_cast<std::int64_t>(number), event};
}

void CheckService(std::string_view input) {
    fuzzing::Sections sections = fuzzing::Split(input, fuzzing::kSectionEnd);
    const std::shared_ptr<board::Board> board = BoardFrom(sections.front());
    if (board == nullptr) {
        return;
    }
    sections.resize(std::min(sections.size(), kMostSections));
    for (std::size_t each = 1; each < sections.size(); ++each) {
        if (sections[each].starts_with('!')) {
            board->events.push_back(EventFrom(sections[each].substr(1), each));
        }
    }
    OneSession accounts;
    const redfish::Service service(board, accounts);
    const bool isRunTwice = fuzzing::IsRunTwice(input);
    if (isRunTwice) {  // It takes most of the time.
        WalkTree(service);
    }
    for (const board::NumberedEvent& event : board->events) {
        const std::string text = service.StreamText(event);
        Require(std::count(text.begin(), text.end(), '\n') == 3 && text.find('\r') == std::string::npos,
                "an event in the stream is one event");
    }
    for (std::size_t each = 1; each < sections.size(); ++each) {
        if (!sections[each].starts_with('!')) {
            CheckAnswer(service, RequestFrom(sections[each]), isRunTwice);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckService(fuzzing::TextOf(data, size));
    return 0;
}
