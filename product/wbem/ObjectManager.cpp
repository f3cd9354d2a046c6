#include "wbem/ObjectManager.h"

#include "Operations.h"
#include "basics/Words.h"

#include "qel/portable/CWbemRepository.h"

namespace wbem {
namespace {

constexpr const char* kAllowed = "POST, OPTIONS";

/// What the server can do, as DSP0200 has clients ask for it.
http::Response Capabilities() {
    return {200,
            {{"Allow", kAllowed},
             {"Opt", "http://www.dmtf.org/cim/mapping/http/v1.0 ; ns=77"},
             {"77-CIMProtocolVersion", "1.0"},
             {"77-CIMSupportedFunctionalGroups", "basic-read"}}};
}

/// Of a method that is not POST; with the framework of extensions (M-POST) a client is to try without it.
http::Response Refused(const std::string& method) {
    if (method == "M-POST") {
        return Refusal(501, "", "use POST").Answer();
    }
    http::Response response = Refusal(405, "", "use POST").Answer();
    response.headers.emplace_back("Allow", kAllowed);
    return response;
}

std::string Hexadecimal(std::uint32_t status) {
    return "0x" + basics::Digits(status, 8, 16);
}

/// What kept the module from answering; nothing where it did.
std::optional<CimError> FailureOf(const MethodOutcome& outcome) {
    if (!outcome.failure.empty() || outcome.status != 0) {
        return CimError(CodeOf(outcome.status),
                        outcome.failure.empty() ? "the call failed with status " + Hexadecimal(outcome.status)
                                                : outcome.failure);
    }
    if (!outcome.returnValue) {
        return CimError(CimError::Failed, "the call gave no return value");
    }
    return std::nullopt;
}

}  // namespace

ObjectManager::ObjectManager() : ObjectManager(CWbemRepository::Process()) {}

ObjectManager::ObjectManager(IWbemObjectManager& repository)
    : m_Classes(std::make_unique<const Classes>(repository)) {}

ObjectManager::~ObjectManager() = default;

std::variant<http::Response, MethodCall> ObjectManager::Answer(const http::Request& request,
                                                               const board::Board& board) const {
    if (request.path != kPath) {
        return Refusal(404, "", std::string("there is nothing but ") + kPath).Answer();
    }
    if (request.method == "OPTIONS") {
        return Capabilities();
    }
    if (request.method != "POST") {
        return Refused(request.method);
    }
    try {
        const Call call = ReadCall(request);
        try {
            if (call.isIntrinsic) {
                return Reply(call, Perform(call, *m_Classes, board));
            }
            return ReadMethodCall(call, *m_Classes);
        } catch (const CimError& error) {
            return Reply(call, error);
        }
    } catch (const Refusal& refusal) {
        return refusal.Answer();
    }
}

http::Response ObjectManager::AnswerOf(const MethodCall& call, const MethodOutcome& outcome) const {
    const Class* const declaration = m_Classes->Find(call.className);
    const Method* const method = declaration != nullptr ? declaration->FindMethod(call.method) : nullptr;
    if (method == nullptr) {
        return Reply(call, CimError(CimError::MethodNotFound, "there is no such method"));
    }
    if (const std::optional<CimError> failure = FailureOf(outcome)) {
        return Reply(call, *failure);
    }
    return Reply(call, *method, *outcome.returnValue, outcome.document.value_or(""));
}

}  // namespace wbem
