// What a report takes up until it is converted, and what the conversion takes besides.

#include "XmlConverter.h"
#include "support/InChild.h"
#include "support/PlainWriter.h"
#include "support/Reading.h"
#include "support/Shapes.h"
#include "test_support/TempFolder.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <fstream>
#include <stdexcept>

namespace bench {
namespace {

/// A few to see that it runs; pages make them look larger than they are.
constexpr std::int64_t kFew = 1000;
constexpr std::int64_t kMany = 100'000;

std::uint32_t Drives(const benchmark::State& state) {
    return static_cast<std::uint32_t>(state.range(0));
}

/// Bytes for one of the drives.
void Tell(benchmark::State& state, const std::function<double()>& measure) {
    for ([[maybe_unused]] const auto each : state) {
        state.counters["bytes"] = InChild(measure) / Drives(state);
    }
}

/// The items of `read`, which are never deleted: the process ends.
double ResidentItems(const std::function<ItemList()>& read) {
    static ItemList items;
    const double before = Resident();
    items = read();
    return Resident() - before;
}

void Reader(benchmark::State& state) {
    const std::string path = ReportOf(Kind::DrivesOf16Keys, Drives(state)).path;
    Tell(state, [&] { return ResidentItems([&] { return Read(Kind::DrivesOf16Keys, path); }); });
}

/// The same items without the reader.
void ItemsAlone(benchmark::State& state) {
    const testsupport::TempFolder folder;
    const std::string file = folder / "items";
    {
        ItemList items = Read(Kind::DrivesOf16Keys, ReportOf(Kind::DrivesOf16Keys, Drives(state)).path);
        std::ofstream out(file);
        WriteItems(out, items);
        Delete(items);
        ::malloc_trim(0);
    }
    Tell(state, [&] { return ResidentItems([&] { return ReadItems(file); }); });
}

void Text(benchmark::State& state) {
    const Report& report = ReportOf(Kind::DrivesOf16Keys, Drives(state));
    Tell(state, [&] { return static_cast<double>(report.bytes); });
}

/// Peak of `convert` above what was there, in a process that holds the items.
void TellPeak(benchmark::State& state, const std::function<void(ItemList&)>& convert) {
    const std::string path = ReportOf(Kind::Drives, Drives(state)).path;
    Tell(state, [&] {
        ItemList items = Read(Kind::Drives, path);
        const double before = Resident();
        ForgetPeak();
        convert(items);
        return PeakResident() - before;
    });
}

void Conversion(benchmark::State& state) {
    TellPeak(state, [](ItemList& items) {
        const char* text = nullptr;
        convlib::XmlConverter converter;
        if (converter.ConvertToXml(0, "RAID", &items, &text) != convlib::XmlConverter::kSuccess) {
            throw std::runtime_error("the items cannot be converted");
        }
    });
}

void ConvertedText(benchmark::State& state) {
    const std::string path = ReportOf(Kind::Drives, Drives(state)).path;
    Tell(state, [&] {
        return static_cast<double>(PlainWriter(Read(Kind::Drives, path), true).Write().Text().size());
    });
}

void Plain(benchmark::State& state) {
    const std::string path = ReportOf(Kind::Drives, Drives(state)).path;
    Tell(state, [&] {
        const ItemList items = Read(Kind::Drives, path);
        const PlainWriter writer(items, true);
        const double before = Resident();
        ForgetPeak();
        benchmark::DoNotOptimize(writer.Write());
        return PeakResident() - before;
    });
}

}  // namespace

BENCHMARK(Reader)->Name("memory/reader")->Arg(kFew)->Arg(kMany)->Iterations(1);
BENCHMARK(ItemsAlone)->Name("memory/items")->Arg(kFew)->Arg(kMany)->Iterations(1);
BENCHMARK(Text)->Name("memory/report")->Arg(kFew)->Arg(kMany)->Iterations(1);
BENCHMARK(Conversion)->Name("memory/conversion")->Arg(kFew)->Arg(kMany)->Iterations(1);
BENCHMARK(Plain)->Name("memory/libxml2")->Arg(kFew)->Arg(kMany)->Iterations(1);
BENCHMARK(ConvertedText)->Name("memory/document")->Arg(kFew)->Arg(kMany)->Iterations(1);

}  // namespace bench

BENCHMARK_MAIN();
