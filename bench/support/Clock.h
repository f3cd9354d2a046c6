#pragma once

#include <malloc.h>
#include <time.h>

#include <benchmark/benchmark.h>

namespace bench {

/// Of the processor, for this thread: what else the machine does is left out.
[[nodiscard]] inline double ThreadSeconds() {
    struct timespec now {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Measures `work`, each time as in a process that has done nothing before. `cleanUp`, which takes its
/// result, is not measured. For benchmarks with `UseManualTime`.
template <typename Work, typename CleanUp>
void MeasureAlone(benchmark::State& state, Work work, CleanUp cleanUp) {
    for ([[maybe_unused]] const auto each : state) {
        const double start = ThreadSeconds();
        auto result = work();
        state.SetIterationTime(ThreadSeconds() - start);
        benchmark::DoNotOptimize(result);
        cleanUp(result);
        ::malloc_trim(0);
    }
}

}  // namespace bench
