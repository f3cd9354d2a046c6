#include "Routes.h"

#include "Callers.h"
#include "basics/Text.h"
#include "http/Status.h"

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

constexpr std::size_t kMostStreams = 500;

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

/// What is found out about a password.
struct Proof {
    bool isRight = false;
    std::chrono::seconds wait{0};  ///< it was not looked at: the client is to wait
};

/// Not now, in the words of the door that was asked.
http::Response NotNow(const Request& request, const std::string& words,
                      std::chrono::seconds wait = std::chrono::seconds(1)) {
    if (IsBelow(request.path, redfish::kPrefix)) {
        return redfish::Unavailable(wait);
    }
    http::Response response = MakeWords(http::kServiceUnavailable, words);
    response.headers.emplace_back("Retry-After", std::to_string(wait.count()));
    return response;
}

http::Response TooEarly(const Request& request, std::chrono::seconds wait) {
    http::Response response = NotNow(
        request, "Too many attempts have failed; try again in " + std::to_string(wait.count()) + " s.", wait);
    response.status = http::kTooManyRequests;
    return response;
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
    EndStreamsWithoutSession();
    m_Streams.remove_if([&](const Stream& each) {
        const std::string& text = each.kind == StreamKind::Live ? live : events;
        return !text.empty() && !each.exchange->Stream(text);
    });
}

void Routes::KeepStreamsAlive() {
    EndStreamsWithoutSession();
    m_Streams.remove_if([](const Stream& each) { return !each.exchange->Stream(": still here\n\n"); });
}

void Routes::EndStreamsWithoutSession() {
    m_Streams.remove_if([this](const Stream& each) {
        const bool isOver = !each.session.empty() && !m_Parts.accounts.Has(each.session);
        if (isOver) {
            each.exchange->EndStream();
        }
        return isOver;
    });
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
        if (isOfThisMachine || IsForThisMachine(request)) {
            Answer(exchange);
        } else {
            Send(*exchange, MakeWords(http::kForbidden, "This is asked as localhost or by its address."));
        }
        return;
    }
    if (const std::string* const token = request.Header("X-Auth-Token")) {
        if (std::optional<redfish::Session> session = m_Parts.accounts.WhoIs(*token)) {
            request.account = std::move(session->account);
            request.session = std::move(session->id);
            Answer(exchange);
        } else {
            Refuse(*exchange);
        }
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

/// Whoever has guessed too often is not even listened to. `work` looks at that once more, since of many who
/// come at once all but the first few have to wait.
void Routes::CheckAccount(const std::shared_ptr<Exchange>& exchange, Backroom::Work work,
                          Backroom::Work then) {
    const std::chrono::seconds wait = m_Patience->WaitOf(exchange->Who().address, Patience::Clock::now());
    if (wait.count() > 0) {
        Send(*exchange, TooEarly(exchange->Request(), wait));
    } else if (!m_Parts.passwords.Do(std::move(work), std::move(then))) {
        Send(*exchange, NotNow(exchange->Request(), "Too many passwords are being checked."));
    }
}

void Routes::CheckPassword(const std::shared_ptr<Exchange>& exchange, const std::string& name,
                           const std::string& password) {
    const auto proof = std::make_shared<Proof>();
    CheckAccount(
        exchange,
        [&accounts = m_Parts.accounts, patience = m_Patience, proof, address = exchange->Who().address, name,
         password] {
            proof->wait = patience->WaitOf(address, Patience::Clock::now());
            if (proof->wait.count() > 0) {
                return;
            }
            proof->isRight = accounts.IsKnown(name, password) || accounts.Check(name, password);
            proof->isRight ? patience->Succeeded(address) : patience->Failed(address, Patience::Clock::now());
        },
        [this, proof, exchange, name] {
            if (proof->wait.count() > 0) {
                Send(*exchange, TooEarly(exchange->Request(), proof->wait));
            } else if (proof->isRight) {
                exchange->Request().account = name;
                Answer(exchange);
            } else {
                constexpr std::size_t kMostOfAName = 64;
                Note(*exchange, "wrong password or no such account: " + name.substr(0, kMostOfAName));
                Refuse(*exchange);
            }
        });
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
        Send(*exchange, NotNow(exchange->Request(), "The service begins."));
        return;
    }
    if (IsNewSession(exchange->Request())) {
        OpenSession(exchange);
        return;
    }
    if (redfish::TakesLong(exchange->Request())) {
        Expand(exchange);
        return;
    }
    http::Response response = m_Redfish->Answer(exchange->Request());
    if (response.isStream && exchange->Request().method != "HEAD") {
        OpenStream(exchange, StreamKind::Redfish, std::move(response));
    } else {
        Send(*exchange, std::move(response));
    }
    if (exchange->Request().method == "DELETE") {
        EndStreamsWithoutSession();
    }
}

void Routes::Expand(const std::shared_ptr<Exchange>& exchange) {
    const auto response = std::make_shared<http::Response>();
    const bool isTaken = m_Parts.expansions.Do(
        [service = m_Redfish, response, exchange] { *response = service->Answer(exchange->Request()); },
        [response, exchange] { Send(*exchange, std::move(*response)); });
    if (!isTaken) {
        Send(*exchange, NotNow(exchange->Request(), "Too many want long answers."));
    }
}

// Its password takes time.
void Routes::OpenSession(const std::shared_ptr<Exchange>& exchange) {
    const auto response = std::make_shared<http::Response>();
    CheckAccount(
        exchange,
        [service = m_Redfish, patience = m_Patience, response, exchange] {
            const std::string& address = exchange->Who().address;
            if (const auto wait = patience->WaitOf(address, Patience::Clock::now()); wait.count() > 0) {
                *response = TooEarly(exchange->Request(), wait);
                return;
            }
            *response = service->Answer(exchange->Request());
            if (response->status == http::kUnauthorized) {
                patience->Failed(address, Patience::Clock::now());
            } else if (response->status < http::kSeeOther) {
                patience->Succeeded(address);
            }
        },
        [this, response, exchange] {
            if (response->status == http::kUnauthorized) {
                Note(*exchange, "no session: wrong password or no such account");
            } else if (response->status < http::kSeeOther) {
                Note(*exchange, "a session begins");
                EndStreamsWithoutSession();  // Another may have made way for it.
            }
            Send(*exchange, std::move(*response));
        });
}

// A stream that nobody reads any more is noticed when something is to be sent along it.
void Routes::OpenStream(const std::shared_ptr<Exchange>& exchange, StreamKind kind, http::Response begin) {
    if (m_Streams.size() >= kMostStreams) {
        Send(*exchange, NotNow(exchange->Request(), "Too many follow the server already."));
        return;
    }
    exchange->Request().body = {};
    m_Streams.push_back({exchange, kind, exchange->Request().session});
    Send(*exchange, std::move(begin));
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
    call.arguments = {};  // They may be large, and many may wait.
    exchange->Request().body = {};
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
        OpenStream(exchange, StreamKind::Live, std::move(response));
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
    exchange->Request().body = {};
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
