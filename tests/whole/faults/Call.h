#pragma once

#include "qel/CZORBALT_ServerService.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace faults {

/// How a call ended: by the reason code of a failure, or in another way that may be.
enum class Outcome {
    Success,
    Escaped,    ///< std::bad_alloc reached the caller, who was told nothing else
    Exception,  ///< status 0x80041001 and return value 0x80000002
    NotLoaded,  ///< the module could not be loaded
    Died,       ///< the process ended
    Tool01,
    Tool03,
    File04,
    Library05,
    Report06,
    Conversion02,
    NoReason,  ///< failed, and not even memory to tell the reason
    Odd,       ///< nothing of the kind
};
inline constexpr std::size_t kOutcomes = 13;

[[nodiscard]] const char* NameOf(Outcome outcome);

/// What the caller of a method sees.
struct Observed {
    Outcome outcome = Outcome::Odd;
    std::string odd;  ///< why it is odd
    std::string document;
};

/// A caller of one method, as the framework is, in a window of its own.
class Caller final {
  public:
    using Parameters = std::vector<std::pair<const char*, const char*>>;

    explicit Caller(const char* method, const Parameters& parameters);

    /// Calls it once. The provider is told nothing that allocates in the caller's name.
    [[nodiscard]] Observed Call(CZORBALT_ServerService& provider);

    /// What the caller does itself at the end of every call while the window is open, and to what it has
    /// seen.
    struct Mischief {
        std::function<void(IWbemObjectSink&)> duringCall = [](IWbemObjectSink&) {};
        std::function<void(Observed&)> afterCall = [](Observed&) {};
    };
    void SetMischief(Mischief mischief) { m_Mischief = std::move(mischief); }

  private:
    const char* m_Method;
    IWbemClassObject* m_Input = nullptr;  // lives as long as the process
    Mischief m_Mischief;
};

/// The application key of the sweep's install root, which every caller carries.
inline constexpr const char* kAppKey = "open sesame, once and for all";

}  // namespace faults
