#include "board/Messages.h"

#include "DocumentText.h"
#include "basics/SavedFile.h"
#include "board/Link.h"
#include "board/Wire.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <set>

namespace board {
namespace {

using namespace std::chrono_literals;

constexpr TimePoint kNow{1'933'221'728'250ms};

std::size_t OpenFiles() {
    using Files = std::filesystem::directory_iterator;
    return static_cast<std::size_t>(std::distance(Files("/proc/self/fd"), Files()));
}

watch::Event EventNamed(const std::string& id) {
    watch::Event event;
    event.id = id;
    event.at = TimePoint(1'933'221'728s);
    event.kind = watch::EventKind::Changed;
    event.level = inventory::Level::Critical;
    event.before = inventory::Level::Warning;
    event.about.kind = inventory::PartKind::Drive;
    event.about.serial = "7K0001";
    event.about.what = "FAILED";
    event.words = "controller 0, PD3: FAILED";
    return event;
}

Report Whole() {
    Report report;
    report.number = 7;
    report.host = "storage7";
    report.startedAt = kNow - 2h;
    report.document = "<RAID version=\"1\"/>";
    report.takenAt = kNow;
    report.runs = {.commands = 7, .failures = 1, .failedRuns = 3, .duration = 1500ms};
    report.criteria.today = "2031-04-06";
    report.criteria.limits.temperature = 51.5;
    report.criteria.limits.spares = 2;
    report.criteria.expectations = inventory::Expectations{"storage7", "2031-04-05T06:07:08Z"};
    report.inquiry = LastInquiry{kNow, "the tool hung", 3};
    report.alarms = {{TimePoint(1'933'000'000s), EventNamed("x").about, true}};
    report.alarms.front().finding.level = inventory::Level::Critical;
    report.events = {{41, EventNamed("one")}, {42, EventNamed("two")}};
    return report;
}

TEST(Reports, ComeAsTheyWent) {
    const std::string bytes = Pack(Whole());
    const Report report = UnpackReport(bytes);
    EXPECT_EQ(Pack(report), bytes);
    EXPECT_EQ(report.number, 7U);
    EXPECT_EQ(report.host, "storage7");
    EXPECT_EQ(report.startedAt, kNow - 2h);
    EXPECT_EQ(report.takenAt, kNow);
    EXPECT_EQ(report.runs.commands, 7U);
    EXPECT_EQ(report.runs.failures, 1U);
    EXPECT_EQ(report.runs.failedRuns, 3U);
    EXPECT_EQ(report.runs.duration, 1500ms);
    EXPECT_EQ(report.criteria.limits.temperature, 51.5);
    EXPECT_EQ(report.criteria.limits.mediaErrors, std::nullopt);
    EXPECT_EQ(report.criteria.limits.spares, 2U);
    EXPECT_EQ(report.criteria.expectations->savedAt, "2031-04-05T06:07:08Z");
    EXPECT_EQ(report.inquiry->failure, "the tool hung");
    EXPECT_EQ(report.inquiry->failuresInARow, 3U);
    EXPECT_EQ(report.alarms.front().since, TimePoint(1'933'000'000s));
    EXPECT_EQ(report.alarms.front().finding.serial, "7K0001");
    EXPECT_TRUE(report.alarms.front().isVanished);
    EXPECT_EQ(report.alarms.front().finding.level, inventory::Level::Critical);
    EXPECT_EQ(report.events.back().number, 42);
    EXPECT_EQ(report.events.back().event.words, "controller 0, PD3: FAILED");
    EXPECT_EQ(Pack(UnpackReport(Pack(Report()))), Pack(Report())) << "before the first answer";
}

TEST(OtherMessages, ComeAsTheyWent) {
    const std::vector<DriveReport> drives = {{"0", "252", "3", "<RAID version=\"1\"/>"}, {"1", "", "", ""}};
    EXPECT_EQ(UnpackDrives(Pack(drives)).front().document, "<RAID version=\"1\"/>");
    EXPECT_EQ(Pack(UnpackDrives(Pack(drives))), Pack(drives));

    Settings settings{.listeners = {{3, false}, {7, true}},
                      .key = "k",
                      .certificate = "c",
                      .accounts = "monitoring:$y$",
                      .metricsFrom = {"192.0.2.0/24"},
                      .user = 65534};
    EXPECT_EQ(Pack(UnpackSettings(Pack(settings))), Pack(settings));
    EXPECT_EQ(UnpackSettings(Pack(settings)).listeners.back().descriptor, 7U);
    EXPECT_TRUE(UnpackSettings(Pack(settings)).listeners.back().isEncrypted);
    settings.accounts.reset();
    EXPECT_FALSE(UnpackSettings(Pack(settings)).accounts);

    const Call call{12, Call::What::GetPDInfo, std::nullopt, -1, 4'294'967'295, "key", "drive/7K0001"};
    EXPECT_EQ(UnpackCall(Pack(call)).slot, 4'294'967'295);
    EXPECT_EQ(UnpackCall(Pack(call)).enclosure, -1);
    EXPECT_EQ(UnpackCall(Pack(call)).controller, std::nullopt);
    EXPECT_EQ(UnpackCall(Pack(call)).appKey, "key");
    EXPECT_EQ(UnpackCall(Pack(call)).part, "drive/7K0001");
    EXPECT_EQ(Pack(UnpackCall(Pack(call))), Pack(call));

    const Outcome outcome{12, "", 0x80041001, 5, "<RAID/>"};
    EXPECT_EQ(UnpackOutcome(Pack(outcome)).status, 0x80041001U);
    EXPECT_EQ(UnpackOutcome(Pack(outcome)).returnValue, 5U);
    EXPECT_EQ(UnpackOutcome(Pack(outcome)).document, "<RAID/>");
    EXPECT_EQ(Pack(UnpackOutcome(Pack(Outcome{13, "no time"}))), Pack(Outcome{13, "no time"}));
}

template <typename Unpack>
void ExpectOnlyWhole(const std::string& bytes, const Unpack& unpack) {
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_THROW((void)unpack(bytes.substr(0, size)), WireError) << size << " of " << bytes.size();
    }
    EXPECT_THROW((void)unpack(bytes + "x"), WireError);
}

TEST(Messages, AreTakenWholeOrNotAtAll) {
    ExpectOnlyWhole(Pack(Whole()), UnpackReport);
    ExpectOnlyWhole(Pack(Settings{.listeners = {{3, false}}, .accounts = "a"}), UnpackSettings);
    ExpectOnlyWhole(Pack(std::vector<DriveReport>{{"0", "1", "2", "x"}}), UnpackDrives);
    ExpectOnlyWhole(Pack(Call{1, Call::What::GetPDInfo, 1, 2, 3, "key"}), UnpackCall);
    ExpectOnlyWhole(Pack(Outcome{1, "", 0, 0, "x"}), UnpackOutcome);
}

// A fuzzer that begins with what is refused at once seldom gets any further.
TEST(Messages, OfEachKindAreAmongThoseThatAreFuzzed) {
    const std::map<char, std::function<void(std::string_view)>> unpackers = {
        {'C', [](std::string_view bytes) { (void)UnpackCall(bytes); }},
        {'D', [](std::string_view bytes) { (void)UnpackDrives(bytes); }},
        {'O', [](std::string_view bytes) { (void)UnpackOutcome(bytes); }},
        {'R', [](std::string_view bytes) { (void)UnpackReport(bytes); }},
        {'S', [](std::string_view bytes) { (void)UnpackSettings(bytes); }}};
    std::set<char> whole;
    for (const auto& file : std::filesystem::directory_iterator(BOARD_TEST_FUZZED)) {
        const std::string input = basics::ReadFile(file.path().string());
        const auto unpacker = unpackers.find(input.empty() ? '\0' : input.front());
        try {
            if (unpacker != unpackers.end()) {
                unpacker->second(std::string_view(input).substr(1));
                whole.insert(input.front());
            }
        } catch (const WireError&) {
            continue;  // Others are.
        }
    }
    EXPECT_THAT(whole, testing::ElementsAre('C', 'D', 'O', 'R', 'S'));
}

TEST(Calls, ThatNobodyAnswersAreRefused) {
    std::string bytes = Pack(Call{1, Call::What::Refresh});
    for (const char what : {'\0', '\6'}) {
        bytes[8] = what;
        EXPECT_THROW((void)UnpackCall(bytes), WireError);
    }
    EXPECT_THROW(
        (void)UnpackCall(Pack(Call{1, Call::What::GetInfo, {}, {}, {}, std::string(kMostKey + 1, 'k')})),
        WireError);
}

class Linked : public testing::Test {
  protected:
    Linked() : Linked(Link::MakePair()) {}
    explicit Linked(std::pair<Link, basics::Descriptor> pair)
        : m_Service(std::move(pair.first)), m_Doors(std::move(pair.second), Link::End::Doors) {}

    void SendRaw(const Link& end, std::string_view bytes) const {
        EXPECT_EQ(::send(end.Number(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }

    Link m_Service, m_Doors;
};

TEST_F(Linked, MessagesOfAnySizeComeToTheDoors) {
    const std::size_t files = OpenFiles();
    EXPECT_FALSE(m_Doors.Receive());
    const std::string large(5'000'000, 'x');
    ASSERT_TRUE(m_Service.Send(MessageKind::Report, large));
    ASSERT_TRUE(m_Service.Send(MessageKind::Drives, ""));
    const std::optional<Message> first = m_Doors.Receive();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->kind, MessageKind::Report);
    EXPECT_TRUE(first->bytes == large);
    const std::optional<Message> second = m_Doors.Receive();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->kind, MessageKind::Drives);
    EXPECT_EQ(second->bytes, "");
    EXPECT_FALSE(m_Doors.Receive());
    EXPECT_EQ(OpenFiles(), files);
}

TEST_F(Linked, SmallMessagesComeToTheService) {
    const std::string most(Link::kMostToService, 'k');
    ASSERT_TRUE(m_Doors.Send(MessageKind::Call, most));
    EXPECT_FALSE(m_Doors.Send(MessageKind::Call, most + 'k'));
    const std::optional<Message> message = m_Service.Receive();
    ASSERT_TRUE(message);
    EXPECT_EQ(message->bytes, most);
    EXPECT_FALSE(m_Service.Receive());
}

TEST_F(Linked, WhoeverDoesNotReadKeepsNobodyWaiting) {
    int sent = 0;
    while (m_Service.Send(MessageKind::Report, "news")) {
        ASSERT_LT(++sent, 100'000);
    }
    EXPECT_GT(sent, 10);
    EXPECT_TRUE(m_Doors.Receive());
    EXPECT_TRUE(m_Service.Send(MessageKind::Report, "news"));
}

TEST_F(Linked, TheEndOfTheOtherEndIsNoticed) {
    { const Link gone = std::move(m_Doors); }
    EXPECT_THROW((void)m_Service.Receive(), WireError);
    EXPECT_FALSE(m_Service.Send(MessageKind::Report, "news"));
}

TEST_F(Linked, NonsenseIsNoMessage) {
    const std::string header(16, '\0');
    std::string call = header;
    call[0] = 5;
    for (const std::string& bytes : {std::string("x"), header, header + "y", call + "one too many",
                                     "\x63" + std::string(15, '\0'), call + std::string(2000, 'x')}) {
        SendRaw(m_Doors, bytes);
        EXPECT_THROW((void)m_Service.Receive(), WireError) << bytes.size();
    }
    SendRaw(m_Doors, "\x03" + std::string(15, '\0'));
    EXPECT_THROW((void)m_Service.Receive(), WireError) << "a report, which goes the other way";
    std::string report = header;
    report[0] = 3;
    report[8] = 9;
    SendRaw(m_Service, report);
    EXPECT_THROW((void)m_Doors.Receive(), WireError) << "without its file";
}

TEST_F(Linked, TheServiceTakesNoFiles) {
    const std::size_t files = OpenFiles();
    Link wrong(basics::Descriptor(::dup(m_Doors.Number())), Link::End::Service);
    ASSERT_TRUE(wrong.Send(MessageKind::Report, "a file"));
    EXPECT_THROW((void)m_Service.Receive(), WireError);
    EXPECT_EQ(OpenFiles(), files + 1);
}

TEST(Messages, RefuseDurationsThatAreNone) {
    for (const double seconds : {-1.0, std::numeric_limits<double>::infinity(), std::nan("")}) {
        Report report = Whole();
        report.runs.duration = std::chrono::duration<double>(seconds);
        EXPECT_THROW((void)UnpackReport(Pack(report)), WireError) << seconds;
    }
}

// Cut to half its bytes, that user would be root.
TEST(Messages, RefuseNumbersThatWouldBecomeOthers) {
    Packer packer;
    packer.Number(0);  // listeners
    packer.Text("");
    packer.Text("");
    packer.Number(0);  // accounts
    packer.Number(0);  // nets
    packer.Number(std::uint64_t(1) << 32U);
    packer.Number(0);
    packer.Number(60);
    EXPECT_THROW((void)UnpackSettings(packer.Take()), WireError);
    Packer outcome;
    outcome.Number(1);
    outcome.Text("");
    outcome.Number((std::uint64_t(1) << 32U) + 5);
    outcome.Number(0);
    outcome.Number(0);
    EXPECT_THROW((void)UnpackOutcome(outcome.Take()), WireError);
}

}  // namespace
}  // namespace board
