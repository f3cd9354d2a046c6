// A configuration of the service, as an administrator may have written it.

#include "Configuration.h"
#include "support/Input.h"
#include "support/Property.h"

#include <algorithm>

namespace {

using fuzzing::Require;

bool IsOneLine(const std::string& text) {
    return std::none_of(text.begin(), text.end(),
                        [](char character) { return static_cast<unsigned char>(character) < ' '; });
}

void CheckConfiguration(std::string_view text) {
    using std::chrono::hours;
    using std::chrono::seconds;
    try {
        const service::Configuration configuration = service::ReadConfiguration(text);
        Require(configuration.interval >= seconds(1) && configuration.interval <= hours(24),
                "the server is asked at least daily, and at most every second");
        Require(configuration.timeLimit >= seconds(1), "an inquiry has some time");
        Require(configuration.rules.failuresToTell > 0, "it takes a failure to tell of failures");
        Require(!configuration.history.empty(), "the history is somewhere");
        Require(configuration.expect || !configuration.limits.mediaErrorGrowth, "growth has a beginning");
    } catch (const service::ConfigurationError& error) {
        Require(!error.Problems().empty(), "what is wrong is said");
        for (const std::string& problem : error.Problems()) {
            Require(problem.starts_with("line "), "what is wrong has a line");
            Require(IsOneLine(problem), "what is wrong is said in one line");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckConfiguration(fuzzing::TextOf(data, size));
    return 0;
}
