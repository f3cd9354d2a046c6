#pragma once

#include <string>

namespace doors {

/// Gives the account of that name the password that is typed twice on the terminal, or is the first line of
/// standard input; makes the account, and the file, where they are not there. Other lines stay as they are.
/// The file is for its owner alone. Throws basics::Failure.
void SetPassword(const std::string& file, const std::string& name);

/// Makes a key and a certificate that it signs itself, for this machine's name and for localhost, and puts
/// them into the folder as tls.key and tls.crt; returns what to write into the configuration. Throws
/// basics::Failure, also where one of them is there already.
[[nodiscard]] std::string SetUpTls(const std::string& folder);

}  // namespace doors
