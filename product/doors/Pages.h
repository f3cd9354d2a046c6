#pragma once

#include "board/Board.h"
#include "http/Message.h"

#include <map>
#include <memory>
#include <string>

namespace doors {

/// What people and programs get who want the server as a whole, each written when it is first asked for:
///
///     /            the page, which follows the server
///     /metrics     series for Prometheus
///     /raid.json   as mngsrvraid show --format json
///     /raid.xml    as mngsrvraid get-info
///
/// One for each board. One thread.
class Pages final {
  public:
    explicit Pages(std::shared_ptr<const board::Board> board) : m_Board(std::move(board)) {}

    /// Null: there is nothing of that path here. Before the first answer they are 503.
    [[nodiscard]] const http::Response* Find(const std::string& path);

  private:
    [[nodiscard]] http::Response Make(const std::string& path) const;

    std::shared_ptr<const board::Board> m_Board;
    std::map<std::string, http::Response> m_Made;
};

/// The script of the page.
[[nodiscard]] const http::Response& LiveScript();

/// 200 where the last inquiry was answered and is no older than three intervals; else 503, in words.
[[nodiscard]] http::Response HealthOf(const board::Board* board, std::chrono::seconds interval,
                                      board::TimePoint now);

/// A page, with what it may use.
[[nodiscard]] http::Response PageOf(std::string page);

/// What browsers are to keep from doing, whatever a drive calls itself.
void Secure(http::Response& response);

}  // namespace doors
