#pragma once

#include "qel/QelTypes.h"

#include <memory>
#include <string>
#include <vector>

class CZORBALT_MngSrvRaid;

namespace fuzzing {

/// What the framework sees of one call.
struct CallResult {
    DWORD status = 0;  ///< returned, and told to the sink
    DWORD returnValue = 0;
    bool hasDocument = false;
    std::string document;
    std::vector<std::string> messages;  ///< reasons told to the administrator
    int indications = 0;
    int statuses = 0;

    friend bool operator==(const CallResult&, const CallResult&) = default;
};

/// Calls one method of one provider object, again and again, with the framework's own objects.
class FrameworkCaller final {
  public:
    explicit FrameworkCaller(std::string method);
    ~FrameworkCaller();
    FrameworkCaller(const FrameworkCaller&) = delete;
    FrameworkCaller& operator=(const FrameworkCaller&) = delete;

    /// The parameters are those of the method, in order, and may be fewer. With `hasKey` the caller carries
    /// the key of `InstallRoots`.
    [[nodiscard]] CallResult Call(const std::vector<std::string>& parameters, bool hasKey);

  private:
    std::string m_Method;
    std::unique_ptr<CZORBALT_MngSrvRaid> m_Provider;
};

}  // namespace fuzzing
