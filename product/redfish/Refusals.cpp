#include "Refusals.h"

#include "Types.h"

#include <algorithm>
#include <utility>

namespace redfish {
namespace {

constexpr std::string_view kRegistryPrefix = "Base.1.18.";

/// %1, %2, ... stand for what is complained about.
struct Wording {
    Complaint complaint;
    int status;
    std::string_view key;
    std::string_view message;
    std::string_view severity;
    std::string_view resolution;
};

constexpr Wording kWordings[] = {
    {Complaint::ResourceMissing, 404, "ResourceMissingAtURI", "The resource at the URI '%1' was not found.",
     "Critical", "Place a valid resource at the URI or correct the URI and resubmit the request."},
    {Complaint::MethodNotAllowed, 405, "OperationNotAllowed",
     "The HTTP method is not allowed on this resource.", "Critical", "None."},
    {Complaint::MalformedJson, 400, "MalformedJSON",
     "The request body submitted was malformed JSON and could not be parsed by the receiving service.",
     "Critical", "Ensure that the request body is valid JSON and resubmit the request."},
    {Complaint::BodyTooLarge, 413, "GeneralError",
     "A general error has occurred.  See Resolution for information on how to resolve the error.", "Critical",
     "Send a smaller request body."},
    {Complaint::PropertyMissing, 400, "PropertyMissing",
     "The property '%1' is a required property and must be included in the request.", "Warning",
     "Ensure that the property is in the request body and has a valid value and resubmit the request if the "
     "operation failed."},
    {Complaint::PropertyType, 400, "PropertyValueTypeError",
     "The value '%1' for the property '%2' is not a type that the property can accept.", "Warning",
     "Correct the value for the property in the request body and resubmit the request if the operation "
     "failed."},
    {Complaint::NoValidSession, 401, "NoValidSession",
     "There is no valid session established with the implementation.", "Critical",
     "Establish a session before attempting any operations."},
    {Complaint::WrongCredentials, 401, "ResourceAtUriUnauthorized",
     "While accessing the resource at '%1', the service received an authorization error '%2'.", "Critical",
     "Ensure that the appropriate access is provided for the service in order for it to access the URI."},
    {Complaint::InsufficientPrivilege, 403, "InsufficientPrivilege",
     "There are insufficient privileges for the account or credentials associated with the current session "
     "to "
     "perform the requested operation.",
     "Critical",
     "Either abandon the operation or change the associated access rights and resubmit the request if the "
     "operation failed."},
    {Complaint::TooManySessions, 503, "SessionLimitExceeded",
     "The session establishment failed due to the number of simultaneous sessions exceeding the limit of the "
     "implementation.",
     "Critical",
     "Reduce the number of other sessions before trying to establish the session or increase the limit of "
     "simultaneous sessions, if supported."},
    {Complaint::NotNow, 503, "ServiceTemporarilyUnavailable",
     "The service is temporarily unavailable.  Retry in %1 seconds.", "Critical",
     "Wait for the indicated retry duration and retry the operation."},
    {Complaint::HeaderInvalid, 412, "HeaderInvalid", "Header '%1' is invalid.", "Warning",
     "Resubmit the request with a valid request header."},
    {Complaint::QueryUnsupported, 501, "QueryNotSupported",
     "Querying is not supported by the implementation.", "Warning",
     "Remove the query parameters and resubmit the request if the operation failed."},
    {Complaint::QueryNotOnResource, 400, "QueryNotSupportedOnResource",
     "Querying is not supported on the requested resource.", "Warning",
     "Remove the query parameters and resubmit the request if the operation failed."},
    {Complaint::QueryNotOnOperation, 400, "QueryNotSupportedOnOperation",
     "Querying is not supported with the requested operation.", "Warning",
     "Remove the query parameters and resubmit the request if the operation failed."},
    {Complaint::QueryCombination, 400, "QueryCombinationInvalid",
     "Two or more query parameters in the request cannot be used together.", "Warning",
     "Remove one or more of the query parameters and resubmit the request if the operation failed."},
    {Complaint::QueryType, 400, "QueryParameterValueTypeError",
     "The value '%1' for the query parameter '%2' is not a type that the parameter can accept.", "Warning",
     "Correct the value for the query parameter in the request and resubmit the request if the operation "
     "failed."},
    {Complaint::QueryFormat, 400, "QueryParameterValueFormatError",
     "The value '%1' for the parameter '%2' is not a format that the parameter can accept.", "Warning",
     "Correct the value for the query parameter in the request and resubmit the request if the operation "
     "failed."},
    {Complaint::QueryRange, 400, "QueryParameterOutOfRange",
     "The value '%1' for the query parameter '%2' is out of range '%3'.", "Warning",
     "Reduce the value for the query parameter to a value that is within range, such as a start or count "
     "value "
     "that is within bounds of the number of resources in a collection or a page that is within the range of "
     "valid pages."},
    {Complaint::TooMuchToSend, 507, "InsufficientStorage",
     "Insufficient storage or memory available to complete the request.", "Critical",
     "Wait until storage or memory resources become available and retry the operation."},
};

const Wording& WordingOf(Complaint complaint) {
    return *std::find_if(std::begin(kWordings), std::end(kWordings),
                         [complaint](const Wording& each) { return each.complaint == complaint; });
}

std::string Filled(std::string_view message, const std::vector<std::string>& words) {
    std::string filled;
    for (std::size_t place = 0; place < message.size(); ++place) {
        const bool isMark = message[place] == '%' && place + 1 < message.size();
        const std::size_t word = isMark ? static_cast<std::size_t>(message[place + 1] - '1') : words.size();
        if (word < words.size()) {
            filled += words[word];
            ++place;
        } else {
            filled += message[place];
        }
    }
    return filled;
}

}  // namespace

void PutCommonHeaders(http::Response& response) {
    response.headers.emplace_back("OData-Version", "4.0");
    response.headers.emplace_back("Cache-Control", "no-cache");
}

http::Response Refuse(Complaint complaint, const std::vector<std::string>& words) {
    constexpr std::size_t kLongestWord = 256;
    const Wording& wording = WordingOf(complaint);
    std::vector<std::string> told;
    told.reserve(words.size());
    for (const std::string& word : words) {  // What a client sent is not sent back at any length.
        told.push_back(word.substr(0, kLongestWord));
    }
    const std::string id = std::string(kRegistryPrefix) + std::string(wording.key);
    const std::string message = Filled(wording.message, told);
    Value info = Value::object();
    info["@odata.type"] = NameOf(Kind::Message);
    info["MessageId"] = id;
    info["Message"] = message;
    info["MessageArgs"] = told;
    info["MessageSeverity"] = wording.severity;
    info["Resolution"] = wording.resolution;
    Value body = Value::object();
    Value& error = body["error"];
    error["code"] = id;
    error["message"] = message;
    error["@Message.ExtendedInfo"].push_back(std::move(info));
    http::Response response =
        http::MakeResponse(wording.status, "application/json; charset=utf-8", TextOf(body));
    PutCommonHeaders(response);
    return response;
}

}  // namespace redfish
