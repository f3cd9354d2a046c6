#include "vdksim/MadeUpServer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ostream>
#include <string_view>
#include <utility>

namespace vdksim {

namespace {

constexpr std::uint32_t kSlots = 24;
constexpr std::uint32_t kFirstEnclosure = 8;
constexpr std::uint32_t kBlock = 32;
constexpr std::uint32_t kGroup = 4;
constexpr std::uint32_t kOrdinaryGroups = 6;
constexpr std::uint32_t kGroups = kOrdinaryGroups + 1;  // the last one is the cache group
constexpr std::uint32_t kGrouped = kGroups * kGroup;

// Scatters a number, so that serial numbers and counters look unlike each other and yet never change.
std::uint64_t Scatter(std::uint64_t number) {
    number += 0x9E3779B97F4A7C15U;
    number = (number ^ (number >> 30U)) * 0xBF58476D1CE4E5B9U;
    number = (number ^ (number >> 27U)) * 0x94D049BB133111EBU;
    return number ^ (number >> 31U);
}

// A RAID group of a controller; number counts ordinary and cache groups through, as logical drives are.
struct Group {
    std::uint32_t number;

    [[nodiscard]] std::uint32_t Block() const { return number / kGroups; }
    [[nodiscard]] bool IsCache() const { return number % kGroups == kOrdinaryGroups; }
    [[nodiscard]] std::uint32_t FirstDrive() const { return Block() * kBlock + number % kGroups * kGroup; }
    // "RG7" and "scRG1" are counted each on their own.
    [[nodiscard]] std::string_view Head() const { return IsCache() ? "scRG" : "RG"; }
    [[nodiscard]] std::uint32_t NumberInName() const {
        return IsCache() ? Block() : Block() * kOrdinaryGroups + number % kGroups;
    }
};

enum class Interface { Sas, Sata, Other };

// What stands about one drive in several reports.
struct Drive {
    std::uint32_t number;

    [[nodiscard]] std::uint32_t InBlock() const { return number % kBlock; }
    [[nodiscard]] bool IsGrouped() const { return InBlock() < kGrouped; }
    [[nodiscard]] Group GroupOf() const { return {number / kBlock * kGroups + InBlock() / kGroup}; }
    [[nodiscard]] bool IsCache() const { return IsGrouped() && GroupOf().IsCache(); }

    [[nodiscard]] Interface Kind() const {
        if (InBlock() == kBlock - 1) {
            return Interface::Other;
        }
        return IsCache() || number / kGroup % 2 == 1 ? Interface::Sata : Interface::Sas;
    }

    [[nodiscard]] std::string_view Status() const {
        switch (InBlock()) {
            case kGrouped:
            case kGrouped + 1:
                return "HOT SPARE";
            case kGrouped + 2:
                return "Unconfig BAD";
            case kGrouped + 3:
                return "Unconfig GOOD";
            default:
                break;
        }
        if (number % 97 == 13) {
            return "REBUILD";
        }
        if (number % 101 == 17) {
            return "FAILED";
        }
        if (number % 103 == 19) {
            return "OFFLINE";
        }
        if (number % 107 == 21) {
            return "COPYBACK";
        }
        return number % 1009 == 22 ? "Diagnosing" : "ONLINE";
    }

    [[nodiscard]] std::uint32_t Gigabytes() const {
        switch (Kind()) {
            case Interface::Sas:
                return 558;
            case Interface::Sata:
                return IsCache() ? 186 : 931;
            case Interface::Other:
                break;
        }
        return 745;
    }
};

// Builds a report in memory and hands it on in pieces: a stream operation for every line costs more than the
// line.
class Page final {
  public:
    explicit Page(std::ostream& out) : m_Out(out) { m_Text.reserve(kPiece + kPiece / 4); }

    // Text and whole numbers one behind the other.
    template <typename... Parts>
    Page& Put(const Parts&... parts) {
        (Add(parts), ...);
        return *this;
    }

    template <typename... Parts>
    Page& Line(const Parts&... parts) {
        return Put(parts..., '\n');
    }

    Page& Title(std::string_view name) { return Line("### ", name, " ###"); }

    // " Serial Number                : Z1A0"
    template <typename... Parts>
    Page& Key(std::string_view key, const Parts&... value) {
        constexpr std::size_t kKeyWidth = 29;
        Put(' ', key);
        m_Text.append(kKeyWidth - std::min(kKeyWidth, key.size()), ' ');
        return Line(": ", value...);
    }

