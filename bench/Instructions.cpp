// One part of the module's work on a fixed scenario, for callgrind to count the instructions of what is
// between the two requests: bench_instructions PART [DRIVES].

#include "XmlConverter.h"
#include "support/Reading.h"

#include <valgrind/callgrind.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace bench {
namespace {

constexpr std::uint32_t kUsualDrives = 960;

void Counted(const std::function<void()>& work) {
    CALLGRIND_START_INSTRUMENTATION;
    work();
    CALLGRIND_STOP_INSTRUMENTATION;
}

void CountReading(Kind kind, std::uint32_t drives) {
    const std::string& path = ReportOf(kind, drives).path;
    ItemList items;
    Counted([&] { items = Read(kind, path); });
    Delete(items);
}

void CountConversion(std::uint32_t drives) {
    ItemList items = Read(Kind::Drives, ReportOf(Kind::Drives, drives).path);
    Counted([&items] {
        convlib::XmlConverter converter;
        const char* text = nullptr;
        if (converter.ConvertToXml(0, "RAID", &items, &text) != convlib::XmlConverter::kSuccess) {
            throw std::runtime_error("the items cannot be converted");
        }
    });
    Delete(items);
}

void CountDeletion(std::uint32_t drives) {
    ItemList items = Read(Kind::Drives, ReportOf(Kind::Drives, drives).path);
    Counted([&items] { Delete(items); });
}

const std::map<std::string_view, std::function<void(std::uint32_t drives)>> kParts = {
    {"controllers", [](std::uint32_t drives) { CountReading(Kind::Controllers, drives); }},
    {"logical-drives", [](std::uint32_t drives) { CountReading(Kind::LogicalDrives, drives); }},
    {"drives", [](std::uint32_t drives) { CountReading(Kind::Drives, drives); }},
    {"drives-and-smart", [](std::uint32_t drives) { CountReading(Kind::DrivesAndSmart, drives); }},
    {"smart-table", [](std::uint32_t drives) { CountReading(Kind::SmartTable, drives); }},
    {"conversion", CountConversion},
    {"deletion", CountDeletion},
};

}  // namespace
}  // namespace bench

int main(int count, char** words) {
    const auto part = count == 2 || count == 3 ? bench::kParts.find(words[1]) : bench::kParts.end();
    if (part != bench::kParts.end()) {
        part->second(count == 3 ? static_cast<std::uint32_t>(std::stoul(words[2])) : bench::kUsualDrives);
        return 0;
    }
    for (const auto& [name, work] : bench::kParts) {
        std::cout << name << '\n';
    }
    return count == 1 ? 0 : 2;
}
