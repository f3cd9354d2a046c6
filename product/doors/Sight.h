#pragma once

#include "board/Board.h"
#include "board/Link.h"
#include "board/Picture.h"

#include <memory>
#include <string>

namespace doors {

/// Makes boards of what the service tells. One thread; the boards are for any.
class Sight final {
  public:
    /// Whether there is another board now. Throws board::WireError, or inventory::DocumentError, for what no
    /// service tells.
    [[nodiscard]] bool Take(const board::Message& message);

    /// Null before the service has told anything.
    [[nodiscard]] const std::shared_ptr<const board::Board>& Now() const { return m_Board; }

  private:
    void TakeDrive(const board::DriveReport& drive);
    void TakeReport(board::Report report);

    board::Picture m_Picture;
    std::shared_ptr<const board::Board> m_Board;
};

}  // namespace doors
