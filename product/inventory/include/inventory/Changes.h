#pragma once

#include "inventory/Document.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace inventory {

/// What a change is about: a controller, a group, a drive, or a root of the document that is none of them.
/// Texts that were not told are empty.
struct ChangedPart {
    std::string place = {};     ///< "controller 0, the drive in enclosure 252 slot 4"; "document, Notice"
    std::string identity = {};  ///< of a drive: "TF600S15, serial number 7K00025200C4"
    std::string controller = {}, group = {}, part = {}, enclosure = {}, slot = {};
    std::string model = {}, serial = {};  ///< of a drive
};

/// One difference between two documents, a line each:
///
///     moved     controller 0, the drive in enclosure 252 slot 4 (TF600S15, serial number 7K04025204C4)
///               -> controller 0, enclosure 252 slot 7
///     changed   controller 0, the drive in enclosure 252 slot 7: General Information / PD Status(Detail):
///               "ONLINE" -> "REBUILD"
///     vanished  controller 0, the drive in enclosure 252 slot 5 (TF600S15, serial number 7K05025205C4)
struct Change {
    enum class Kind {
        Appeared,
        Vanished,
        Changed,
        Moved,    ///< the same drive in another place
        Replaced  ///< another drive in the same place
    };

    Kind kind = Kind::Changed;
    std::shared_ptr<const ChangedPart> part;  ///< as it is afterwards; what vanished, as it was
    std::shared_ptr<const ChangedPart> from;  ///< of Moved and Replaced: as it was; else null
    std::string key = {};                     ///< "General Information / PD Status"; empty: the whole part
    /// Nothing where it was not there, or only a placeholder; a value may be empty.
    std::optional<std::string> before = {}, after = {};
};

/// All of them, in the order in which they are counted for people.
inline constexpr Change::Kind kChangeKinds[] = {Change::Kind::Replaced, Change::Kind::Moved,
                                                Change::Kind::Appeared, Change::Kind::Vanished,
                                                Change::Kind::Changed};

/// "replaced", "moved", "appeared", "vanished", "changed".
[[nodiscard]] std::string_view NameOf(Change::Kind kind);

/// What is different between two documents.
struct Changes {
    /// In the order of the documents: what vanished stands where it was, what moved too.
    std::vector<Change> list;
    // How many were left out because they say nothing by themselves:
    std::size_t movements = 0;    ///< other values of what always moves, temperatures say
    std::size_t redactions = 0;   ///< values that are redacted, so that nobody can compare them
    std::size_t repetitions = 0;  ///< what another change has said: the slot of a drive that has moved
};

/// Compares two documents. Controllers and groups are the same when their numbers are. A drive is the same
/// when its serial number is, wherever it stands. Drives whose serial number is not told, redacted, or there
/// more than once on either side, and those that are on one side only, are compared by their places: their
/// controller, enclosure and slot, or their number where no slot is told. Two serial numbers in one place are
/// a drive and its replacement. Within all of them, items of the same names are the same, known or not; the
/// members of a group are the same when the drives are.
///
/// With `hasAll`, nothing is left out.
[[nodiscard]] Changes ChangesBetween(const Document& before, const Document& after, bool hasAll = false);

/// How many changes are of that kind.
[[nodiscard]] std::size_t CountOf(const Changes& changes, Change::Kind kind);

}  // namespace inventory
