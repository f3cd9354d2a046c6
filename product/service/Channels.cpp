#include "Channels.h"

#include "Section.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace service {
namespace {

using inventory::Level;
using std::chrono::seconds;

constexpr std::array<std::pair<std::string_view, Level>, 4> kLevels = {{{"ok", Level::Ok},
                                                                        {"unknown", Level::Unknown},
                                                                        {"warning", Level::Warning},
                                                                        {"critical", Level::Critical}}};
constexpr seconds kMostTime{3600};

telling::Exec ExecFrom(Section& section) {
    telling::Exec exec;
    section.Take("program", exec.program);
    section.Take("arguments", exec.arguments);
    section.Take("timeout", exec.timeLimit, seconds(1), kMostTime);
    return exec;
}

telling::Mail MailFrom(Section& section) {
    telling::Mail mail;
    section.Take("to", mail.recipients);
    section.Take("from", mail.sender);
    section.Take("program", mail.program);
    section.Take("timeout", mail.timeLimit, seconds(1), kMostTime);
    return mail;
}

telling::Http HttpFrom(Section& section) {
    telling::Http http;
    section.Take("url", http.url);
    section.Take("ca_file", http.authorityFile);
    section.Take("headers", http.headers);
    section.Take("headers_file", http.headersFile);
    section.Take("plain", http.mayBePlain);
    section.Take("timeout", http.timeLimit, seconds(1), kMostTime);
    return http;
}

telling::Journal JournalFrom(Section& section) {
    telling::Journal journal;
    section.Take("stderr", journal.usesStandardError);
    return journal;
}

Level LeastFrom(Section& section) {
    std::string word = "unknown";
    section.Take("level", word);
    const auto* const level = std::find_if(kLevels.begin(), kLevels.end(),
                                           [&word](const auto& each) { return each.first == word; });
    if (level == kLevels.end()) {
        section.Complain("level", "it is \"ok\", \"unknown\", \"warning\" or \"critical\"");
        return Level::Unknown;
    }
    return level->second;
}

telling::Channel ChannelFrom(Section& section) {
    constexpr std::uint64_t kMostWaiting = 100'000;
    telling::Channel channel;
    std::string kind;
    section.Take("kind", kind);
    if (kind == "exec") {
        channel.way = ExecFrom(section);
    } else if (kind == "mail") {
        channel.way = MailFrom(section);
    } else if (kind == "http") {
        channel.way = HttpFrom(section);
    } else if (kind == "journal") {
        channel.way = JournalFrom(section);
    } else {
        section.Complain("kind", "it is \"journal\", \"exec\", \"mail\" or \"http\"");
    }
    channel.name = kind;
    section.Take("name", channel.name);
    channel.least = LeastFrom(section);
    section.TakeCount("queue", channel.capacity, 1, kMostWaiting);
    for (const telling::Fault& fault : FaultsOf(channel)) {
        section.Complain(fault.key.c_str(), fault.words);
    }
    section.End();
    return channel;
}

}  // namespace

std::vector<telling::Channel> TakeChannels(Section& file) {
    std::vector<telling::Channel> channels;
    for (Section& section : file.Each("channel")) {
        telling::Channel channel = ChannelFrom(section);
        const bool isThere = std::any_of(channels.begin(), channels.end(),
                                         [&](const auto& each) { return each.name == channel.name; });
        if (isThere) {
            section.Complain("name", "another channel has this name");
        }
        channels.push_back(std::move(channel));
    }
    if (channels.empty()) {
        telling::Channel journal;
        journal.name = "journal";
        channels.push_back(std::move(journal));
    }
    return channels;
}

}  // namespace service