    // A table's cell: the text and blanks up to the width.
    template <typename Part>
    Page& Cell(std::size_t width, const Part& part) {
        const std::size_t start = m_Text.size();
        Add(part);
        const std::size_t used = m_Text.size() - start;
        m_Text.append(width > used ? width - used : 1, ' ');
        return *this;
    }

    Page& Digits(std::uint64_t number, std::size_t width) {
        std::array<char, 20> digits{};
        const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        const auto count = static_cast<std::size_t>(end - digits.data());
        m_Text.append(width > count ? width - count : 0, '0');
        m_Text.append(digits.data(), count);
        return *this;
    }

    // Hands on what is there when it is enough to be worth it; false when nobody takes any more.
    bool Turn() {
        if (m_Text.size() >= kPiece) {
            HandOn();
        }
        return m_Out.good();
    }

    void HandOn() {
        m_Out.write(m_Text.data(), static_cast<std::streamsize>(m_Text.size()));
        m_Text.clear();
    }

  private:
    static constexpr std::size_t kPiece = std::size_t{64} * 1024;

    void Add(std::string_view text) { m_Text += text; }
    void Add(char character) { m_Text += character; }
    void Add(std::uint64_t number) { Digits(number, 1); }
    void Add(std::uint32_t number) { Digits(number, 1); }

