#pragma once

#include "inventory/Document.h"

#include <string>
#include <vector>

namespace inventory {

/// What is different between two documents, as one line each:
///
///     changed   controller 0, PD4 in enclosure 252 slot 4: General Information / PD Status: NO ERROR ->
///     REBUILD vanished  controller 0, PD5 in enclosure 252 slot 5
struct Change {
    enum class Kind { Appeared, Vanished, Changed };

    Kind kind = Kind::Changed;
    std::string place;   ///< "controller 0, RG1"; "document" for what belongs to none
    std::string key;     ///< "General Information / PD Status"; empty: the whole place
    std::string before;  ///< empty for what appeared; a value may be empty as well
    std::string after;
};

/// Every difference, in the order of the documents. Controllers and groups are the same when their numbers
/// are, drives when their enclosure and slot are (their numbers, where no slot is told); within them, items
/// of the same names. Any key counts, known or not.
[[nodiscard]] std::vector<Change> ChangesBetween(const Document& before, const Document& after);

/// Whether it is another value of what always moves, so that it says nothing by itself: a temperature, a
/// voltage, a charge, hours of operation.
[[nodiscard]] bool IsOnlyMovement(const Change& change);

}  // namespace inventory
