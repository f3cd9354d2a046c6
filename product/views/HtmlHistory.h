#pragma once

#include "Element.h"
#include "HtmlParts.h"
#include "history/History.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace views::html {

/// What is remembered of the drives of a server, by the drives that its page shows. Leads into both, which
/// must live as long; of a page without a history it knows nothing.
class DriveLinesOfPage final {
  public:
    DriveLinesOfPage(const inventory::Snapshot& snapshot, const history::ServerHistory* history);

    /// Whether any drive of the controller has a past.
    [[nodiscard]] bool HasAny(const inventory::Controller& controller) const;

    /// "Temperature in 30 days", "Errors in 30 days".
    [[nodiscard]] std::vector<std::string> Titles() const;

    /// A cell for each title, with a small line in it.
    void AddCells(const inventory::Drive& drive, Element row) const;

  private:
    const history::ServerHistory* m_History;
    std::unordered_map<const inventory::Drive*, const history::DriveLines*> m_Lines;
};

/// What happened, the latest first; each leads to its part where that is on the page.
void AddEvents(const history::ServerHistory& history, const Places& places, Element page);

}  // namespace views::html
