#pragma once

#include <cstdint>

/// Result of the module's operations: 0 is success, everything else a failure. Not every failure has its high
/// bit set, so it is always compared with 0. Never widened with its sign.
using ResultCode = std::uint32_t;

namespace msraid {

inline constexpr ResultCode kSuccess = 0;
inline constexpr ResultCode kGeneralFailure = 0x80000001;  ///< bad input, unreadable file, library not loaded
inline constexpr ResultCode kDispatchException = 0x80000002;  ///< an exception reached the dispatch
inline constexpr ResultCode kNoAuthority = 0x00000011;        ///< the caller may not operate the server
inline constexpr ResultCode kToolNotInstalled = 0x000000A0;   ///< there is no RAID tool
inline constexpr ResultCode kToolOrXmlFailed = 0x000000A1;  ///< a tool run or the conversion into XML failed

}  // namespace msraid
