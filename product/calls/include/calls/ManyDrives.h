#pragma once

#include "calls/Inquiry.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace calls {

/// Hears what came of a drive: its number in the list, and what returns its document or throws the Failure.
using DriveTaker = std::function<void(std::size_t number, const std::function<std::string()>& answer)>;

/// Asks for many drives, `jobs` of them at a time, each by an inquiry in a process of its own; the next one
/// goes to whoever is through. `take` is called on this thread for every drive whose place is known, in
/// whatever order they come. A process that is lost is a failure of the drive that it was asked for, and
/// another takes its place. Of what came there are only those documents here that have not been taken yet,
/// one for a job.
///
/// The request's progress is told of every command and of the drives that are done. The processes end with
/// this one. What `take` throws ends them, too. Throws basics::Failure(Surroundings) where none can be made.
/// The runs of the tool in all of them are returned.
[[nodiscard]] inventory::ToolRuns AskForDrives(const InquiryRequest& request,
                                               const std::vector<DrivePlace>& places, std::size_t jobs,
                                               const DriveTaker& take);

}  // namespace calls
