#include "Service.h"

#include "basics/Failure.h"
#include "basics/SavedFile.h"
#include "basics/Time.h"
#include "history/Reader.h"
#include "inventory/Document.h"

#include <algorithm>
#include <utility>

namespace service {
namespace {

using inventory::Level;
using watch::Event;

Schedule::Intervals IntervalsOf(const Configuration& configuration) {
    return {configuration.interval, configuration.smartInterval, configuration.asksSleeping};
}

}  // namespace

Service::Service(Configuration configuration, Log log, Moment now)
    : m_Configuration(std::move(configuration)),
      m_Log(std::move(log)),
      m_Watch(m_Configuration.rules, watch::RandomId),
      m_Archive(m_Configuration.history),
      m_Courier({.host = m_Configuration.host}),
      m_Schedule(IntervalsOf(m_Configuration), now.steady),
      m_StartedAt(now.wall),
      m_Tidied(now.steady) {
    m_Courier.SetChannels(m_Configuration.channels, now.steady);
}

void Service::Start(Moment now) {
    history::Restored restored;
    const history::Outcome outcome = m_Archive.Open(now.wall, restored);
    const std::size_t unread = m_Watch.Restore(restored.rows);
    ReadEvents();
    if (restored.document) {
        try {
            m_Criteria = CriteriaNow(now);
            m_Picture.SeeServer(inventory::Document::Read(restored.document->xml), m_Criteria,
                                restored.document->at);
            m_Document = std::move(restored.document->xml);
        } catch (const inventory::DocumentError&) {
            m_Log("the last answer that was kept cannot be read any more");
        }
    }
    for (const history::Delivery& delivery : restored.deliveries) {
        if (!m_Courier.Add(delivery.channel, delivery.event)) {
            (void)m_Archive.Settle(delivery.channel, {delivery.event.id},
                                   now.wall);  // It is told with the next one.
        }
    }
    if (unread > 0) {
        m_Log(std::to_string(unread) + " pieces of what was remembered cannot be read and are left out");
    }
    Tell({m_Watch.Started(
             now.wall, "watching " + (m_Configuration.host.empty() ? "this server" : m_Configuration.host) +
                           ", " + State())},
         now);
    Heed(outcome, now);
}

void Service::Configure(Configuration configuration, Moment now) {
    if (configuration.history != m_Configuration.history) {
        m_Log("the history stays where it is until the service is started anew");
        configuration.history = m_Configuration.history;
    }
    m_Configuration = std::move(configuration);
    m_Watch.SetRules(m_Configuration.rules);
    m_Schedule.Set(IntervalsOf(m_Configuration), now.steady);
    m_Courier.SetHost(m_Configuration.host);
    m_Courier.SetChannels(m_Configuration.channels, now.steady);
    TakeOutcomes(now);
}

void Service::KeepConfiguration(const std::string& why, Moment now) {
    TellTrouble(Level::Warning, "the new configuration is not taken up: " + why,
                "Mend it, see what mngsrvraidd --check-config says, and send SIGHUP again.", now);
}

void Service::Answered(const std::optional<calls::DrivePlace>& drive, const Answer& answer, Moment now) {
    m_State += drive ? 0U : 1U;  // A drive's answer is shown with the server's next one.
    if (!answer.failure.empty()) {
        if (!drive) {
            m_Inquiry = {now.wall, answer.failure, m_Inquiry ? m_Inquiry->failuresInARow + 1 : 1};
            Tell(m_Watch.FailedToAsk(answer.failure, now.wall), now);
            Tell(m_Watch.Remind(now.wall), now);
        } else {
            m_Log("no SMART data of the drive in enclosure " + drive->enclosure + " slot " + drive->slot +
                  " of controller " + drive->controller + ": " + answer.failure);
        }
        return;
    }
    try {
        if (drive) {
            m_Picture.SeeDrive({drive->controller, drive->enclosure, drive->slot,
                                inventory::Document::Read(answer.document)});
        } else {
            TakeServer(answer, now);
        }
    } catch (const inventory::DocumentError& error) {
        Answered(drive,
                 {.failure = std::string("what the module returned is no RAID document: ") + error.what()},
                 now);
    }
}

void Service::TakeServer(const Answer& answer, Moment now) {
    inventory::Document document = inventory::Document::Read(answer.document);
    m_Criteria = CriteriaNow(now);
    m_Document = answer.document;
    m_Inquiry = board::LastInquiry{now.wall};
    const inventory::Snapshot& snapshot = m_Picture.SeeServer(std::move(document), m_Criteria, now.wall);
    m_Picture.Latest()->runs = answer.runs;
    m_Schedule.SeeDrives(snapshot.TheServer(), now.steady);
    Tell(m_Watch.Take(snapshot, now.wall), now, &snapshot, answer.document);
    const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(now.steady - m_Tidied);
    m_Tidied = now.steady;
    Heed(m_Archive.Tidy(now.wall, elapsed), now);
}

inventory::Criteria Service::CriteriaNow(Moment now) {
    std::string trouble;
    if (!m_Configuration.expect) {
        m_Expectations.reset();
    } else {
        try {
            m_Expectations = inventory::ReadExpectations(basics::ReadFile(*m_Configuration.expect));
        } catch (const inventory::ExpectationsError& error) {
            trouble = *m_Configuration.expect + " holds no expectations: " + error.what();
        } catch (const basics::Failure& error) {
            trouble = error.what();
        }
    }
    if (trouble != m_ExpectTrouble) {
        m_ExpectTrouble = trouble;
        TellTrouble(trouble.empty() ? Level::Ok : Level::Warning,
                    trouble.empty() ? "what is expected can be read again"
                                    : trouble + "; what was read before counts",
                    trouble.empty() ? "" : "Mend the file.", now);
    }
    return {m_Expectations, m_Configuration.limits, basics::UtcText(now.wall, "%Y-%m-%d")};
}

std::vector<history::Delivery> Service::DeliveriesOf(const std::vector<Event>& events,
                                                     const std::string& exceptChannel) const {
    std::vector<history::Delivery> deliveries;
    for (const Event& event : events) {
        for (const telling::Channel& channel : m_Configuration.channels) {
            if (channel.name != exceptChannel && Wants(channel, event)) {
                deliveries.push_back({channel.name, event});
            }
        }
    }
    return deliveries;
}

void Service::Tell(std::vector<Event> events, Moment now, const inventory::Snapshot* snapshot,
                   std::string_view document) {
    history::Entry entry;
    entry.at = now.wall;
    entry.snapshot = snapshot;
    entry.document = document;
    entry.deliveries = DeliveriesOf(events, "");
    entry.events = std::move(events);
    entry.rows = m_Watch.Rows();
    Record(std::move(entry), now);
}

void Service::TellTrouble(Level level, const std::string& words, const std::string& advice, Moment now,
                          const std::string& exceptChannel) {
    history::Entry entry;
    entry.at = now.wall;
    entry.events = {m_Watch.TroubleWith(level, words, advice, now.wall)};
    entry.deliveries = DeliveriesOf(entry.events, exceptChannel);
    Record(std::move(entry), now);
}

// Stored first, and told then: what is told is never forgotten.
void Service::Record(history::Entry entry, Moment now) {
    for (const Event& event : entry.events) {
        Keep(event);
    }
    const history::Outcome outcome = m_Archive.Record(entry);
    for (const history::Delivery& delivery : entry.deliveries) {
        m_Courier.Add(delivery.channel, delivery.event);
    }
    Heed(outcome, now, true);
}

void Service::Keep(const Event& event) {
    constexpr std::size_t kMostEvents = 1000;
    m_Events.push_back({m_Events.empty() ? 1 : m_Events.back().number + 1, event});
    if (m_Events.size() > kMostEvents) {
        m_Events.pop_front();
    }
    ++m_State;
}

// Without a history that can be read clients see what happens from now on.
void Service::ReadEvents() {
    constexpr std::int64_t kMost = 1000;
    try {
        history::Reader reader(m_Configuration.history);
        for (history::NumberedEvent& each : reader.EventsAfter(reader.LastEvent() - kMost)) {
            m_Events.push_back({each.number, std::move(each.event)});
        }
    } catch (const basics::Failure&) {
        m_Events.clear();
    }
}

board::Report Service::TheReport() const {
    board::Report report{.number = m_State, .host = m_Configuration.host, .startedAt = m_StartedAt};
    if (const inventory::Snapshot* const snapshot = Latest()) {
        report.document = m_Document;
        report.takenAt = *snapshot->takenAt;
        report.runs = snapshot->runs;
        report.criteria = m_Criteria;
    }
    report.inquiry = m_Inquiry;
    for (const watch::Alarm& alarm : m_Watch.Alarms()) {
        report.alarms.push_back({alarm.since, alarm.finding, alarm.isVanished});
    }
    report.events.assign(m_Events.begin(), m_Events.end());
    return report;
}

std::vector<board::DriveReport> Service::SmartReports() const {
    std::vector<board::DriveReport> reports;
    if (const inventory::Snapshot* const snapshot = Latest()) {
        for (const inventory::DriveAnswer& each : snapshot->Answers()) {
            reports.push_back({each.controller, each.enclosure, each.slot, XmlOf(each.document)});
        }
    }
    return reports;
}

void Service::Heed(const history::Outcome& outcome, Moment now, bool isWritten) {
    for (const std::string& note : outcome.notes) {
        TellTrouble(Level::Warning, note, "", now);
    }
    const bool isNews =
        outcome.IsStored() ? isWritten && !m_ArchiveTrouble.empty() : outcome.trouble != m_ArchiveTrouble;
    if (!isNews) {
        return;
    }
    m_ArchiveTrouble = outcome.trouble;
    if (outcome.IsStored()) {
        TellTrouble(Level::Ok, "the history can be written again", "", now);
    } else {
        TellTrouble(Level::Warning, outcome.trouble + "; it is kept in memory until then",
                    "Make room, or give the service the right to write there.", now);
    }
}

void Service::Work(Moment now) {
    m_Courier.Work(now.steady);
    TakeOutcomes(now);
}

void Service::TakeOutcomes(Moment now) {
    using What = telling::Outcome::What;
    for (const telling::Outcome& outcome : m_Courier.Outcomes()) {
        switch (outcome.what) {
            case What::Delivered:
            case What::Dropped:
                Heed(m_Archive.Settle(outcome.channel, {outcome.id}, now.wall), now);
                break;
            case What::Failed:
                if (outcome.attempts == 1) {
                    TellTrouble(Level::Warning,
                                "the channel " + outcome.channel + " is down: " + outcome.words,
                                "What it was to tell is kept, and tried again.", now, outcome.channel);
                }
                break;
            case What::Recovered:
                TellTrouble(Level::Ok, "the channel " + outcome.channel + " works again", "", now,
                            outcome.channel);
                break;
        }
    }
}

std::optional<std::chrono::steady_clock::time_point> Service::NextDue(bool isAsking) const {
    std::optional<std::chrono::steady_clock::time_point> next = m_Courier.NextDue();
    if (!isAsking) {
        next = std::min(next.value_or(m_Schedule.NextDue()), m_Schedule.NextDue());
    }
    return next;
}

void Service::Stop(Moment now) {
    m_Courier.Stop(now.steady);
}

std::string Service::State() const {
    const inventory::Snapshot* const snapshot = Latest();
    const std::size_t alarms = m_Watch.Alarms().size();
    std::string state = "not asked yet";
    if (snapshot != nullptr) {
        const inventory::Health& health = snapshot->TheHealth();
        state = std::string(NameOf(health.level)) + " at " + basics::UtcText(*snapshot->takenAt) + ": " +
                Headline(health);
    }
    return state + ", " + std::to_string(alarms) + (alarms == 1 ? " alarm" : " alarms");
}

}  // namespace service
