// What the readers cost beside a bare loop over the lines of the same file, and beside a script in Python.

#include "itemconv/MsraidTrace.h"
#include "support/Clock.h"
#include "support/MadeUpReports.h"
#include "support/Main.h"
#include "support/Reading.h"
#include "test_support/TempFolder.h"

#include "qel/portable/CTraceOutput.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>

namespace bench {
namespace {

constexpr std::int64_t kFewest = 10;
constexpr std::int64_t kMost = 1'000'000;
constexpr std::int64_t kMostInPython = 100'000;
constexpr std::int64_t kRunsInPython = 3;  // The interpreter's start, which does not count, takes longer.
constexpr std::uint32_t kDrivesCompared = 100;
constexpr std::int64_t kDrivesTraced = 1000;

/// Runs `work` on the report and then `cleanUp`, which is not measured.
template <typename Work, typename CleanUp>
void Measure(benchmark::State& state, Kind kind, Work work, CleanUp cleanUp) {
    const Report& report = ReportOf(kind, static_cast<std::uint32_t>(state.range(0)));
    MeasureAlone(
        state, [&] { return work(report.path); }, cleanUp);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(report.bytes));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(report.lines));
}

void Lines(benchmark::State& state, Kind kind) {
    Measure(state, kind, ReadLines, [](std::size_t) {});
}

/// The items of a few drives, which the processor's cache holds.
ItemList Patterns(Kind kind) {
    constexpr std::uint32_t kDrives = 32;
    return Read(kind, ReportOf(kind, kDrives).path);
}

void LinesAndItems(benchmark::State& state, Kind kind) {
    ItemList items = Read(kind, ReportOf(kind, static_cast<std::uint32_t>(state.range(0))).path);
    const std::size_t count = items.size();
    Delete(items);
    ::malloc_trim(0);
    ItemList patterns = Patterns(kind);
    Measure(
        state, kind, [&](const std::string& path) { return ReadLinesAndMakeItems(path, patterns, count); },
        Delete);
    Delete(patterns);
}

void Reader(benchmark::State& state, Kind kind) {
    Measure(
        state, kind, [kind](const std::string& path) { return Read(kind, path); }, Delete);
}

std::string RunPython(const char* name, const std::string& arguments) {
    const std::string command =
        std::string("/usr/bin/python3 " BENCH_PLAIN_READER " ") + name + ' ' + arguments;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string output;
    std::array<char, 65536> part{};
    while (const std::size_t size = pipe ? std::fread(part.data(), 1, part.size(), pipe.get()) : 0) {
        output.append(part.data(), size);
    }
    return output;
}

/// Whether the script makes the same list as the reader.
bool IsSameInPython(const char* name, Kind kind) {
    const std::string& path = ReportOf(kind, kDrivesCompared).path;
    ItemList items = Read(kind, path);
    std::ostringstream expected;
    WriteItems(expected, items);
    Delete(items);
    return RunPython(name, path + " --items") == expected.str();
}

/// A plain script that makes the same list. It measures itself, without the start of its interpreter.
void Python(benchmark::State& state, const char* name, Kind kind) {
    if (!IsSameInPython(name, kind)) {
        state.SkipWithError("the script makes another list");
        return;
    }
    const Report& report = ReportOf(kind, static_cast<std::uint32_t>(state.range(0)));
    for ([[maybe_unused]] const auto each : state) {
        state.SetIterationTime(std::stod(RunPython(name, report.path)));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(report.lines));
}

/// One trace line that nobody wants.
void TraceOff(benchmark::State& state) {
    for ([[maybe_unused]] const auto each : state) {
        CTraceUtility::WriteDebug(msraid::kCategory, msraid::kOperation, "%s [START]",
                                  "CMSRAID_LDInfoGetter");
    }
}

class CountingListener final : public ITraceListener {
  public:
    void OnTrace(const TraceLine& /*line*/) noexcept override { ++lines; }
    std::size_t lines = 0;
};

/// How many trace lines a report costs, for each of its own lines, and what reading takes while all of them
/// are written into a file.
void TraceInFile(benchmark::State& state, Kind kind) {
    const testsupport::TempFolder folder;
    const Report& report = ReportOf(kind, static_cast<std::uint32_t>(state.range(0)));
    CountingListener listener;
    CTraceOutput::SetListener(&listener);
    ItemList items = Read(kind, report.path);
    CTraceOutput::SetListener(nullptr);
    Delete(items);
    if (!CTraceOutput::OpenFile(folder / "trace.txt")) {
        state.SkipWithError("no trace file");
        return;
    }
    CTraceOutput::SetLevels(CTraceOutput::ALL_LEVELS);
    Reader(state, kind);
    CTraceOutput::SetLevels(0);
    CTraceOutput::UseStandardError();
    state.counters["traces_per_line"] =
        static_cast<double>(listener.lines) / static_cast<double>(report.lines);
}

void Register(const char* name, Kind kind) {
    const auto add = [name](const char* what, std::int64_t most, auto function, auto... arguments) {
        return benchmark::RegisterBenchmark((std::string(what) + '/' + name).c_str(), function, arguments...)
            ->RangeMultiplier(10)
            ->Range(kFewest, most)
            ->Unit(benchmark::kMicrosecond)
            ->UseManualTime();
    };
    add("lines", kMost, Lines, kind);
    add("items", kMost, LinesAndItems, kind);
    add("reader", kMost, Reader, kind);
    add("python", kMostInPython, Python, name, kind)->Iterations(kRunsInPython);
    benchmark::RegisterBenchmark((std::string("traced/") + name).c_str(), TraceInFile, kind)
        ->Arg(kDrivesTraced)
        ->Unit(benchmark::kMicrosecond)
        ->UseManualTime();
}

void Run() {
    Register("controllers", Kind::Controllers);
    Register("logical-drives", Kind::LogicalDrives);
    Register("drives", Kind::Drives);
    Register("drives-and-smart", Kind::DrivesAndSmart);
    Register("smart-table", Kind::SmartTable);
    benchmark::RegisterBenchmark("trace/off", TraceOff);
    benchmark::RunSpecifiedBenchmarks();
}

}  // namespace
}  // namespace bench

int main(int count, char** words) {
    return bench::Main(count, words, bench::Run);
}
