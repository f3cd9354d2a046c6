#include "Sessions.h"

#include "Places.h"
#include "Refusals.h"
#include "basics/Time.h"
#include "redfish/Service.h"

#include <algorithm>

namespace redfish {
namespace {

constexpr std::size_t kMostBytesOfBody = 16U << 10U;

std::string SessionPathOf(const Session& session) {
    return kSessionsPath + ("/" + session.id);
}

Value SessionValue(const Session& session) {
    Value value = Resource(Kind::Session, SessionPathOf(session), session.id, "Session " + session.id);
    value["UserName"] = session.account;
    value["CreatedTime"] = basics::UtcText(session.since);
    value["SessionType"] = "Redfish";
    return value;
}

/// Who needs no account sees all.
std::vector<Session> SeenBy(const std::string& account, const Accounts& accounts) {
    std::vector<Session> sessions = accounts.List();
    if (!account.empty()) {
        std::erase_if(sessions, [&](const Session& each) { return each.account != account; });
    }
    return sessions;
}

std::optional<Session> FindSession(const std::string& account, const std::string& path,
                                   const Accounts& accounts) {
    const std::vector<Session> sessions = SeenBy(account, accounts);
    const auto found = std::find_if(sessions.begin(), sessions.end(),
                                    [&](const Session& each) { return SessionPathOf(each) == path; });
    return found == sessions.end() ? std::nullopt : std::optional(*found);
}

http::Response AnswerTo(const SessionRefusal& refusal, const http::Request& request) {
    using Why = SessionRefusal::Why;
    if (refusal.why == Why::TooMany) {
        return Refuse(Complaint::TooManySessions);
    }
    if (refusal.why == Why::NotNow) {
        return Unavailable(refusal.wait);
    }
    return Refuse(Complaint::WrongCredentials, {request.path, "Wrong user name or password"});
}

std::variant<std::string, http::Response> TextIn(const Value& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end()) {
        return Refuse(Complaint::PropertyMissing, {key});
    }
    if (!found->is_string()) {  // A password is not sent back, whatever it is.
        return Refuse(Complaint::PropertyType, {found->type_name(), key});
    }
    return found->get<std::string>();
}

}  // namespace

std::optional<Value> SessionResource(const Accounts& accounts, const std::string& account,
                                     const std::string& path) {
    if (!IsSessions(path)) {
        const std::optional<Session> session = FindSession(account, path, accounts);
        return session ? std::optional(SessionValue(*session)) : std::nullopt;
    }
    std::vector<std::string> paths;
    for (const Session& session : SeenBy(account, accounts)) {
        paths.push_back(SessionPathOf(session));
    }
    return Collection(Kind::SessionCollection, kSessionsPath, "Sessions", paths);
}

bool IsSessions(std::string_view path) {
    return path == kSessionsPath;
}

bool IsSession(std::string_view path) {
    const std::string_view folder = kSessionsPath;
    return path.size() > folder.size() + 1 && path.starts_with(folder) && path[folder.size()] == '/';
}

http::Response OpenSession(const http::Request& request, Accounts& accounts) {
    if (request.body.size() > kMostBytesOfBody) {
        return Refuse(Complaint::BodyTooLarge);
    }
    const Value body = Value::parse(request.body, nullptr, false);
    if (!body.is_object()) {
        return Refuse(Complaint::MalformedJson);
    }
    std::variant<std::string, http::Response> account = TextIn(body, "UserName");
    std::variant<std::string, http::Response> password = TextIn(body, "Password");
    for (auto* const text : {&account, &password}) {
        if (auto* const refused = std::get_if<http::Response>(text)) {
            return std::move(*refused);
        }
    }
    const auto made =
        accounts.Create(*std::get_if<std::string>(&account), *std::get_if<std::string>(&password));
    if (const auto* const refusal = std::get_if<SessionRefusal>(&made)) {
        return AnswerTo(*refusal, request);
    }
    const NewSession& session = *std::get_if<NewSession>(&made);
    http::Response response =
        http::MakeResponse(201, "application/json; charset=utf-8", TextOf(SessionValue(session.session)));
    response.headers.emplace_back("OData-Version", "4.0");
    response.headers.emplace_back("Cache-Control", "no-store");
    response.headers.emplace_back("Location", SessionPathOf(session.session));
    response.headers.emplace_back("X-Auth-Token", session.token);
    return response;
}

http::Response EndSession(const http::Request& request, const std::string& path, Accounts& accounts) {
    const std::optional<Session> session = FindSession(request.account, path, accounts);
    if (!session || !accounts.End(session->id)) {
        return Refuse(Complaint::ResourceMissing, {request.path});
    }
    http::Response response{.status = 204};
    PutCommonHeaders(response);
    return response;
}

}  // namespace redfish
