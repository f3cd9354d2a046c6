// What it costs to answer a client of Redfish: the same answer again, the first one, all of a server's, and
// making the tree anew for each inquiry.

#include "redfish/Service.h"

#include <benchmark/benchmark.h>

#include <string>

namespace bench {
namespace {

/// Nobody.
class NoAccounts final : public redfish::Accounts {
  public:
    [[nodiscard]] std::variant<redfish::NewSession, redfish::SessionRefusal> Create(
        const std::string& /*account*/, const std::string& /*password*/) override {
        return redfish::SessionRefusal{};
    }
    [[nodiscard]] bool End(const std::string& /*id*/) override { return false; }
    [[nodiscard]] std::vector<redfish::Session> List() const override { return {}; }
};

std::string Told(const std::string& name, const std::string& value) {
    return "<Item Name=\"" + name + "\" Value=\"" + value + "\" Valid=\"TRUE\"/>";
}

std::string Section(const std::string& name, const std::string& items) {
    return "<Item Name=\"" + name + "\" Valid=\"TRUE\">" + items + "</Item>";
}

/// A server of so many drives in enclosures of 24, each of which tells all that a drive tells.
std::shared_ptr<const board::Board> BoardOf(std::int64_t drives) {
    std::string items = Section("Controller Information",
                                Section("### General Information ###", Told("Controller No.", "0")));
    for (std::int64_t drive = 0; drive < drives; ++drive) {
        const std::string number = std::to_string(drive);
        items += Section(
            "Physical Drive Information",
            Section("### General Information ###",
                    Told("PD No.", "PD" + number) + Told("LD No.", "GHS") + Told("Vendor", "TALLFIR") +
                        Told("Product ID", "TF600S15") + Told("Serial Number", "7K" + number) +
                        Told("Firmware Version", "A31C") + Told("Interface Type", "SAS") +
                        Told("Media Type", "HDD") + Told("Link Speed", "12.0 Gb/s") +
                        Told("Capacity", "558.406 GB") + Told("PD Status", "NO ERROR") +
                        Told("PD Status(Detail)", "HOT SPARE") + Told("Temperature", "31 C") +
                        Told("Power Status", "Active") + Told("Media Error Count", "0") +
                        Told("Other Error Count", "0") + Told("Predictive Failure Count", "0")) +
                Section("### Enclosure Properties Information ###",
                        Told("Enclosure No.", std::to_string(drive / 24)) +
                            Told("Slot No.", std::to_string(drive % 24))));
    }
    auto board = std::make_shared<board::Board>();
    board->snapshot = std::make_shared<const inventory::Snapshot>(
        inventory::Document::Read("<RAID version=\"1\">" + items + "</RAID>"));
    return board;
}

const http::Request kDrive{.method = "GET", .path = "/redfish/v1/Systems/1/Storage/0/Drives/1-1"};
const http::Request kAllDrives{
    .method = "GET", .path = "/redfish/v1/Chassis/1/Drives", .query = {{"$expand", "."}}};

NoAccounts nobody;

void DriveAgain(benchmark::State& state) {
    const redfish::Service service(BoardOf(state.range(0)), nobody);
    for (auto run : state) {
        http::Response response = service.Answer(kDrive);
        if (response.status != 200) {
            state.SkipWithError("no such drive");
        }
        benchmark::DoNotOptimize(response);
    }
    state.SetItemsProcessed(state.iterations());
}

void NewTree(benchmark::State& state) {
    const std::shared_ptr<const board::Board> board = BoardOf(state.range(0));
    for (auto run : state) {
        const redfish::Service service(board, nobody);
        benchmark::DoNotOptimize(&service);
    }
}

/// Every drive for the first time, by itself.
void WholeTree(benchmark::State& state) {
    const std::shared_ptr<const board::Board> board = BoardOf(state.range(0));
    std::size_t bytes = 0;
    for (auto run : state) {
        const redfish::Service service(board, nobody);
        bytes = 0;
        for (std::int64_t drive = 0; drive < state.range(0); ++drive) {
            const std::string path = "/redfish/v1/Systems/1/Storage/0/Drives/" + std::to_string(drive / 24) +
                                     "-" + std::to_string(drive % 24);
            bytes += service.Answer({.method = "GET", .path = path}).Text().size();
            bytes += service.Answer({.method = "GET", .path = path + "/EnvironmentMetrics"}).Text().size();
        }
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}

/// All drives in one answer.
void Expanded(benchmark::State& state) {
    const redfish::Service service(BoardOf(state.range(0)), nobody);
    std::size_t bytes = 0;
    for (auto run : state) {
        bytes = service.Answer(kAllDrives).Text().size();
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}

BENCHMARK(DriveAgain)->Name("redfish/drive_again")->Arg(26)->Arg(4096);
BENCHMARK(NewTree)->Name("redfish/new_tree")->Arg(26)->Arg(4096)->Unit(benchmark::kMicrosecond);
BENCHMARK(WholeTree)->Name("redfish/whole_tree")->Arg(26)->Arg(4096)->Unit(benchmark::kMicrosecond);
BENCHMARK(Expanded)->Name("redfish/expanded")->Arg(26)->Arg(4096)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace bench

BENCHMARK_MAIN();
