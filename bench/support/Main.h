#pragma once

#include <functional>

namespace bench {

/// The main program of benchmarks: reads the command line, does `work`, which registers the benchmarks and
/// runs them, and tells what failed. The result is the exit status.
int Main(int count, char** words, const std::function<void()>& work) noexcept;

}  // namespace bench
