#include "Routes.h"

#include "basics/Text.h"
#include "basics/Words.h"
#include "http/Status.h"

#include <gnutls/gnutls.h>

#include <algorithm>
#include <utility>

namespace doors {
namespace {

using http::MakeResponse;
using http::MakeWords;
using http::Request;

constexpr const char* kLive = "/live";
constexpr const char* kRefresh = "/refresh";
constexpr const char* kHistory = "/history";
constexpr const char* kHistoryJson = "/history.json";

bool IsBelow(const std::string& path, std::string_view prefix) {
    return path.compare(0, prefix.size(), prefix) == 0 &&
           (path.size() == prefix.size() || path[prefix.size()] == '/');
}

bool IsReading(const Request& request) {
    return request.method == "GET" || request.method == "HEAD";
}

bool IsNewSession(const Request& request) {
    return request.method == "POST" && redfish::IsOpen(request);
}

struct Credentials {
    std::string name, password;
};

/// Of "Basic bW9uaXRvcmluZzpzZWNyZXQ="; nothing for anything else.
std::optional<Credentials> CredentialsOf(const std::string& header) {
    constexpr std::string_view kScheme = "basic ";
    if (!basics::IsSameWord(header.substr(0, kScheme.size()), kScheme)) {
        return std::nullopt;
    }
    std::string encoded = header.substr(kScheme.size());
    const gnutls_datum_t text{reinterpret_cast<unsigned char*>(encoded.data()),
                              static_cast<unsigned>(encoded.size())};
    gnutls_datum_t decoded{};
    if (gnutls_base64_decode2(&text, &decoded) != 0) {
        return std::nullopt;
    }
    const std::string both(reinterpret_cast<const char*>(decoded.data), decoded.size);
    gnutls_free(decoded.data);
    const std::size_t colon = both.find(':');
    return colon == std::string::npos
               ? std::nullopt
               : std::optional(Credentials{both.substr(0, colon), both.substr(colon + 1)});
}

/// Whether a page of another server may have made a browser ask.
bool IsFromElsewhere(const Request& request) {
    const std::string* const site = request.Header("Sec-Fetch-Site");
    if (site != nullptr) {
        return *site != "same-origin" && *site != "none";
    }
    const std::string* const origin = request.Header("Origin");
    const std::string* const host = request.Header("Host");
    return origin != nullptr &&
           (host == nullptr || origin->substr(std::min(origin->find("//") + 2, origin->size())) != *host);
}

board::Call CallOf(const wbem::MethodCall& asked) {
    board::Call call;
    call.what = asked.method == "GetPDInfo" ? board::Call::What::GetPDInfo : board::Call::What::GetInfo;
    for (const wbem::MethodArgument& argument : asked.arguments) {
        std::optional<std::int64_t>* const number = argument.name == "CtrlNo"   ? &call.controller
                                                    : argument.name == "EnclNo" ? &call.enclosure
                                                    : argument.name == "PDNo"   ? &call.slot
                                                                                : nullptr;
        if (number != nullptr) {
            *number = wbem::NumberOf(argument);
        }
    }
    call.appKey = asked.appKey;
    return call;
}

}  // namespace

Routes::Routes(const Parts& parts, Networks metricsFrom, std::chrono::seconds interval, Log log)
    : m_Parts(parts), m_MetricsFrom(std::move(metricsFrom)), m_Interval(interval), m_Log(std::move(log)) {}

void Routes::Show(std::shared_ptr<const board::Board> board) {
    const std::int64_t last = m_Board && !m_Board->events.empty() ? m_Board->events.back().number : 0;
    const bool isFirst = m_Board == nullptr;
    m_Redfish = std::make_shared<redfish::Service>(board, m_Parts.accounts);
    m_Pages = std::make_unique<Pages>(board);
    m_Board = std::move(board);
    std::string events;
    for (const board::NumberedEvent& event : m_Board->events) {
        events += event.number > last && !isFirst ? m_Redfish->StreamText(event) : "";
    }
    const std::string live = "event: board\ndata: " + std::to_string(m_Board->number) + "\n\n";
    m_Streams.remove_if([&](const auto& each) {
        const std::string& text = each.second == Stream::Live ? live : events;
        return !text.empty() && !each.first->Stream(text);
    });
}

void Routes::KeepStreamsAlive() {
    m_Streams.remove_if([](const auto& each) { return !each.first->Stream(": still here\n\n"); });
}

void Routes::Send(Exchange& exchange, http::Response response) {
    Secure(response);
    exchange.Reply(std::move(response));
}

void Routes::Handle(const std::shared_ptr<Exchange>& exchange) {
    const Request& request = exchange->Request();
    if (request.path == "/healthz" && IsReading(request)) {
        Send(*exchange, HealthOf(m_Board.get(), m_Interval, std::chrono::system_clock::now()));
    } else if (request.path == "/live.js" && IsReading(request)) {
        Send(*exchange, LiveScript());
    } else {
        Identify(exchange);
    }
}

void Routes::Identify(const std::shared_ptr<Exchange>& exchange) {
    Request& request = exchange->Request();
    const bool isOfThisMachine = exchange->Who().address.empty();  // The socket's file says who may come.
    if (!m_Parts.accounts.AreNeeded() || isOfThisMachine) {
        Answer(exchange);
        return;
    }
    if (const std::string* const token = request.Header("X-Auth-Token")) {
        const std::optional<std::string> account = m_Parts.accounts.WhoIs(*token);
        request.account = account.value_or("");
        account ? Answer(exchange) : Refuse(*exchange);
    } else if (const std::string* const header = request.Header("Authorization")) {
        const std::optional<Credentials> credentials = CredentialsOf(*header);
        if (!credentials) {
            Refuse(*exchange);
        } else if (m_Parts.accounts.IsKnown(credentials->name, credentials->password)) {
            request.account = credentials->name;
            Answer(exchange);
        } else {
            CheckPassword(exchange, credentials->name, credentials->password);
        }
    } else if (redfish::IsOpen(request) ||
               (request.path == "/metrics" && m_MetricsFrom.Contain(exchange->Who().address))) {
        Answer(exchange);
    } else {
        Refuse(*exchange);
    }
}

/// Whoever has guessed too often is not even listened to.
bool Routes::MayGoOn(Exchange& exchange) {
    const std::chrono::seconds wait = m_Patience.WaitOf(exchange.Who().address, Patience::Clock::now());
    if (wait.count() == 0) {
        return true;
    }
    http::Response response =
        MakeWords(http::kTooManyRequests,
                  "Too many attempts have failed; try again in " + std::to_string(wait.count()) + " s.");
    response.headers.emplace_back("Retry-After", std::to_string(wait.count()));
    Send(exchange, std::move(response));
    return false;
}

void Routes::CheckPassword(const std::shared_ptr<Exchange>& exchange, const std::string& name,
                           const std::string& password) {
    if (!MayGoOn(*exchange)) {
        return;
    }
    const auto isRight = std::make_shared<bool>(false);
    const bool isTaken = m_Parts.backroom.Do(
        [this, isRight, name, password] { *isRight = m_Parts.accounts.Check(name, password); },
        [this, isRight, exchange, name] {
            if (*isRight) {
                m_Patience.Succeeded(exchange->Who().address);
                exchange->Request().account = name;
                Answer(exchange);
            } else {
                m_Patience.Failed(exchange->Who().address, Patience::Clock::now());
                Note(*exchange, "wrong password or no such account: " + name);
                Refuse(*exchange);
            }
        });
    if (!isTaken) {
        Send(*exchange, MakeWords(http::kServiceUnavailable, "Too many passwords are being checked."));
    }
}

void Routes::Note(const Exchange& exchange, const std::string& words) {
    const std::string& address = exchange.Who().address;
    m_Log((address.empty() ? "Unix socket" : address) + ": " + basics::OneLine(words));
}

void Routes::Refuse(Exchange& exchange) {
    const Request& request = exchange.Request();
    http::Response response = IsBelow(request.path, redfish::kPrefix)
                                  ? redfish::Unauthorized(request)
                                  : MakeWords(http::kUnauthorized, "An account is needed.");
    if (http::Find(response.headers, "WWW-Authenticate") == nullptr) {
        response.headers.emplace_back("WWW-Authenticate", "Basic realm=\"RAID\", charset=\"UTF-8\"");
    }
    Send(exchange, std::move(response));
}

void Routes::Answer(const std::shared_ptr<Exchange>& exchange) {
    const Request& request = exchange->Request();
    if (IsBelow(request.path, redfish::kPrefix)) {
        AnswerRedfish(exchange);
    } else if (request.path == wbem::ObjectManager::kPath) {
        AnswerWbem(exchange);
    } else if (request.path == kRefresh) {
        AnswerRefresh(exchange);
    } else if (request.path == kHistory || request.path == kHistoryJson) {
        AnswerHistory(exchange);
    } else {
        AnswerPage(exchange);
    }
}

void Routes::AnswerRedfish(const std::shared_ptr<Exchange>& exchange) {
    if (!m_Redfish) {
        Send(*exchange, MakeWords(http::kServiceUnavailable, "The service begins."));
        return;
    }
    if (!IsNewSession(exchange->Request())) {
        http::Response response = m_Redfish->Answer(exchange->Request());
        if (response.isStream && exchange->Request().method != "HEAD") {
            m_Streams.emplace_back(exchange, Stream::Redfish);
        }
        Send(*exchange, std::move(response));
        return;
    }
    if (!MayGoOn(*exchange)) {
        return;
    }
    // Its password takes time.
    const auto response = std::make_shared<http::Response>();
    const bool isTaken = m_Parts.backroom.Do(
        [service = m_Redfish, response, exchange] { *response = service->Answer(exchange->Request()); },
        [this, response, exchange] {
            if (response->status == http::kUnauthorized) {
                m_Patience.Failed(exchange->Who().address, Patience::Clock::now());
                Note(*exchange, "no session: wrong password or no such account");
            } else if (response->status < http::kSeeOther) {
                m_Patience.Succeeded(exchange->Who().address);
                Note(*exchange, "a session begins");
            }
            Send(*exchange, std::move(*response));
        });
    if (!isTaken) {
        Send(*exchange, MakeWords(http::kServiceUnavailable, "Too many passwords are being checked."));
    }
}

void Routes::AnswerWbem(const std::shared_ptr<Exchange>& exchange) {
    static const board::Board kNothing;
    std::variant<http::Response, wbem::MethodCall> answer =
        m_Wbem.Answer(exchange->Request(), m_Board ? *m_Board : kNothing);
    if (auto* const response = std::get_if<http::Response>(&answer)) {
        Send(*exchange, std::move(*response));
        return;
    }
    wbem::MethodCall& call = std::get<wbem::MethodCall>(answer);
    Note(*exchange, "calls " + call.method);
    const board::Call wanted = CallOf(call);
    m_Parts.calls.Make(wanted, [this, exchange, call = std::move(call)](const board::Outcome& outcome) {
        Send(*exchange, m_Wbem.AnswerOf(call, {.status = outcome.status,
                                               .failure = outcome.failure,
                                               .returnValue = outcome.returnValue,
                                               .document = outcome.document}));
    });
}

void Routes::AnswerPage(const std::shared_ptr<Exchange>& exchange) {
    const Request& request = exchange->Request();
    const bool isLive = request.path == kLive;
    const http::Response* const found = m_Pages ? m_Pages->Find(request.path) : nullptr;
    if (found == nullptr && !isLive) {
        Send(*exchange, MakeWords(http::kNotFound, "There is nothing of that name here."));
    } else if (!IsReading(request)) {
        http::Response response = MakeWords(http::kMethodNotAllowed, "This can only be read.");
        response.headers.emplace_back("Allow", "GET, HEAD");
        Send(*exchange, std::move(response));
    } else if (isLive && request.method == "GET") {
        http::Response response = MakeResponse(http::kOk, "text/event-stream", "retry: 2000\n\n");
        response.isStream = true;
        m_Streams.emplace_back(exchange, Stream::Live);
        Send(*exchange, std::move(response));
    } else if (isLive) {
        Send(*exchange, MakeResponse(http::kOk, "text/event-stream", ""));
    } else {
        Send(*exchange, found->status == http::kOk
                            ? http::WithEtag(request, *found, http::EtagOf(found->Text()))
                            : *found);
    }
}

// What is remembered is read by the service, in a process of its own.
void Routes::AnswerHistory(const std::shared_ptr<Exchange>& exchange) {
    const Request& request = exchange->Request();
    if (!IsReading(request)) {
        http::Response response = MakeWords(http::kMethodNotAllowed, "This can only be read.");
        response.headers.emplace_back("Allow", "GET, HEAD");
        Send(*exchange, std::move(response));
        return;
    }
    const bool isJson = request.path == kHistoryJson;
    board::Call call{.what = isJson ? board::Call::What::HistoryJson : board::Call::What::HistoryPage};
    if (const std::string* const part = request.Query("part")) {
        call.part = part->substr(0, board::kMostKey);
    }
    m_Parts.calls.Make(call, [exchange, isJson](const board::Outcome& outcome) {
        if (!outcome.failure.empty()) {
            Send(*exchange, MakeWords(http::kServiceUnavailable, outcome.failure));
        } else if (!outcome.document) {
            Send(*exchange,
                 MakeWords(http::kNotFound, "There is no part with that key; /history has them all."));
        } else {
            Send(*exchange, isJson ? MakeResponse(http::kOk, "application/json", *outcome.document)
                                   : PageOf(*outcome.document));
        }
    });
}

// The answer comes when the server has been asked.
void Routes::AnswerRefresh(const std::shared_ptr<Exchange>& exchange) {
    if (exchange->Request().method != "POST") {
        http::Response response = MakeWords(http::kMethodNotAllowed, "A refresh is a POST.");
        response.headers.emplace_back("Allow", "POST");
        Send(*exchange, std::move(response));
        return;
    }
    if (IsFromElsewhere(exchange->Request())) {
        Send(*exchange, MakeWords(http::kForbidden, "A page of another server may not ask for that."));
        return;
    }
    m_Parts.calls.Make({.what = board::Call::What::Refresh}, [exchange](const board::Outcome& outcome) {
        if (!outcome.failure.empty()) {
            Send(*exchange, MakeWords(http::kServiceUnavailable, outcome.failure));
            return;
        }
        http::Response response = MakeWords(http::kSeeOther, "The server has been asked.");
        response.headers.emplace_back("Location", "/");
        Send(*exchange, std::move(response));
    });
}

}  // namespace doors
