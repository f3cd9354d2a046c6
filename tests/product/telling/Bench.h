#pragma once

#include "Message.h"
#include "basics/Processes.h"
#include "basics/Time.h"
#include "inventory/Finding.h"
#include "telling/Courier.h"
#include "test_support/Processes.h"
#include "test_support/TempFolder.h"
#include "test_support/Waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace telling::test {

using inventory::Level;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testsupport::TempFolder;
using What = Outcome::What;

inline watch::Event MakeEvent(const std::string& id, Level level = Level::Critical) {
    watch::Event event;
    event.id = id;
    event.at = *basics::TimeFromUtcText("2031-04-05T06:07:08Z");
    event.kind = watch::EventKind::Began;
    event.level = level;
    event.about.kind = inventory::PartKind::Drive;
    event.about.controller = "0";
    event.about.group = "RG1";
    event.about.part = "PD9";
    event.about.enclosure = "16";
    event.about.slot = "1";
    event.about.product = "TF600S15";
    event.about.serial = "7K00025200C4";
    event.about.what = "FAILED";
    event.words = "controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED";
    event.advice = "Replace it.";
    return event;
}

inline Message MakeMessage(
    const std::string& words = "controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED") {
    Message message{MakeEvent("20310405T060708Z-3f2a9c41"), "storage7"};
    message.event.words = words;
    return message;
}

/// A program made of a shell's lines.
inline std::string MakeScript(const TempFolder& folder, const std::string& name, const std::string& lines) {
    folder.Write(name, "#!/bin/sh\n" + lines);
    std::filesystem::permissions(folder / name, std::filesystem::perms::owner_all);
    return folder / name;
}

inline Channel ExecChannel(const std::string& name, const std::string& program,
                           const std::vector<std::string>& arguments = {}) {
    return {.name = name, .way = Exec{.program = program, .arguments = arguments}};
}

/// A courier with its owner, whose clock stands still until a test moves it on.
struct Bench {
    explicit Bench(const std::vector<Channel>& channels,
                   Manner manner = {.host = "storage7", .chance = [] { return 0.0; }})
        : courier(std::move(manner)) {
        courier.SetChannels(channels, now);
    }

    void Add(const std::string& channel, const std::string& id, Level level = Level::Critical) {
        EXPECT_TRUE(courier.Add(channel, MakeEvent(id, level)));
    }

    void Work() {
        courier.Work(now);
        Take();
    }

    /// Until nothing runs and nothing is due.
    void Settle() {
        for (Work(); !courier.Processes().empty(); Work()) {
            WaitForOne();
        }
    }

    /// A child that ends.
    void WaitForOne() {
        std::vector<basics::Descriptor> opened;
        std::vector<pollfd> watched;
        const std::vector<pid_t> processes = courier.Processes();
        for (const pid_t process : processes) {
            opened.push_back(basics::OpenProcess(process));
            watched.push_back({opened.back().Number(), POLLIN, 0});
        }
        constexpr int kPatience = 120'000;
        ASSERT_GT(::poll(watched.data(), watched.size(), kPatience), 0) << "nobody ends";
        EXPECT_TRUE(
            std::any_of(processes.begin(), processes.end(), [this](pid_t process) { return Reap(process); }));
        Take();
    }

    bool Reap(pid_t process) {
        int status = 0;
        return ::waitpid(process, &status, WNOHANG) == process && courier.Ended(process, status, now);
    }

    void Take() {
        const std::vector<Outcome> more = courier.Outcomes();
        outcomes.insert(outcomes.end(), more.begin(), more.end());
    }

    /// Those of one kind, as "channel id".
    [[nodiscard]] std::vector<std::string> Which(What what) const {
        std::vector<std::string> found;
        for (const Outcome& outcome : outcomes) {
            if (outcome.what == what) {
                found.push_back(outcome.channel + (outcome.id.empty() ? "" : ' ' + outcome.id));
            }
        }
        return found;
    }

    /// What the last one was, in words.
    [[nodiscard]] std::string LastWords() const {
        return outcomes.empty() ? "nothing happened" : outcomes.back().words;
    }

    SteadyTime now{std::chrono::hours(1000)};
    std::vector<Outcome> outcomes;
    Courier courier;
};

}  // namespace telling::test
