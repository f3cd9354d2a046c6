// What a report takes up until it is converted, and what the conversion takes besides.

#include "bench/support/InChild.h"
#include "bench/support/PlainWriter.h"
#include "bench/support/Reading.h"
#include "bench/support/Shapes.h"
#include "convlib/XmlConverter.h"
#include "tests/support/TempFolder.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <fstream>
#include <stdexcept>

namespace bench {
namespace {

constexpr std::int64_t kDrives = 100'000;

/// Bytes for one of the drives.
void Tell(benchmark::State& state, const std::function<double()>& measure) {
    for ([[maybe_unused]] const auto each : state) {
        state.counters["bytes"] = InChild(measure) / kDrives;
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
    const std::string path = ReportOf(Kind::DrivesOf16Keys, kDrives).path;
    Tell(state, [&] { return ResidentItems([&] { return Read(Kind::DrivesOf16Keys, path); }); });
}

/// The same items without the reader.
void ItemsAlone(benchmark::State& state) {
    const testsupport::TempFolder folder;
    const std::string file = folder / "items";
    {
        ItemList items = Read(Kind::DrivesOf16Keys, ReportOf(Kind::DrivesOf16Keys, kDrives).path);
        std::ofstream out(file);
        WriteItems(out, items);
        Delete(items);
        ::malloc_trim(0);
    }
    Tell(state, [&] { return ResidentItems([&] { return ReadItems(file); }); });
}

void Text(benchmark::State& state) {
    const Report& report = ReportOf(Kind::DrivesOf16Keys, kDrives);
    Tell(state, [&] { return static_cast<double>(report.bytes); });
}

/// Peak of `convert` above what was there, in a process that holds the items.
void TellPeak(benchmark::State& state, const std::function<void(ItemList&)>& convert) {
    const std::string path = ReportOf(Kind::Drives, kDrives).path;
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
    const std::string path = ReportOf(Kind::Drives, kDrives).path;
    Tell(state, [&] { return static_cast<double>(PlainWriter(Read(Kind::Drives, path), true).Size()); });
}

void Plain(benchmark::State& state) {
    const std::string path = ReportOf(Kind::Drives, kDrives).path;
    Tell(state, [&] {
        const ItemList items = Read(Kind::Drives, path);
        const PlainWriter writer(items, true);
        const double before = Resident();
        ForgetPeak();
        benchmark::DoNotOptimize(writer.Size());
        return PeakResident() - before;
    });
}

}  // namespace

BENCHMARK(Reader)->Name("memory/reader")->Iterations(1);
BENCHMARK(ItemsAlone)->Name("memory/items")->Iterations(1);
BENCHMARK(Text)->Name("memory/report")->Iterations(1);
BENCHMARK(Conversion)->Name("memory/conversion")->Iterations(1);
BENCHMARK(Plain)->Name("memory/libxml2")->Iterations(1);
BENCHMARK(ConvertedText)->Name("memory/document")->Iterations(1);

}  // namespace bench

BENCHMARK_MAIN();
