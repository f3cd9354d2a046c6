// What the conversion of items into XML costs beside the same document written by libxml2.

#include "XmlConverter.h"
#include "support/Clock.h"
#include "support/Main.h"
#include "support/PlainWriter.h"
#include "support/Reading.h"
#include "support/Shapes.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace bench {
namespace {

constexpr std::int64_t kFewest = 100;
constexpr std::int64_t kMost = 100'000;
constexpr std::int64_t kMostNested = 1'000;  // libxml2's time grows with the square of the levels

struct Converted {
    std::unique_ptr<convlib::XmlConverter> converter;
    std::string_view text;
};

Converted Convert(ItemList& items) {
    auto converter = std::make_unique<convlib::XmlConverter>();
    const char* text = nullptr;
    if (converter->ConvertToXml(0, "RAID", &items, &text) != convlib::XmlConverter::kSuccess) {
        throw std::runtime_error("the items cannot be converted");
    }
    return {std::move(converter), text};
}

/// Items made once for both sides, of which only one list is kept at a time.
ItemList& Items(Shape shape, std::int64_t drives) {
    static ItemList items;
    static std::pair<Shape, std::int64_t> held{Shape::Report, 0};
    if (held != std::pair(shape, drives)) {
        Delete(items);
        items = ItemsOf(shape, static_cast<std::uint32_t>(drives));
        ::malloc_trim(0);  // What the other list left in pieces is not to be put together in the measure.
        held = {shape, drives};
    }
    return items;
}

std::string WithoutIndent(std::string_view text) {
    std::istringstream lines{std::string(text)};
    std::string result;
    for (std::string line; std::getline(lines, line);) {
        result += line.substr(std::min(line.find_first_not_of(' '), line.size())) + '\n';
    }
    return result;
}

bool IsSame(std::string_view ours, std::string_view plain, bool isIndented) {
    return isIndented ? ours == plain : WithoutIndent(ours) == WithoutIndent(plain);
}

void Count(benchmark::State& state, const ItemList& items, std::size_t size) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(items.size()));
}

void Ours(benchmark::State& state, Shape shape) {
    ItemList& items = Items(shape, state.range(0));
    std::size_t size = 0;
    MeasureAlone(
        state, [&items] { return Convert(items); },
        [&size](const Converted& result) { size = result.text.size(); });
    Count(state, items, size);
}

void Plain(benchmark::State& state, Shape shape) {
    ItemList& items = Items(shape, state.range(0));
    const bool isIndented = shape != Shape::Chain && shape != Shape::OneName;
    const PlainWriter writer(items, isIndented);
    std::size_t size = 0;
    MeasureAlone(
        state, [&writer] { return writer.Write(); },
        [&](const PlainWriter::Document& result) {
            if (std::exchange(size, result.Text().size()) == 0 &&
                !IsSame(Convert(items).text, result.Text(), isIndented)) {
                state.SkipWithError("the documents differ");
            }
        });
    Count(state, items, size);
}

void Register(const std::string& name, Shape shape, std::int64_t mostPlain) {
    const auto add = [&](const std::string& what, void (*function)(benchmark::State&, Shape),
                         std::int64_t last) {
        benchmark::RegisterBenchmark((what + name).c_str(), function, shape)
            ->RangeMultiplier(10)
            ->Range(kFewest, last)
            ->Unit(benchmark::kMicrosecond)
            ->UseManualTime();
    };
    add("conversion/", Ours, kMost);
    add("libxml2/", Plain, mostPlain);
}

void Run() {
    Register("report", Shape::Report, kMost);
    Register("one-parent", Shape::OneParent, kMost);
    Register("chain", Shape::Chain, kMostNested);
    Register("one-name", Shape::OneName, kMostNested);
    Register("no-parent", Shape::NoParent, kMost);
    benchmark::RunSpecifiedBenchmarks();
}

}  // namespace
}  // namespace bench

int main(int count, char** words) {
    return bench::Main(count, words, bench::Run);
}
