#pragma once

#include "Client.h"
#include "test_support/Command.h"

namespace redfish::test {

/// The XML that the command gives for a shipped scenario.
[[nodiscard]] inline std::string DocumentOf(const std::string& scenario) {
    return testsupport::RunCommand({"--scenario", scenario, "get-info"}).out;
}

[[nodiscard]] inline Client ClientOf(const std::string& scenario) {
    return Client(BoardOfXml(DocumentOf(scenario)));
}

}  // namespace redfish::test
