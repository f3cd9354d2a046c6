#pragma once

#include "calls/Drives.h"

#include "qel/CZORBALT_ServerService.h"

#include <optional>
#include <string>

namespace calls {

/// One method call as the framework makes it: GetPDInfo where there is a drive, else GetInfo.
struct MethodRequest {
    std::optional<DrivePlace> drive = {};  ///< any texts; the module reads them as numbers
    std::optional<std::string> appKey = {};
    bool leavesOutEmpty = false;  ///< of the drive, as a client does that does not give a parameter
};

/// How it ended. A document is there only when everything else says success.
struct MethodOutcome {
    DWORD status = WBEM_S_NO_ERROR;  ///< a failed call has no return value
    std::string exception;  ///< text of an exception that left the provider; then `status` is a failure
    std::optional<DWORD> returnValue;  ///< nothing: the provider gave no output instance
    std::optional<std::string> document;
};

/// Throws basics::Failure(Surroundings) when the framework does not know the class or the method's
/// parameters.
[[nodiscard]] MethodOutcome CallMethod(CZORBALT_ServerService& provider, const MethodRequest& request);

}  // namespace calls
