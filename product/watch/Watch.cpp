#include "watch/Watch.h"

#include "Codec.h"
#include "Parts.h"
#include "basics/Time.h"
#include "basics/Words.h"
#include "inventory/Measure.h"

#include <algorithm>
#include <array>
#include <random>
#include <utility>

namespace watch {
namespace {

using inventory::Finding;
using inventory::Level;
using inventory::Rule;
using std::chrono::hours;

constexpr hours kDay{24};
constexpr const char* kAsking = "asking";
constexpr const char* kNothing = "nothing";
constexpr unsigned kMissingToTell = 2;          // One report may be lost.
constexpr unsigned kMissingToForget = 100'000;  // a year of every five minutes

/// What is wrong may be told in other words each time, such as a temperature; then they alone are no news.
bool AreWordsNews(const Finding& finding) {
    return finding.rule != Rule::Temperature && finding.rule != Rule::MediaErrors &&
           finding.rule != Rule::MediaErrorGrowth && finding.rule != Rule::Spares;
}

bool NeedsPart(const Finding& finding) {
    return finding.rule == Rule::State || finding.rule == Rule::Repetition ||
           finding.rule == Rule::Temperature || finding.rule == Rule::MediaErrors;
}

std::string AlarmKey(const std::string& part, const Finding& finding) {
    return part + "|" + std::string(NameOf(finding.rule));
}

std::string WordsOf(const Finding& finding) {
    const std::string identity = IdentityOf(finding);
    return PlaceOf(finding) + (finding.what.empty() ? "" : ": " + finding.what) +
           (identity.empty() ? "" : " (" + identity + ")");
}

}  // namespace

std::string RandomId(TimePoint now) {
    static thread_local std::random_device device;
    return basics::UtcText(now, "%Y%m%dT%H%M%SZ-") + basics::Digits(device(), 8, 16);
}

Watch::Watch(Rules rules, IdSource ids) : m_Rules(rules), m_Ids(std::move(ids)) {}

Event& Watch::Tell(EventKind kind, const Finding& about, TimePoint now) {
    Event& event = m_Events.emplace_back();
    event.id = m_Ids(now);
    event.at = now;
    event.kind = kind;
    event.about = about;
    event.words = WordsOf(about);
    return event;
}

// A clock that has been put back must not put anything off for longer than it takes.
void Watch::SetBackTo(TimePoint now) {
    for (auto& [key, alarm] : m_Alarms) {
        alarm.told = std::min(alarm.told, now);
        alarm.wellSince = alarm.wellSince ? std::optional(std::min(*alarm.wellSince, now)) : std::nullopt;
        alarm.ended = alarm.ended ? std::optional(std::min(*alarm.ended, now)) : std::nullopt;
    }
    for (auto& [key, growth] : m_Growths) {
        growth.since = std::min(growth.since, now);
    }
    m_LastReminder = m_LastReminder ? std::optional(std::min(*m_LastReminder, now)) : std::nullopt;
}

std::vector<Event> Watch::Told() {
    return std::exchange(m_Events, {});
}

Event Watch::Started(TimePoint now, const std::string& words) {
    Tell(EventKind::Started, {}, now).words = words;
    return Told().front();
}

Event Watch::TroubleWith(Level level, const std::string& words, const std::string& advice, TimePoint now) {
    Event& event = Tell(EventKind::Trouble, {}, now);
    event.level = level;
    event.words = words;
    event.advice = advice;
    return Told().front();
}

std::vector<Event> Watch::Take(const inventory::Snapshot& snapshot, TimePoint now) {
    SetBackTo(now);
    const Present present(snapshot);
    m_Failures = 0;
    m_LastFailure.clear();
    if (const auto asking = m_Alarms.find(kAsking); asking != m_Alarms.end() && !asking->second.ended) {
        End(asking->second, "the server answers again", now);
    }
    CompareParts(present, now);
    CompareFindings(present, snapshot.TheHealth(), now);
    CountGrowth(present, now);
    Forget(now);
    m_LastAnswer = now;
    std::vector<Event> told = Told();
    for (Event& event : Remind(now)) {
        told.push_back(std::move(event));
    }
    return told;
}

// The first time that everything is seen is no news; afterwards what is new is.
void Watch::CompareParts(const Present& present, TimePoint now) {
    const bool isFirst = m_Parts.empty();
    for (auto& [key, known] : m_Parts) {
        ++known.missing;
    }
    std::unordered_set<std::string> newControllers;
    for (const SeenPart& part : present.parts) {
        const auto [at, isNew] = m_Parts.try_emplace(part.key, KnownPart{part.key, part.place, part.about});
        KnownPart& known = at->second;
        const bool isController = part.about.kind == inventory::PartKind::Controller;
        if (isNew || known.isGone) {
            const bool isOfNew = newControllers.contains(part.about.controller);
            if (isController) {
                newControllers.insert(part.about.controller);
            }
            if (!isFirst && !isOfNew) {
                Event& event = Tell(EventKind::Came, part.about, now);
                event.words += isNew ? ": new" : ": is back";
            }
        } else if (known.place != part.place && known.missing > 0) {
            Event& event = Tell(EventKind::Moved, part.about, now);
            event.words += ": moved, it was " + PlaceOf(known.about);
        }
        known = {part.key, part.place, part.about};
    }
    std::unordered_set<std::string> lostControllers;
    const auto tellGone = [&](bool areControllers) {
        for (auto& [key, known] : m_Parts) {
            const bool isController = known.about.kind == inventory::PartKind::Controller;
            if (known.missing < kMissingToTell || known.isGone || isController != areControllers) {
                continue;
            }
            known.isGone = true;
            if (isController) {
                lostControllers.insert(known.about.controller);
            } else if (lostControllers.contains(known.about.controller)) {
                continue;  // It went with its controller.
            }
            Event& event = Tell(EventKind::Went, known.about, now);
            event.level = Level::Warning;
            event.words += ": is in no report any more";
            event.advice = "Find out whether it was pulled, and whether that was meant.";
        }
    };
    tellGone(true);
    tellGone(false);
}

void Watch::CompareFindings(const Present& present, const inventory::Health& health, TimePoint now) {
    std::unordered_set<std::string> found;
    for (const Finding& finding : health.findings) {
        const std::string key = AlarmKey(present.KeyOf(finding), finding);
        found.insert(key);
        if (!finding.isAccepted) {
            Raise(present, finding, now);
        } else if (const auto alarm = m_Alarms.find(key); alarm != m_Alarms.end() && !alarm->second.ended) {
            End(alarm->second, WordsOf(finding) + ": " + AcceptanceNoteOf(finding), now);
        }
    }
    if (health.findings.empty() && health.level != Level::Ok) {
        Finding nothing;
        nothing.level = health.level;
        nothing.part = "the server";
        nothing.what = Headline(health);
        found.insert(kNothing);
        RaiseItself(kNothing, nothing, now);
    }
    Settle(present, found, now);
}

void Watch::Raise(const Present& present, const Finding& finding, TimePoint now) {
    const std::string part = present.KeyOf(finding);
    const std::string key = AlarmKey(part, finding);
    const auto [at, isNew] = m_Alarms.try_emplace(key);
    Alarm& alarm = at->second;
    const bool hasEnded = alarm.ended.has_value();
    const Level before = isNew || hasEnded ? Level::Ok : alarm.finding.level;
    const bool isNews = isNew || hasEnded || before != finding.level ||
                        (AreWordsNews(finding) && alarm.finding.what != finding.what);
    if (isNew || hasEnded) {
        alarm.returns = hasEnded ? alarm.returns + 1 : 0;
        alarm.since = now;
    }
    alarm.key = key;
    alarm.part = part;
    alarm.place = Present::PlaceOf(finding);
    alarm.finding = finding;
    alarm.wellSince.reset();
    alarm.ended.reset();
    alarm.isVanished = false;
    if (isNews) {
        alarm.told = now;
        Event& event = Tell(isNew || hasEnded ? EventKind::Began : EventKind::Changed, finding, now);
        event.level = finding.level;
        event.before = before;
        event.advice = AdviceFor(finding);
    }
}

// Null where it is no news.
Event* Watch::RaiseItself(const char* key, const Finding& finding, TimePoint now) {
    Alarm alarm = {key, "", "", finding, now, now};
    const auto [at, isNew] = m_Alarms.try_emplace(key, alarm);
    if (!isNew && !at->second.ended) {
        at->second.finding = finding;
        at->second.wellSince.reset();
        return nullptr;
    }
    at->second = alarm;
    Event& event = Tell(EventKind::Began, finding, now);
    event.level = finding.level;
    event.advice = AdviceFor(finding);
    return &event;
}

// An alarm whose part is in no report stands: that a failed drive was pulled makes nothing well.
void Watch::Settle(const Present& present, const std::unordered_set<std::string>& found, TimePoint now) {
    for (auto& [key, alarm] : m_Alarms) {
        if (alarm.ended || found.contains(key) || key == kAsking) {
            continue;
        }
        bool isWell = key == kNothing || !NeedsPart(alarm.finding) || present.Find(alarm.part) != nullptr;
        if (!isWell && alarm.finding.kind == inventory::PartKind::Drive) {
            // Another drive in its place does as well, once that and its group are well.
            const SeenPart* const other = present.At(alarm.place);
            isWell = other != nullptr && other->health == Level::Ok &&
                     (other->group == nullptr || other->group->health == Level::Ok);
            alarm.isVanished = other == nullptr;
        } else {
            alarm.isVanished = !isWell;
        }
        if (isWell) {
            Calm(alarm, now);
        } else {
            alarm.wellSince.reset();
        }
    }
}

// What comes back again and again has to be well for longer each time.
void Watch::Calm(Alarm& alarm, TimePoint now) {
    alarm.wellSince = alarm.wellSince.value_or(now);
    std::chrono::seconds calm = m_Rules.calm;
    for (unsigned times = 0; times < alarm.returns && calm < kDay; ++times) {
        calm *= 2;
    }
    if (now - *alarm.wellSince >=
        std::min<std::chrono::seconds>(calm, std::max<std::chrono::seconds>(kDay, m_Rules.calm))) {
        End(alarm, WordsOf(alarm.finding) + ": well again", now);
    }
}

void Watch::End(Alarm& alarm, const std::string& words, TimePoint now) {
    Event& event = Tell(EventKind::Ended, alarm.finding, now);
    event.before = alarm.finding.level;
    event.words = words;
    alarm.ended = now;
    alarm.wellSince.reset();
    alarm.isVanished = false;
}

std::vector<Event> Watch::FailedToAsk(const std::string& why, TimePoint now) {
    SetBackTo(now);
    ++m_Failures;
    if (m_LastFailure != why) {
        m_LastFailure = why;
        Tell(EventKind::InquiryFailed, {}, now).words = "the server could not be asked: " + why;
    }
    if (m_Failures >= m_Rules.failuresToTell) {
        Finding finding;
        finding.part = "the server";
        const bool isFirst = m_Rules.failuresToTell == 1;
        finding.what = "cannot be asked" +
                       (isFirst ? "" : ", " + std::to_string(m_Rules.failuresToTell) + " times in a row") +
                       ": " + why;
        if (Event* const event = RaiseItself(kAsking, finding, now)) {
            event->words += m_LastAnswer ? "; the last answer is from " + basics::UtcText(*m_LastAnswer)
                                         : "; it has never answered";
            event->advice = "Run mngsrvraid show there, and see what it says.";
        }
    }
    Forget(now);
    return Told();
}

// One for all: a person wants to know that there is still something, not each of it every day.
std::vector<Event> Watch::Remind(TimePoint now) {
    SetBackTo(now);
    std::vector<const Alarm*> due;
    bool isDue = false;
    for (const auto& [key, alarm] : m_Alarms) {
        if (!alarm.ended && alarm.finding.level == Level::Critical) {
            due.push_back(&alarm);
            const TimePoint last = std::max(alarm.told, m_LastReminder.value_or(alarm.told));
            isDue = isDue || now - last >= m_Rules.reminder;
        }
    }
    if (!isDue) {
        return {};
    }
    m_LastReminder = now;
    Event& event = Tell(EventKind::Reminder, due.front()->finding, now);
    event.level = event.before = Level::Critical;
    event.words = "still " + basics::Joined(due, "; ", [](const Alarm* alarm) {
                      return WordsOf(alarm->finding) +
                             (alarm->isVanished ? ", and in no report any more" : "") + ", since " +
                             basics::UtcText(alarm->since);
                  });
    event.advice = AdviceFor(due.front()->finding);
    return Told();
}

void Watch::CountGrowth(const Present& present, TimePoint now) {
    for (const SeenPart& part : present.parts) {
        if (part.drive != nullptr) {
            CountGrowth(part.key, part.about, "media errors", part.drive->mediaErrors, m_Rules.mediaErrors,
                        now);
            CountGrowth(part.key, part.about, "other errors", part.drive->otherErrors, m_Rules.otherErrors,
                        now);
            CountGrowth(part.key, part.about, "predicted failures", part.drive->predictiveFailures,
                        m_Rules.predictiveFailures, now);
        }
    }
}

void Watch::CountGrowth(const std::string& drive, const Finding& about, const char* counter,
                        const std::string& told, std::uint64_t most, TimePoint now) {
    const std::optional<std::uint64_t> count = inventory::CountFrom(told);
    if (!count) {
        return;
    }
    const std::string key = drive + "|" + counter;
    Growth& growth = m_Growths.try_emplace(key, Growth{key, now, *count}).first->second;
    if (*count > growth.first && *count - growth.first > most && !growth.isTold) {
        growth.isTold = true;
        Event& event = Tell(EventKind::Grew, about, now);
        event.level = Level::Warning;
        event.words += ": " + std::string(counter) + " from " + std::to_string(growth.first) + " to " +
                       std::to_string(*count) + " since " + basics::UtcText(growth.since);
        event.about.what = std::string(counter) + " " + std::to_string(*count);
        event.advice = "Have a drive at hand: one whose errors grow is about to fail.";
    } else if (*count < growth.first || now - growth.since >= kDay) {  // It may have been cleared.
        growth = {key, now, *count};
    }
}

void Watch::Forget(TimePoint now) {
    std::erase_if(m_Alarms,
                  [now](const auto& each) { return each.second.ended && now - *each.second.ended >= kDay; });
    std::erase_if(m_Parts, [](const auto& each) { return each.second.missing >= kMissingToForget; });
    std::erase_if(m_Growths, [this](const auto& each) {
        return !m_Parts.contains(each.first.substr(0, each.first.find('|')));
    });
}

std::vector<Alarm> Watch::Alarms() const {
    std::vector<Alarm> alarms;
    for (const auto& [key, alarm] : m_Alarms) {
        if (!alarm.ended) {
            alarms.push_back(alarm);
        }
    }
    std::stable_sort(alarms.begin(), alarms.end(), [](const Alarm& one, const Alarm& other) {
        return one.finding.level > other.finding.level;
    });
    return alarms;
}

}  // namespace watch
