// One part of the module's work on a fixed scenario, for callgrind to count the instructions of what is
// between the two requests: bench_instructions PART.

#include "bench/support/Reading.h"
#include "convlib/XmlConverter.h"

#include <valgrind/callgrind.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string_view>

namespace bench {
namespace {

constexpr std::uint32_t kDrives = 960;

void Counted(const std::function<void()>& work) {
    CALLGRIND_START_INSTRUMENTATION;
    work();
    CALLGRIND_STOP_INSTRUMENTATION;
}

void CountReading(Kind kind) {
    const std::string& path = ReportOf(kind, kDrives).path;
    ItemList items;
    Counted([&] { items = Read(kind, path); });
    Delete(items);
}

void CountConversion() {
    ItemList items = Read(Kind::Drives, ReportOf(Kind::Drives, kDrives).path);
    Counted([&items] {
        convlib::XmlConverter converter;
        const char* text = nullptr;
        if (converter.ConvertToXml(0, "RAID", &items, &text) != convlib::XmlConverter::kSuccess) {
            throw std::runtime_error("the items cannot be converted");
        }
    });
    Delete(items);
}

void CountDeletion() {
    ItemList items = Read(Kind::Drives, ReportOf(Kind::Drives, kDrives).path);
    Counted([&items] { Delete(items); });
}

const std::map<std::string_view, std::function<void()>> kParts = {
    {"controllers", [] { CountReading(Kind::Controllers); }},
    {"logical-drives", [] { CountReading(Kind::LogicalDrives); }},
    {"drives", [] { CountReading(Kind::Drives); }},
    {"drives-and-smart", [] { CountReading(Kind::DrivesAndSmart); }},
    {"smart-table", [] { CountReading(Kind::SmartTable); }},
    {"conversion", CountConversion},
    {"deletion", CountDeletion},
};

}  // namespace
}  // namespace bench

int main(int count, char** words) {
    const auto part = count == 2 ? bench::kParts.find(words[1]) : bench::kParts.end();
    if (part != bench::kParts.end()) {
        part->second();
        return 0;
    }
    for (const auto& [name, work] : bench::kParts) {
        std::cout << name << '\n';
    }
    return count == 1 ? 0 : 2;
}
