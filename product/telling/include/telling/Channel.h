#pragma once

#include "inventory/Level.h"
#include "watch/Event.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace telling {

/// The system's journal; standard error where there is none.
struct Journal {
    bool usesStandardError = false;  ///< even where there is one
    bool operator==(const Journal&) const = default;
};

/// A program of the administrator's, without a shell: the event on its standard input and in its environment.
struct Exec {
    std::string program;  ///< "/usr/local/bin/page-somebody"
    std::vector<std::string> arguments = {};
    std::chrono::seconds timeLimit{60};
    bool operator==(const Exec&) const = default;
};

/// A mail, handed to the system's own mail program.
struct Mail {
    std::vector<std::string> recipients;  ///< "storage@example.org", or "root"
    std::string sender = {};              ///< empty: what the mail program thinks is right
    std::string program = "/usr/sbin/sendmail";
    std::chrono::seconds timeLimit{60};
    bool operator==(const Mail&) const = default;
};

/// A POST of the event in JSON.
struct Http {
    std::string url;                        ///< "https://alerts.example.org/hook"
    std::string authorityFile = {};         ///< certificates in PEM; empty: those that the system trusts
    std::vector<std::string> headers = {};  ///< "Authorization: Bearer 0123"
    std::string headersFile = {};           ///< more of them, a line each, so that secrets stand there alone
    bool mayBePlain = false;                ///< http to other machines, too
    std::chrono::seconds timeLimit{30};
    bool operator==(const Http&) const = default;
};

/// Who is told of events, and from which level on. A plain value.
struct Channel {
    std::string name;  ///< no other channel has it
    std::variant<Journal, Exec, Mail, Http> way = {};
    inventory::Level least = inventory::Level::Unknown;  ///< of events; what is only information is below it
    std::size_t capacity = 1000;                         ///< events that wait
    bool operator==(const Channel&) const = default;
};

/// "journal", "exec", "mail", "http".
[[nodiscard]] std::string_view NameOfKind(const Channel& channel);

/// Whether the channel is to be told. A test is for all of them.
[[nodiscard]] bool Wants(const Channel& channel, const watch::Event& event);

/// What is wrong with one of a channel's settings, by the key that it has in the configuration
/// (docs/watch.md).
struct Fault {
    std::string key;    ///< "url"
    std::string words;  ///< "http goes to this machine alone; use https, or set plain"
};

/// What can never work, whatever this machine is like.
[[nodiscard]] std::vector<Fault> FaultsOf(const Channel& channel);

/// What this machine lacks at the moment: a program, a file. Each delivery tells it, too.
[[nodiscard]] std::vector<Fault> MissingFor(const Channel& channel);

}  // namespace telling
