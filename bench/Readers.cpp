// What the readers cost beside a loop over the same lines that only makes the same items, and beside the bare
// loop.

#include "itemconv/MsraidTrace.h"
#include "support/Clock.h"
#include "support/MadeUpReports.h"
#include "support/Main.h"
#include "support/Reading.h"
#include "test_support/TempFolder.h"

#include "qel/portable/CTraceOutput.h"

#include <benchmark/benchmark.h>

#include <string>

namespace bench {
namespace {

constexpr std::int64_t kFewest = 10;
constexpr std::int64_t kMost = 100'000;
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
    const auto add = [name, kind](const char* what, void (*function)(benchmark::State&, Kind)) {
        benchmark::RegisterBenchmark((std::string(what) + '/' + name).c_str(), function, kind)
            ->RangeMultiplier(10)
            ->Range(kFewest, kMost)
            ->Unit(benchmark::kMicrosecond)
            ->UseManualTime();
    };
    add("lines", Lines);
    add("items", LinesAndItems);
    add("reader", Reader);
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
