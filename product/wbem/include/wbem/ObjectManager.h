#pragma once

#include "board/Board.h"
#include "http/Message.h"
#include "wbem/MethodCall.h"

#include <memory>
#include <variant>

class IWbemObjectManager;

namespace wbem {

class Classes;

/// Answers requests of CIM-XML over HTTP (DSP0200): POST of
///
///     <CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="4711" PROTOCOLVERSION="1.0"><SIMPLEREQ>
///     <IMETHODCALL NAME="EnumerateClassNames"><LOCALNAMESPACEPATH>...
///
/// to `kPath`. There is one namespace with two classes: ZORBALT_MngSrvRaid, whose declaration is read from
/// the framework's class repository when this is made, so that it is written down there alone; and
/// ZORBALT_MngSrvRaidHealth, whose one instance tells what the board knows. The repository is the small part
/// of the framework (libqel_ComLib); the module is not needed for it.
///
/// Never changed once it is made: any number of threads may ask it. Nothing is thrown but std::bad_alloc.
class ObjectManager final {
  public:
    static constexpr const char* kPath = "/cimom";
    static constexpr const char* kNamespace = "root/zorbalt";
    /// Requests of clients have about a thousand bytes. What is longer is refused unread.
    static constexpr std::size_t kLongestRequest = 65536;

    /// With the classes that the repository of this process has. Throws std::runtime_error where it does not
    /// have them.
    ObjectManager();
    explicit ObjectManager(IWbemObjectManager& repository);
    ~ObjectManager();

    /// What a request for `kPath` comes to: the answer, or a call to be made, whose outcome `AnswerOf` tells.
    [[nodiscard]] std::variant<http::Response, MethodCall> Answer(const http::Request& request,
                                                                  const board::Board& board) const;

    /// The answer to the request that the call came from.
    [[nodiscard]] http::Response AnswerOf(const MethodCall& call, const MethodOutcome& outcome) const;

  private:
    std::unique_ptr<const Classes> m_Classes;
};

}  // namespace wbem
