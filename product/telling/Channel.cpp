#include "telling/Channel.h"

#include "HttpPost.h"
#include "MailText.h"
#include "Url.h"
#include "basics/Duration.h"
#include "basics/Failure.h"
#include "basics/Words.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace telling {
namespace {

using std::chrono::seconds;

class Faults final {
  public:
    void Add(const char* key, const std::string& words) { m_Found.push_back({key, words}); }

    void CheckPath(const char* key, const std::string& path) {
        if (!path.starts_with('/') || path.find('\0') != std::string::npos) {
            Add(key, "it is a full path, from / on");
        }
    }

    void CheckTimeLimit(seconds limit) {
        constexpr seconds kLeast{1};
        constexpr seconds kMost{3600};
        if (limit < kLeast || limit > kMost) {
            Add("timeout",
                "it is from " + basics::DurationText(kLeast) + " to " + basics::DurationText(kMost));
        }
    }

    void CheckProgramIsThere(const std::string& path) {
        struct stat status {};
        if (::stat(path.c_str(), &status) != 0 ||
            (S_ISREG(status.st_mode) && ::access(path.c_str(), X_OK) != 0)) {
            Add("program", path + ": " + basics::ErrorText(errno));
        } else if (!S_ISREG(status.st_mode)) {
            Add("program", path + ": it is no file");
        }
    }

    void CheckFileIsThere(const char* key, const std::string& path) {
        if (!path.empty() && ::access(path.c_str(), R_OK) != 0) {
            Add(key, path + ": " + basics::ErrorText(errno));
        }
    }

    [[nodiscard]] std::vector<Fault> Found() && { return std::move(m_Found); }

  private:
    std::vector<Fault> m_Found;
};

bool IsNameOfAChannel(std::string_view name) {
    constexpr std::size_t kMostLetters = 64;
    return !name.empty() && name.size() <= kMostLetters &&
           std::all_of(name.begin(), name.end(), [](char character) {
               return basics::IsAlphanumeric(character) || character == '-' || character == '_' ||
                      character == '.';
           });
}

/// What is wrong with each kind of channel, and what it lacks.
struct Settings {
    Faults& faults;

    void operator()(const Journal& /*journal*/) const {}

    void operator()(const Exec& exec) const {
        faults.CheckPath("program", exec.program);
        faults.CheckTimeLimit(exec.timeLimit);
        if (std::any_of(exec.arguments.begin(), exec.arguments.end(),
                        [](const std::string& each) { return each.find('\0') != std::string::npos; })) {
            faults.Add("arguments", "none can hold the character 0");
        }
    }

    void operator()(const Mail& mail) const {
        faults.CheckPath("program", mail.program);
        faults.CheckTimeLimit(mail.timeLimit);
        if (mail.recipients.empty()) {
            faults.Add("to", "nobody is named");
        }
        for (const std::string& recipient : mail.recipients) {
            CheckAddress("to", recipient);
        }
        if (!mail.sender.empty()) {
            CheckAddress("from", mail.sender);
        }
    }

    void operator()(const Http& http) const {
        faults.CheckTimeLimit(http.timeLimit);
        CheckUrl(http);
        for (const std::string& header : http.headers) {
            if (const std::string words = WrongWithHeader(header); !words.empty()) {
                faults.Add("headers", words);
            }
        }
        for (const auto& [key, path] :
             {std::pair("ca_file", &http.authorityFile), std::pair("headers_file", &http.headersFile)}) {
            if (!path->empty()) {
                faults.CheckPath(key, *path);
            }
        }
    }

  private:
    void CheckAddress(const char* key, const std::string& address) const {
        if (!IsMailAddress(address)) {
            faults.Add(key, "each is an address such as storage@example.org, without a name; \"" + address +
                                "\" is none");
        }
    }

    void CheckUrl(const Http& http) const {
        try {
            const Url url = Url::From(http.url);
            if (!url.isSecure && !http.mayBePlain && !url.IsLoopback()) {
                faults.Add("url", "http goes to this machine alone; use https, or set plain");
            }
        } catch (const basics::Failure& error) {
            faults.Add("url", error.what());
        }
    }
};

struct Surroundings {
    Faults& faults;

    void operator()(const Journal& /*journal*/) const {}
    void operator()(const Exec& exec) const { faults.CheckProgramIsThere(exec.program); }
    void operator()(const Mail& mail) const { faults.CheckProgramIsThere(mail.program); }
    void operator()(const Http& http) const {
        faults.CheckFileIsThere("ca_file", http.authorityFile);
        try {
            (void)HeadersOf(http);
        } catch (const basics::Failure& error) {
            faults.Add("headers_file", error.what());
        }
    }
};

}  // namespace

std::string_view NameOfKind(const Channel& channel) {
    constexpr std::string_view kKinds[] = {"journal", "exec", "mail", "http"};
    return kKinds[channel.way.index()];
}

bool Wants(const Channel& channel, const watch::Event& event) {
    return event.kind == watch::EventKind::Test || watch::WeightOf(event) >= channel.least;
}

std::vector<Fault> FaultsOf(const Channel& channel) {
    constexpr std::size_t kMostCapacity = 100'000;
    Faults faults;
    if (!IsNameOfAChannel(channel.name)) {
        faults.Add("name", "it is one word of letters, digits, '-', '_' and '.', 64 of them at most");
    }
    if (channel.capacity < 1 || channel.capacity > kMostCapacity) {
        faults.Add("queue", "it is a whole number from 1 to " + std::to_string(kMostCapacity));
    }
    std::visit(Settings{faults}, channel.way);
    return std::move(faults).Found();
}

std::vector<Fault> MissingFor(const Channel& channel) {
    Faults faults;
    std::visit(Surroundings{faults}, channel.way);
    return std::move(faults).Found();
}

}  // namespace telling
