#pragma once

#include "qel/QelExport.h"

#include <stdexcept>

/// What the framework's own operations throw.
class QEL_API QelException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    ~QelException() override;

    /// Prepares the calling thread for exceptions of the platform that are to arrive as QelException.
    /// Providers call it first thing on every entry. This platform has none (its signals stay signals), so
    /// nothing changes.
    static void set_transrator();
};
