#pragma once

#include "http/Message.h"

#include <string>
#include <string_view>
#include <vector>

namespace redfish {

// Answers with an error, in the standard's words:
//
//     {"error": {"code": "Base.1.18.ResourceMissingAtURI", "message": "The resource at the URI '/x' was not
//     found.",
//      "@Message.ExtendedInfo": [{"MessageId": "Base.1.18.ResourceMissingAtURI", "MessageArgs": ["/x"],
//      ...}]}}

/// What the registry "Base" of the standard has for it.
enum class Complaint {
    ResourceMissing,  ///< path
    MethodNotAllowed,
    MalformedJson,
    BodyTooLarge,
    PropertyMissing,  ///< name
    PropertyType,     ///< value, name
    NoValidSession,
    WrongCredentials,  ///< path
    InsufficientPrivilege,
    TooManySessions,
    NotNow,         ///< seconds
    HeaderInvalid,  ///< name
    QueryUnsupported,
    QueryNotOnResource,
    QueryNotOnOperation,
    QueryCombination,
    QueryType,    ///< value, name
    QueryFormat,  ///< value, name
    QueryRange,   ///< value, name, range
    TooMuchToSend,
};

[[nodiscard]] http::Response Refuse(Complaint complaint, const std::vector<std::string>& words = {});

/// What every answer says beside what it is about.
void PutCommonHeaders(http::Response& response);

}  // namespace redfish
