#pragma once

#include "inventory/Snapshot.h"
#include "test_support/Command.h"

#include <string>
#include <vector>

namespace views::test {

/// The scenarios whose documents the views are tried on.
inline constexpr const char* kScenarios[] = {"awkward", "empty", "huge", "large", "old", "small"};

/// The XML that the command gives for a shipped scenario; with three more words, that of one drive.
[[nodiscard]] std::string DocumentOf(const std::string& scenario, const std::vector<std::string>& drive = {});

/// What that document says, taken at 2031-04-05 06:07:08 UTC.
[[nodiscard]] inventory::Snapshot SnapshotOf(const std::string& scenario,
                                             const std::vector<std::string>& drive = {});

/// What a document says with those answers, taken at the same time.
[[nodiscard]] inventory::Snapshot SnapshotWith(inventory::Document document,
                                               std::vector<inventory::DriveAnswer> answers);

/// With the SMART data of every drive that can be asked for them.
[[nodiscard]] inventory::Snapshot SnapshotWithSmart(const std::string& scenario);

/// A snapshot of a document written by hand: `items` stand inside the document element.
[[nodiscard]] inventory::Snapshot SnapshotFrom(const std::string& items);

// Items, with their texts escaped.

/// `<Item Name="..." Value="..." Valid="TRUE"/>`
[[nodiscard]] std::string ItemXml(const std::string& name, const std::string& value);
/// An item with others in it.
[[nodiscard]] std::string ParentXml(const std::string& name, const std::vector<std::string>& items);

/// The root of a drive in slot `slot` of enclosure 252 that is well, with more keys, "Media Error Count" say,
/// or others in place of those.
[[nodiscard]] std::string DriveXml(const std::string& slot, const std::vector<std::string>& keys = {},
                                   const std::vector<std::string>& sections = {});

/// The root of controller 0.
[[nodiscard]] std::string ControllerXml(const std::vector<std::string>& keys = {});

/// One whose report is there to its end.
[[nodiscard]] std::string WellControllerXml(const std::string& number);

/// Runs a Python script of this folder.
[[nodiscard]] testsupport::Ended RunScript(const std::string& script, std::vector<std::string> arguments);

/// Runs a Python script of this folder; "" where it finds nothing to complain about, else its complaint.
[[nodiscard]] std::string Ask(const std::string& script, const std::vector<std::string>& arguments);

}  // namespace views::test
