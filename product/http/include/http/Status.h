#pragma once

namespace http {

// Statuses that are answered here, by their names in the standard.
inline constexpr int kOk = 200;
inline constexpr int kSeeOther = 303;
inline constexpr int kBadRequest = 400;
inline constexpr int kUnauthorized = 401;
inline constexpr int kForbidden = 403;
inline constexpr int kNotFound = 404;
inline constexpr int kMethodNotAllowed = 405;
inline constexpr int kContentTooLarge = 413;
inline constexpr int kTooManyRequests = 429;
inline constexpr int kServiceUnavailable = 503;

}  // namespace http
