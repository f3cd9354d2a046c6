#pragma once

#include "Accounts.h"
#include "Backroom.h"
#include "Calls.h"
#include "Networks.h"
#include "Pages.h"
#include "Server.h"
#include "redfish/Service.h"
#include "wbem/ObjectManager.h"

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <string>

namespace doors {

/// Leads every request to who answers it, once it is settled who asks. One thread, which is that of the
/// server.
class Routes final {
  public:
    /// Gets what whoever looks after the service should know; a line each.
    using Log = std::function<void(const std::string&)>;

    struct Parts {
        Accounts& accounts;
        Backroom& passwords;   ///< where they are checked
        Backroom& expansions;  ///< where answers are made that take long
        Calls& calls;
    };

    Routes(const Parts& parts, Networks metricsFrom, std::chrono::seconds interval, Log log);

    /// From now on what is answered is of this board; streams get what has happened since the one before.
    void Show(std::shared_ptr<const board::Board> board);

    void Handle(const std::shared_ptr<Exchange>& exchange);

    /// Whether a stream is open, which wants a sign of life from time to time.
    [[nodiscard]] bool HasStreams() const { return !m_Streams.empty(); }
    /// Ends those whose session has ended, too.
    void KeepStreamsAlive();

  private:
    enum class StreamKind { Live, Redfish };
    struct Stream {
        std::shared_ptr<Exchange> exchange;
        StreamKind kind;
        std::string session;  ///< by which it was opened; empty for one that lasts as its connection does
    };

    void Identify(const std::shared_ptr<Exchange>& exchange);
    void CheckPassword(const std::shared_ptr<Exchange>& exchange, const std::string& name,
                       const std::string& password);
    void Refuse(Exchange& exchange);
    void CheckAccount(const std::shared_ptr<Exchange>& exchange, Backroom::Work work, Backroom::Work then);
    void Answer(const std::shared_ptr<Exchange>& exchange);
    void AnswerRedfish(const std::shared_ptr<Exchange>& exchange);
    void OpenSession(const std::shared_ptr<Exchange>& exchange);
    void Expand(const std::shared_ptr<Exchange>& exchange);
    void AnswerWbem(const std::shared_ptr<Exchange>& exchange);
    void AnswerPage(const std::shared_ptr<Exchange>& exchange);
    void AnswerHistory(const std::shared_ptr<Exchange>& exchange);
    void AnswerRefresh(const std::shared_ptr<Exchange>& exchange);
    void OpenStream(const std::shared_ptr<Exchange>& exchange, StreamKind kind, http::Response begin);
    void EndStreamsWithoutSession();
    void Note(const Exchange& exchange, const std::string& words);
    static void Send(Exchange& exchange, http::Response response);

    Parts m_Parts;
    Networks m_MetricsFrom;
    std::chrono::seconds m_Interval;
    Log m_Log;
    std::shared_ptr<Patience> m_Patience = std::make_shared<Patience>();
    wbem::ObjectManager m_Wbem;
    std::shared_ptr<const board::Board> m_Board;
    std::shared_ptr<redfish::Service> m_Redfish;
    std::unique_ptr<Pages> m_Pages;
    std::list<Stream> m_Streams;
};

}  // namespace doors