    std::ostream& m_Out;
    std::string m_Text;
};

void PutController(Page& page, std::uint32_t controller) {
    page.Line("RAID Controller : ", controller).Line();
}

void PutControllerReport(Page& page, std::uint32_t controller) {
    PutController(page, controller);
    page.Title("General Information");
    page.Key("Product Name", "Gate SR-8i");
    page.Put(" Serial Number                : GS").Digits(Scatter(controller) % 100'000'000, 8).Line();
    page.Key("Vendor ID", "5E1A");
    page.Key("Subsystem Vendor ID", "5E1A");
    page.Key("Device ID", "0073");
    page.Key("Subsystem ID", "0210");
    page.Key("Host Interface", "PCI Express 3.0 x8");
    page.Key("Memory Size", "2048 MB");
    page.Key("Controller Status", "OK").Line();
    page.Title("Firmware/BIOS/Driver Information");
    page.Key("Firmware Package Version", "24.7.0-0061");
    page.Key("Firmware Version", "4.270.00-4382");
    page.Key("Firmware Build Time", "Jan 29 2020 11:40:12");
    page.Key("BIOS Version", "6.22.03").Line();
    page.Title("Flash Backup Unit Information");
    page.Key("Status", "Optimal");
    page.Key("Temperature", 30 + controller % 10, " C").Line();
    page.Title("Controller Settings Information");
    page.Key("Rebuild Rate", "30 %");
    page.Key("Patrol Read Rate", "30 %");
    page.Key("Consistency Check Rate", "30 %");
    page.Key("Reconstruction Rate", "30 %");
    page.Key("Buzzer", "Enabled").Line();
}

std::string_view LevelOf(Group group, std::uint32_t members) {
    if (group.IsCache()) {
        return members > 1 ? "RAID 1" : "RAID 0";
    }
    constexpr std::array<std::string_view, kGroup + 1> kLevels = {"", "RAID 0", "RAID 1", "RAID 5", "RAID 5"};
    return kLevels[members];
}

void PutMember(Page& page, Drive drive) {
    const DriveAddress place = MadeUpServer::AddressOf(drive.number);
    page.Line(">>PD", drive.number, "(", drive.Status(), ")");
    page.Key("Enclosure", place.enclosure);
    page.Key("Slot", place.slot).Line();
}

void PutGroup(Page& page, Group group, std::uint32_t drives) {
    const std::uint32_t first = group.FirstDrive();
    const std::uint32_t members = std::min(kGroup, drives - first);
    const std::uint32_t gigabytes =
        Drive{first}.Gigabytes() * (group.IsCache() ? 1 : std::max(1U, members - 1));
    const std::string_view level = LevelOf(group, members);

    page.Line(group.Head(), group.NumberInName(), "(", level, ")");
    page.Key("RG No.", group.Head(), group.NumberInName());
    page.Key("RAID Level", level);
    page.Key("Total Capacity", gigabytes, " GB");
    page.Line(">LD", group.number, "(", group.IsCache() ? "CACHE_" : "DATA_", group.number, ", ", gigabytes,
              " GB, OPTIMAL)");
    for (std::uint32_t member = first; member < first + members; ++member) {
        PutMember(page, {member});
    }
    page.Title("General Information");
    page.Key("RAID Level", level);
    page.Key("Capacity", gigabytes, " GB");
    const std::uint32_t cache = group.Block() * kGroups + kOrdinaryGroups;
    const bool isCached = group.number % kGroups == 0 && Group{cache}.FirstDrive() < drives;
    if (!isCached) {
        page.Key("Stripe Size", "64 KB");
    }
    page.Key("# of PD", members);
    if (isCached) {
        page.Key("Associated CacheCade LD", "");
        page.Line(" LD", cache, "(CACHE_", cache, ", 186 GB, OPTIMAL)");
    } else {
        page.Key("Access Policy", "Read Write");
    }
    page.Line().Title("LD Settings Information");
    page.Key("Read Policy", "Read Ahead");
    page.Key("Write Policy", "Write Back");
    page.Key("Disk Cache", "Disabled").Line();
}

// "PD3(LD0)"
void PutDriveHeader(Page& page, Drive drive) {
    page.Put("PD", drive.number, "(");
    switch (drive.InBlock()) {
        case kGrouped:
            page.Put("GHS");
            break;
        case kGrouped + 1:
            page.Put("DHS RG", Group{drive.number / kBlock * kGroups}.NumberInName());
            break;
        case kGrouped + 2:
            page.Put("RLD");
            break;
        case kGrouped + 3:
            page.Put("Unused");
            break;
        default:
            page.Put("LD", drive.GroupOf().number);
            break;
    }
    page.Line(")");
}

struct SataRow {
    std::string_view id;
    std::string_view name;
    std::string_view flag;
    std::uint32_t threshold;
};

constexpr SataRow kSataRows[] = {
    {"1", "Raw Read Error Rate", "000B", 16},   {"3", "Spin Up Time", "0007", 24},
    {"4", "Start/Stop Count", "0012", 0},       {"5", "Reallocated Sectors Count", "0033", 5},
    {"7", "Seek Error Rate", "000B", 67},       {"9", "Power-On Hours", "0012", 0},
    {"12", "Power Cycle Count", "0032", 0},     {"194", "Drive Temperature", "0002", 0},
    {"197", "Pending Sector Count", "0022", 0}, {"199", "Interface CRC Error Count", "000A", 0},
};

// The attribute's name is a cell of exactly 40 characters, the others are single words.
void PutSataTable(Page& page, Drive drive) {
    page.Line("ID  Attribute                                Flag Value Worst Thresh Raw Data     Status");
    page.Line("--- ---------------------------------------- ---- ----- ----- ------ ------------ ------");
    std::uint64_t seed = drive.number * std::uint64_t{16};
    for (const SataRow& row : kSataRows) {
        page.Cell(4, row.id).Cell(41, row.name).Cell(5, row.flag);
        page.Cell(6, 100U).Cell(6, 100U).Cell(7, row.threshold);
        page.Digits(Scatter(seed++) % 5000, 12).Line(" OK");
    }
}

// Every cell starts below its column's first character, and no row ends before the last one.
void PutSasTable(Page& page, Drive drive) {
    constexpr std::array<std::string_view, 3> kOperations = {"Read", "Write", "Verify"};
    page.Line("Attribute   Corrected    Delayed      Retries      Gigabytes    Uncorrected");
    page.Line("----------- ------------ ------------ ------------ ------------ -----------");
    for (std::uint32_t head = 0; head < 2; ++head) {
        page.Line("[Head ", head, "]");
        for (std::uint32_t row = 0; row < kOperations.size(); ++row) {
            const std::uint64_t count = Scatter(drive.number * 8ULL + head * 4ULL + row);
            page.Cell(12, kOperations[row]).Cell(13, count % 900).Cell(13, count % 17).Cell(13, count % 5);
            page.Cell(13, count % 70'000).Line(count % 2);
        }
    }
}

void PutSmart(Page& page, Drive drive) {
    page.Title("SMART Information");
    page.Key("SMART Status", drive.Status() == "FAILED" ? "Alert" : "OK");
    page.Key("Temperature", 25 + drive.number % 20, " C");
    page.Key("Power-On Time", Scatter(drive.number) % 60'000, " Hours").Line();
    switch (drive.Kind()) {
        case Interface::Sas:
            PutSasTable(page, drive);
            break;
        case Interface::Sata:
            PutSataTable(page, drive);
            break;
        case Interface::Other:
            return;
    }
    page.Line();
}

void PutDrive(Page& page, Drive drive, bool withSmart) {
    constexpr std::array<std::string_view, 3> kKinds = {"SAS", "SATA", "NVMe"};
    constexpr std::array<std::string_view, 3> kProducts = {"TF600S15", "TF1000N7", "TF800P"};
    const DriveAddress place = MadeUpServer::AddressOf(drive.number);
    const auto kind = static_cast<std::size_t>(drive.Kind());

    PutDriveHeader(page, drive);
    page.Title("General Information");
    page.Key("Vendor", "TALLFIR");
    page.Key("Product ID", kProducts[kind]);
    page.Put(" Serial Number                : TF").Digits(Scatter(drive.number) % 10'000'000'000U, 10).Line();
    page.Key("Firmware Version", "A31C");
    page.Key("Interface Type", kKinds[kind]);
    page.Key("Media Type", drive.IsCache() ? "SSD" : "HDD");
    page.Key("Capacity", drive.Gigabytes(), " GB");
    page.Key("PD Status", drive.Status());
    if (drive.Kind() != Interface::Other) {
        page.Key("Temperature", 25 + drive.number % 20, " C");
    }
    page.Key("Power Status", "Active");
    page.Key("Media Error Count", Scatter(drive.number) % 3).Line();
    page.Title("Slot Information");
    page.Key("Enclosure No.", place.enclosure);
    page.Key("Slot No.", place.slot);
    page.Key("Enclosure Product ID", "JB24-12G").Line();
    if (withSmart) {
        PutSmart(page, drive);
    }
}

}  // namespace

MadeUpServer::MadeUpServer(Shape shape) : m_Shape(std::move(shape)) {}

DriveAddress MadeUpServer::AddressOf(std::uint32_t drive) {
    return {kFirstEnclosure + drive / kSlots, drive % kSlots};
}

std::optional<std::uint32_t> MadeUpServer::DriveAt(DriveAddress address) const {
    if (address.enclosure < kFirstEnclosure || address.slot >= kSlots) {
        return std::nullopt;
    }
    const std::uint64_t drive = std::uint64_t{address.enclosure - kFirstEnclosure} * kSlots + address.slot;
    if (drive >= m_Shape.drives) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(drive);
}

void MadeUpServer::WriteVersion(std::ostream& out) const {
    Page page(out);
    page.Line("RAID Tool Command Line Interface");
    page.Line("Product Name    : VDK RAID Tool");
    page.Line("Product Version : ", m_Shape.version);
    page.HandOn();
}

void MadeUpServer::WriteController(std::ostream& out, std::uint32_t controller) const {
    Page page(out);
    PutControllerReport(page, controller);
    page.HandOn();
}

void MadeUpServer::WriteAllControllers(std::ostream& out) const {
    Page page(out);
    for (std::uint32_t controller = 0; controller < m_Shape.controllers && page.Turn(); ++controller) {
        PutControllerReport(page, controller);
    }
    page.HandOn();
}

void MadeUpServer::WriteLogicalDrives(std::ostream& out, std::uint32_t controller) const {
    Page page(out);
    PutController(page, controller);
    for (Group group{0}; group.FirstDrive() < m_Shape.drives && page.Turn(); ++group.number) {
        PutGroup(page, group, m_Shape.drives);
    }
    page.HandOn();
}

void MadeUpServer::WriteDrives(std::ostream& out, std::uint32_t controller, bool withSmart) const {
    Page page(out);
    PutController(page, controller);
    for (Drive drive{0}; drive.number < m_Shape.drives && page.Turn(); ++drive.number) {
        PutDrive(page, drive, withSmart);
    }
    page.HandOn();
}

void MadeUpServer::WriteDrive(std::ostream& out, std::uint32_t controller, std::uint32_t drive) const {
    Page page(out);
    PutController(page, controller);
    PutDrive(page, {drive}, true);
    page.HandOn();
}

}  // namespace vdksim
