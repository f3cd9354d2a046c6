#include "Main.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

namespace bench {

int Main(int count, char** words, const std::function<void()>& work) noexcept {
    benchmark::Initialize(&count, words);
    if (benchmark::ReportUnrecognizedArguments(count, words)) {
        return 1;
    }
    try {
        work();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    benchmark::Shutdown();
    return 0;
}

}  // namespace bench
