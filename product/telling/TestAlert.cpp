#include "telling/TestAlert.h"

#include "basics/Descriptor.h"
#include "basics/Processes.h"
#include "telling/Courier.h"
#include "watch/Watch.h"

#include <poll.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>

namespace telling {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

void WaitForAny(const std::vector<pid_t>& processes, const std::optional<SteadyTime>& until) {
    std::vector<basics::Descriptor> opened;
    std::vector<pollfd> watched;
    for (const pid_t process : processes) {
        opened.push_back(basics::OpenProcess(process));
        watched.push_back({opened.back().Number(), POLLIN, 0});
    }
    const auto left =
        until ? std::chrono::ceil<milliseconds>(*until - steady_clock::now()) : milliseconds(-1);
    constexpr milliseconds kDay{24 * 3600 * 1000};
    (void)::poll(watched.data(), watched.size(),
                 until ? static_cast<int>(std::clamp(left, milliseconds(0), kDay).count()) : -1);
}

void Reap(Courier& courier) {
    for (const pid_t process : courier.Processes()) {
        int status = 0;
        if (::waitpid(process, &status, WNOHANG) == process) {
            (void)courier.Ended(process, status, steady_clock::now());
        }
    }
}

}  // namespace

watch::Event MakeTestEvent(const std::string& host, watch::TimePoint now) {
    watch::Event event;
    event.id = watch::RandomId(now);
    event.at = now;
    event.kind = watch::EventKind::Test;
    event.words = "a test of the channels" + (host.empty() ? "" : " of " + host);
    event.advice = "Nothing is to be done: whoever reads this will be told when something is.";
    return event;
}

std::vector<TestAnswer> TestAlert(const std::vector<Channel>& channels, const watch::Event& event,
                                  const std::string& host,
                                  const std::function<void(const TestAnswer&)>& hear) {
    constexpr std::chrono::hours kNever{24 * 365};
    const auto start = steady_clock::now();
    Courier courier({.host = host, .firstPause = kNever, .longestPause = kNever});
    courier.SetChannels(channels, start);
    std::vector<TestAnswer> answers;
    for (const Channel& channel : channels) {
        courier.Add(channel.name, event);
        answers.push_back({.channel = channel.name});
    }
    for (std::size_t missing = answers.size(); missing > 0;) {
        courier.Work(steady_clock::now());
        for (const Outcome& outcome : courier.Outcomes()) {
            const auto answer =
                std::find_if(answers.begin(), answers.end(),
                             [&outcome](const TestAnswer& each) { return each.channel == outcome.channel; });
            answer->isDelivered = outcome.what == Outcome::What::Delivered;
            answer->words = outcome.words;
            answer->taken = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
            --missing;
            if (hear) {
                hear(*answer);
            }
        }
        if (missing > 0) {
            WaitForAny(courier.Processes(), courier.NextDue());
            Reap(courier);
        }
    }
    return answers;
}

}  // namespace telling
