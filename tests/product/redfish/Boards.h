#pragma once

#include "board/Board.h"

#include <memory>
#include <string>

namespace redfish::test {

/// A board of a server that told this document, named "storage7", with an alarm for each finding, and an
/// event for each alarm.
[[nodiscard]] std::shared_ptr<board::Board> BoardOfXml(const std::string& xml);

/// Before the first answer.
[[nodiscard]] std::shared_ptr<board::Board> EmptyBoard();

}  // namespace redfish::test
