#pragma once

#include "Options.h"

namespace command {

/// The subcommand test-alert: the service's own --test-alert takes the place of this process, for the
/// channels are the service's. Throws basics::Failure(Surroundings) where it is not beside the command or
/// cannot be run.
[[noreturn]] void RunTestAlert(const Options& options);

}  // namespace command
