#pragma once

#include "board/Board.h"
#include "http/Message.h"
#include "redfish/Accounts.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace redfish {

/// Where everything here is; with "/" or nothing behind it.
inline constexpr std::string_view kPrefix = "/redfish";

struct Found;

/// What a client of Redfish (DSP0266, with the schemas of DSP0268) gets to see of one board, read only but
/// for sessions:
///
///     GET /redfish/v1/Systems/1/Storage/0/Drives/252-4 HTTP/1.1
///
///     {"@odata.type": "#Drive.v1_22_0.Drive", "Id": "252-4", "Status": {"State": "Enabled", "Health": "OK"},
///     ...
///
/// To be made anew for each board, which is cheap: a resource is written when it is asked for the first time,
/// and kept. Any number of threads may ask. Opens nothing, waits for nothing but for who writes the same
/// resource, and throws nothing but std::bad_alloc. docs/redfish.md has the tree, the tables and the rules.
class Service final {
  public:
    /// `accounts` has to live as long as the service.
    Service(std::shared_ptr<const board::Board> board, Accounts& accounts);
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    ~Service();

    /// Answers whatever is below the prefix, and 404 elsewhere. Who may ask has been settled before: see
    /// `IsOpen`. A request without an account is taken for one of somebody who needs none, and may see and
    /// end all sessions; others theirs. With `isStream`, the connection is to get `StreamText` of every later
    /// event.
    [[nodiscard]] http::Response Answer(const http::Request& request) const;

    /// A server-sent event with its number, for streams:
    ///
    ///     id: 12
    ///     data: {"@odata.type": "#Event.v1_13_0.Event", "Id": "12", "Events": [...]}
    ///
    [[nodiscard]] std::string StreamText(const board::NumberedEvent& event) const;

  private:
    class Tree;

    [[nodiscard]] std::optional<Found> Find(const http::Request& request, const std::string& link) const;
    [[nodiscard]] http::Response AnswerSessions(const http::Request& request, const std::string& path) const;
    [[nodiscard]] http::Response AnswerStream(const http::Request& request) const;

    std::unique_ptr<const Tree> m_Tree;
    Accounts& m_Accounts;
};

/// Whether the standard lets everybody ask this: versions, service root, odata, $metadata, and for a new
/// session. A service root that is to show what lies below it, by $expand, is not for everybody.
[[nodiscard]] bool IsOpen(const http::Request& request);

/// Whether an answer may take as long as some hundred milliseconds, and some megabytes that no other answer
/// shares: what is expanded.
[[nodiscard]] bool TakesLong(const http::Request& request);

/// For a request that is not open, from somebody who has not proved who he is.
[[nodiscard]] http::Response Unauthorized(const http::Request& request);

/// For what cannot be had just now: 503, and when to ask again.
[[nodiscard]] http::Response Unavailable(std::chrono::seconds wait);

}  // namespace redfish
