#include "redfish/Service.h"

#include "Expansion.h"
#include "Options.h"
#include "Refusals.h"
#include "Sessions.h"
#include "Tree.h"
#include "basics/Words.h"

#include <limits>

namespace redfish {
namespace {

/// A "/" at the end of a path means nothing.
std::string Canonical(const std::string& path) {
    return path.size() > 1 && path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
}

/// Whoever makes a member may name the collection, or its "Members".
std::string CanonicalOf(const http::Request& request) {
    constexpr std::string_view kMembers = "/Members";
    std::string path = Canonical(request.path);
    if (request.method == "POST" && path.ends_with(kMembers)) {
        path.resize(path.size() - kMembers.size());
    }
    return path;
}

bool IsReading(const http::Request& request) {
    return request.method == "GET" || request.method == "HEAD";
}

const char* MethodsOf(Kind kind) {
    if (kind == Kind::SessionCollection) {
        return "GET, HEAD, POST";
    }
    return kind == Kind::Session ? "GET, HEAD, DELETE" : "GET, HEAD";
}

http::Response NotAllowed(const char* methods) {
    http::Response response = Refuse(Complaint::MethodNotAllowed);
    response.headers.emplace_back("Allow", methods);
    return response;
}

http::Response Shown(const http::Request& request, Kind kind, std::shared_ptr<const std::string> text,
                     const std::string& etag) {
    http::Response response{.body = std::move(text)};
    const bool isXml = kind == Kind::Metadata;
    response.headers.reserve(8);
    response.headers.emplace_back(
        "Content-Type", isXml ? "application/xml; charset=utf-8" : "application/json; charset=utf-8");
    PutCommonHeaders(response);
    response.headers.emplace_back("Allow", MethodsOf(kind));
    if (std::string uri = SchemaUriOf(kind); !uri.empty()) {
        response.headers.emplace_back("Link", "<" + uri + ">; rel=describedby");
    }
    return http::WithEtag(request, std::move(response), etag);
}

http::Response Shown(const http::Request& request, Kind kind, const Value& value) {
    auto text = std::make_shared<const std::string>(TextOf(value));
    const std::string etag = http::EtagOf(*text);
    return Shown(request, kind, std::move(text), etag);
}

/// What a resource is made to be by a request's options, or why not.
http::Response Arranged(const http::Request& request, Kind kind, Value value, const Options& options,
                        const Finder& find) {
    if (options.isOnly && value["Members"].size() == 1) {
        const std::string path = value["Members"][0]["@odata.id"];
        if (std::optional<Found> member = find(path)) {
            value = std::move(member->value);
            kind = MemberOf(kind);
        }
    }
    if (IsCollection(kind)) {
        Cut(value, options);
    }
    if (options.expansion && !Expand(value, *options.expansion, find)) {
        return Refuse(Complaint::TooMuchToSend);
    }
    if (options.expansion &&
        IsCollection(kind)) {  // Of the members, then, which are what the client is after.
        value["Members"] = Selected(std::move(value["Members"]), options.selection);
    } else {
        value = Selected(std::move(value), options.selection);
    }
    return Shown(request, kind, value);
}

}  // namespace

Service::Service(std::shared_ptr<const board::Board> board, Accounts& accounts)
    : m_Tree(std::make_unique<const Tree>(std::move(board))), m_Accounts(accounts) {}

Service::~Service() = default;

std::string Service::StreamText(const board::NumberedEvent& event) const {
    return "id: " + std::to_string(event.number) + "\ndata: " + TextOf(MakeEvent(m_Tree->TheWorld(), event)) +
           "\n\n";
}

http::Response Service::Answer(const http::Request& request) const {
    const std::string* const version = request.Header("OData-Version");
    if (version != nullptr && *version != "4.0") {
        return Refuse(Complaint::HeaderInvalid, {"OData-Version"});
    }
    const std::string path = CanonicalOf(request);
    if (path == kStreamPath) {
        return AnswerStream(request);
    }
    if (IsSessions(path) || IsSession(path)) {
        return AnswerSessions(request, path);
    }
    const Tree::Node* const node = m_Tree->Find(path);
    if (node == nullptr) {
        return Refuse(Complaint::ResourceMissing, {request.path});
    }
    if (!IsReading(request)) {
        return NotAllowed(MethodsOf(node->TheKind()));
    }
    auto options = ReadOptions(request, node->TheKind());
    if (auto* const refused = std::get_if<http::Response>(&options)) {
        return std::move(*refused);
    }
    const Options& wanted = *std::get_if<Options>(&options);
    if (wanted.IsPlain()) {
        const Tree::Written& written = node->WrittenIn(m_Tree->TheWorld());
        return Shown(request, node->TheKind(), written.text, written.etag);
    }
    return Arranged(request, node->TheKind(), node->ValueIn(m_Tree->TheWorld()), wanted,
                    [&](const std::string& link) { return Find(request, link); });
}

std::optional<Found> Service::Find(const http::Request& request, const std::string& link) const {
    const std::string path = Canonical(link);
    if (const Tree::Node* const node = m_Tree->Find(path)) {
        return Found{node->ValueIn(m_Tree->TheWorld()), node->WrittenIn(m_Tree->TheWorld()).text->size()};
    }
    if (!IsSessions(path) && !IsSession(path)) {
        return std::nullopt;
    }
    std::optional<Value> value = SessionResource(m_Accounts, request.account, path);
    if (!value) {
        return std::nullopt;
    }
    const std::size_t size = TextOf(*value).size();
    return Found{*std::move(value), size};
}

http::Response Service::AnswerSessions(const http::Request& request, const std::string& path) const {
    const Kind kind = IsSessions(path) ? Kind::SessionCollection : Kind::Session;
    const bool isWriting = request.method == (kind == Kind::Session ? "DELETE" : "POST");
    if (isWriting && HasOptions(request)) {
        return Refuse(Complaint::QueryNotOnOperation);
    }
    if (isWriting) {
        return kind == Kind::Session ? EndSession(request, path, m_Accounts)
                                     : OpenSession(request, m_Accounts);
    }
    std::optional<Value> value = SessionResource(m_Accounts, request.account, path);
    if (!value) {
        return Refuse(Complaint::ResourceMissing, {request.path});
    }
    if (!IsReading(request)) {
        return NotAllowed(MethodsOf(kind));
    }
    auto options = ReadOptions(request, kind);
    if (auto* const refused = std::get_if<http::Response>(&options)) {
        return std::move(*refused);
    }
    return Arranged(request, kind, *std::move(value), *std::get_if<Options>(&options),
                    [&](const std::string& link) { return Find(request, link); });
}

// Who was connected before gets what happened meanwhile first.
http::Response Service::AnswerStream(const http::Request& request) const {
    if (request.method != "GET") {
        return NotAllowed("GET");
    }
    if (HasOptions(request)) {  // A stream has filters of its own in the standard, none of them here.
        return Refuse(Complaint::QueryUnsupported);
    }
    const std::string* const last = request.Header("Last-Event-ID");
    const auto seen = last == nullptr ? std::nullopt : basics::NumberFrom<std::int64_t>(*last);
    std::string text = ": the events of the watch\n\n";
    for (const board::NumberedEvent& event : m_Tree->TheWorld().board->events) {
        text +=
            event.number > seen.value_or(std::numeric_limits<std::int64_t>::max()) ? StreamText(event) : "";
    }
    http::Response response = http::MakeResponse(200, "text/event-stream", std::move(text));
    PutCommonHeaders(response);
    response.isStream = true;
    return response;
}

bool IsOpen(const http::Request& request) {
    const std::string path = CanonicalOf(request);
    if (request.method == "POST") {
        return IsSessions(path);
    }
    const bool isFixed = path == kPrefix || path == kRootPath || path == "/redfish/v1/odata" ||
                         path == "/redfish/v1/$metadata";
    return isFixed && IsReading(request) && !HasOptions(request);
}

bool TakesLong(const http::Request& request) {
    return request.Query("$expand") != nullptr;
}

http::Response Unauthorized(const http::Request& /*request*/) {
    http::Response response = Refuse(Complaint::NoValidSession);
    response.headers.emplace_back("WWW-Authenticate", "Basic realm=\"Redfish\", charset=\"UTF-8\"");
    return response;
}

http::Response Unavailable(std::chrono::seconds wait) {
    const std::string seconds = std::to_string(wait.count());
    http::Response response = Refuse(Complaint::NotNow, {seconds});
    response.headers.emplace_back("Retry-After", seconds);
    return response;
}

}  // namespace redfish
