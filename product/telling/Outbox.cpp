#include "Outbox.h"

#include "HttpPost.h"
#include "JournalEntry.h"
#include "MailText.h"
#include "Message.h"
#include "ProgramRun.h"
#include "basics/Duration.h"
#include "basics/Failure.h"

#include <sys/wait.h>

#include <algorithm>
#include <utility>
#include <variant>

namespace telling {
namespace {

using std::chrono::seconds;

constexpr seconds kTimeToEnd{2};

/// What a child process has to do, of those channels that need one.
struct ToDo {
    const Message& message;

    Errand::Work operator()(const Journal& /*journal*/) const { return nullptr; }

    Errand::Work operator()(const Exec& exec) const {
        return [run = ProgramRun{exec.program, exec.arguments, JsonLineOf(message), FieldsOf(message)}](
                   const Errand::Say& say) { return run.Run(say); };
    }

    Errand::Work operator()(const Mail& mail) const {
        return [run = ProgramRun{mail.program, {"-t", "-oi"}, MailTextOf(mail, message)}](
                   const Errand::Say& say) { return run.Run(say); };
    }

    Errand::Work operator()(const Http& http) const {
        return [&http, post = message](const Errand::Say& say) { return Post(http, post, say); };
    }
};

struct TimeLimit {
    seconds operator()(const Journal& /*journal*/) const { return seconds(0); }
    template <typename Way>
    seconds operator()(const Way& way) const {
        return way.timeLimit;
    }
};

}  // namespace

Courier::Outbox::Outbox(Channel channel, const Manner& manner, std::vector<Outcome>& outcomes)
    : m_Channel(std::move(channel)), m_Manner(manner), m_Outcomes(outcomes) {}

void Courier::Outbox::Change(const Channel& channel, SteadyTime now) {
    if (channel == m_Channel) {
        return;
    }
    m_Channel = channel;
    m_NextTry = now;
    DropToFit();
}

void Courier::Outbox::Add(const watch::Event& event) {
    const bool isThere = std::any_of(m_Events.begin(), m_Events.end(),
                                     [&event](const watch::Event& each) { return each.id == event.id; });
    if (!isThere) {
        m_Events.push_back(event);
        DropToFit();
    }
}

// What is on its way may have arrived already.
void Courier::Outbox::DropToFit() {
    const auto first = static_cast<std::ptrdiff_t>(IsUnderWay() ? 1 : 0);
    while (m_Events.size() > std::max<std::size_t>(m_Channel.capacity, 1)) {
        const auto least = std::min_element(m_Events.begin() + first, m_Events.end(),
                                            [](const watch::Event& one, const watch::Event& other) {
                                                return watch::WeightOf(one) < watch::WeightOf(other);
                                            });
        Drop(static_cast<std::size_t>(least - m_Events.begin()),
             "more than " + std::to_string(m_Channel.capacity) + " events wait for it");
        ++m_Dropped;
    }
}

void Courier::Outbox::Drop(std::size_t number, const std::string& why) {
    const auto at = m_Events.begin() + static_cast<std::ptrdiff_t>(number);
    Tell(Outcome::What::Dropped, at->id, why);
    m_Events.erase(at);
}

void Courier::Outbox::DropAll(const std::string& why) {
    m_Errand.reset();
    while (!m_Events.empty()) {
        Drop(0, why);
    }
}

void Courier::Outbox::Work(SteadyTime now) {
    if (!IsUnderWay()) {
        // A channel that needs no process has delivered when it returns.
        while (!m_Events.empty() && !IsUnderWay() && !m_IsStopped && now >= m_NextTry) {
            Start(now);
        }
    } else if (now >= m_End && m_IsAskedToEnd) {
        m_Errand->Kill();
        m_End = now + kTimeToEnd;  // once more, should anything have got away
    } else if (now >= m_End) {
        AskToEnd(now);
    }
}

void Courier::Outbox::Start(SteadyTime now) {
    const Message message{m_Events.front(), m_Manner.host, m_Dropped};
    m_DroppedToTell = m_Dropped;
    m_IsAskedToEnd = false;
    if (const auto* const journal = std::get_if<Journal>(&m_Channel.way)) {
        const std::string words = telling::Tell(*journal, message);
        Finish(words.empty(), words, now);
        return;
    }
    try {
        m_TimeLimit = std::visit(TimeLimit{}, m_Channel.way);
        m_Errand.emplace(std::visit(ToDo{message}, m_Channel.way));
        m_End = now + m_TimeLimit;
    } catch (const basics::Failure& error) {
        m_Errand.reset();
        Finish(false, error.what(), now);
    }
}

void Courier::Outbox::AskToEnd(SteadyTime now) {
    m_Errand->AskToEnd();
    m_IsAskedToEnd = true;
    m_End = now + kTimeToEnd;
}

void Courier::Outbox::Stop(SteadyTime now) {
    m_IsStopped = true;
    if (IsUnderWay() && !m_IsAskedToEnd) {
        AskToEnd(now);
    }
}

void Courier::Outbox::Ended(int status, SteadyTime now) {
    const std::string said = m_Errand->Said();
    m_Errand->HasEnded();
    m_Errand.reset();
    const bool isDelivered = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    std::string words;
    if (!isDelivered && m_IsAskedToEnd) {
        words = m_IsStopped ? "it was ended with the service"
                            : "it took longer than " + basics::DurationText(m_TimeLimit) + " and was ended";
    } else if (WIFSIGNALED(status)) {
        words = "its process was ended by signal " + std::to_string(WTERMSIG(status));
    }
    words += words.empty() || said.empty() ? said : ": " + said;
    Finish(isDelivered, words, now);
}

void Courier::Outbox::Finish(bool isDelivered, const std::string& words, SteadyTime now) {
    isDelivered ? Succeed(words) : Fail(words.empty() ? "it failed without a word" : words, now);
}

void Courier::Outbox::Succeed(const std::string& words) {
    Tell(Outcome::What::Delivered, m_Events.front().id, words);
    m_Events.pop_front();
    m_Dropped -= m_DroppedToTell;
    if (m_Failures > 0) {
        Tell(Outcome::What::Recovered, "", words);
        m_Failures = 0;
    }
}

void Courier::Outbox::Fail(const std::string& words, SteadyTime now) {
    if (m_IsStopped) {
        return;  // It was not the channel's fault.
    }
    ++m_Failures;
    const auto pause = Pause();
    m_NextTry = now + pause;
    Tell(Outcome::What::Failed, m_Events.front().id, words);
    m_Outcomes.back().nextTry = std::chrono::ceil<seconds>(pause);
}

std::chrono::steady_clock::duration Courier::Outbox::Pause() const {
    constexpr double kShareOfChance = 0.1;
    seconds pause = m_Manner.firstPause;
    for (unsigned failure = 1; failure < m_Failures && pause < m_Manner.longestPause; ++failure) {
        pause *= 2;
    }
    const std::chrono::duration<double> whole = std::min(pause, m_Manner.longestPause);
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        whole * (1 - kShareOfChance * m_Manner.chance()));
}

void Courier::Outbox::Tell(Outcome::What what, const std::string& id, const std::string& words) {
    m_Outcomes.push_back(
        {.what = what, .channel = m_Channel.name, .id = id, .words = words, .attempts = m_Failures});
}

std::optional<SteadyTime> Courier::Outbox::NextDue() const {
    if (IsUnderWay()) {
        return m_End;
    }
    return m_Events.empty() || m_IsStopped ? std::nullopt : std::optional(m_NextTry);
}

std::optional<pid_t> Courier::Outbox::Process() const {
    return m_Errand ? std::optional(m_Errand->Process()) : std::nullopt;
}

}  // namespace telling
