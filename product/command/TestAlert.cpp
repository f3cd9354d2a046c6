#include "TestAlert.h"

#include "basics/Failure.h"
#include "basics/OwnFolder.h"
#include "basics/Text.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

namespace command {
namespace {

constexpr const char* kService = "mngsrvraidd";

/// In the command's own folder, or in bin/ beside it.
std::filesystem::path FindService() {
    const std::filesystem::path& own = basics::OwnFolder();
    for (const std::filesystem::path& folder : {own, own.parent_path() / "bin"}) {
        std::error_code error;
        if (std::filesystem::is_regular_file(folder / kService, error)) {
            return folder / kService;
        }
    }
    basics::FailSurroundings("there is no mngsrvraidd in " + own.string() +
                             ", whose channels are to be tested; install the service beside the command");
}

}  // namespace

void RunTestAlert(const Options& options) {
    const std::string service = FindService().string();
    std::vector<std::string> words = {kService, "--test-alert"};
    if (options.config) {
        words.insert(words.end(), {"--config", *options.config});
    }
    if (options.scenario) {
        words.insert(words.end(), {"--scenario", *options.scenario});
    }
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    ::execv(service.c_str(), arguments.data());
    basics::FailSurroundings(service + " cannot be run: " + basics::ErrorText(errno));
}

}  // namespace command
