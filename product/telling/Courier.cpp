#include "telling/Courier.h"

#include "Outbox.h"

#include <algorithm>
#include <random>
#include <utility>

namespace telling {
namespace {

double RandomShare() {
    std::random_device source;
    return std::uniform_real_distribution<double>(0, 1)(source);
}

}  // namespace

Courier::Courier(Manner manner) : m_Manner(std::move(manner)) {
    if (!m_Manner.chance) {
        m_Manner.chance = RandomShare;
    }
}

Courier::~Courier() = default;

void Courier::SetChannels(const std::vector<Channel>& channels, SteadyTime now) {
    std::vector<std::unique_ptr<Outbox>> before = std::exchange(m_Outboxes, {});
    for (const Channel& channel : channels) {
        const auto known = std::find_if(before.begin(), before.end(), [&channel](const auto& each) {
            return each != nullptr && each->About().name == channel.name;
        });
        if (known == before.end()) {
            m_Outboxes.push_back(std::make_unique<Outbox>(channel, m_Manner, m_Outcomes));
        } else {
            (*known)->Change(channel, now);
            m_Outboxes.push_back(std::move(*known));
        }
    }
    for (const auto& gone : before) {
        if (gone != nullptr) {
            gone->DropAll("there is no such channel any more");
        }
    }
}

Courier::Outbox* Courier::Find(const std::string& channel) const {
    const auto found = std::find_if(m_Outboxes.begin(), m_Outboxes.end(),
                                    [&channel](const auto& each) { return each->About().name == channel; });
    return found == m_Outboxes.end() ? nullptr : found->get();
}

bool Courier::Add(const std::string& channel, const watch::Event& event) {
    Outbox* const outbox = Find(channel);
    if (outbox != nullptr) {
        outbox->Add(event);
    }
    return outbox != nullptr;
}

void Courier::Work(SteadyTime now) {
    for (const auto& outbox : m_Outboxes) {
        outbox->Work(now);
    }
}

bool Courier::Ended(pid_t process, int status, SteadyTime now) {
    const auto found = std::find_if(m_Outboxes.begin(), m_Outboxes.end(),
                                    [process](const auto& each) { return each->Process() == process; });
    if (found != m_Outboxes.end()) {
        (*found)->Ended(status, now);
    }
    return found != m_Outboxes.end();
}

std::optional<SteadyTime> Courier::NextDue() const {
    std::optional<SteadyTime> next;
    for (const auto& outbox : m_Outboxes) {
        const std::optional<SteadyTime> due = outbox->NextDue();
        next = due && (!next || *due < *next) ? due : next;
    }
    return next;
}

std::vector<Outcome> Courier::Outcomes() {
    return std::exchange(m_Outcomes, {});
}

void Courier::Stop(SteadyTime now) {
    for (const auto& outbox : m_Outboxes) {
        outbox->Stop(now);
    }
}

std::vector<pid_t> Courier::Processes() const {
    std::vector<pid_t> processes;
    for (const auto& outbox : m_Outboxes) {
        if (const std::optional<pid_t> process = outbox->Process()) {
            processes.push_back(*process);
        }
    }
    return processes;
}

std::size_t Courier::WaitingFor(const std::string& channel) const {
    const Outbox* const outbox = Find(channel);
    return outbox == nullptr ? 0 : outbox->Waiting();
}

}  // namespace telling
