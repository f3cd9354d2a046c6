// Answers for as many servers as there are to be, so that Prometheus can be measured with all of them: each
// one's series are what the service prints of one server, with serial numbers of its own, and change a little
// from scrape to scrape. One server in a hundred shows what is printed of it with a lost drive.
//
//     bench_servers 127.0.0.1 8284 10000 well.prom failing.prom
//     http://127.0.0.1:8284/17/metrics            as it is now
//     http://127.0.0.1:8284/17/metrics?at=1790000000    as it would be then, by its clock and counters

#include "support/Servers.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/resource.h>

#include <array>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace bench {
namespace {

struct Stop {
    void operator()(MHD_Daemon* daemon) const noexcept { MHD_stop_daemon(daemon); }
    void operator()(MHD_Response* response) const noexcept { MHD_destroy_response(response); }
};

/// What is served, by the one thread that serves.
struct Fleet {
    Printed well;
    Printed failing;
    std::vector<std::uint64_t> scrapes;  ///< of each server
};

std::string TextOf(const char* path) {
    std::ifstream file(path);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.empty()) {
        throw std::runtime_error(std::string(path) + " cannot be read, or is empty");
    }
    return text;
}

/// The whole of a text as a number.
std::optional<std::uint64_t> NumberOf(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// The server of "/17/metrics", where there is one.
std::optional<std::uint64_t> ServerOf(std::string_view path, std::uint64_t count) {
    constexpr std::string_view kEnd = "/metrics";
    if (!path.starts_with('/') || !path.ends_with(kEnd) || path.size() <= kEnd.size()) {
        return std::nullopt;
    }
    const auto server = NumberOf(path.substr(1, path.size() - kEnd.size() - 1));
    return server && *server < count ? server : std::nullopt;
}

std::string Body(Fleet& fleet, std::uint64_t server, const char* at) {
    const std::optional<std::uint64_t> asked = at != nullptr ? NumberOf(at) : std::nullopt;
    Moment moment;
    if (asked) {
        constexpr std::uint64_t kSecondsBetween = 60;
        moment = {server, *asked / kSecondsBetween, *asked};
    } else {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        moment = {server, fleet.scrapes[server]++,
                  static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::seconds>(now).count())};
    }
    return (HasLostDrive(moment) ? fleet.failing : fleet.well).At(moment);
}

// Whoever is answered before his request is whole has to connect anew for the next one.
MHD_Result Answer(void* served, MHD_Connection* connection, const char* path, const char* /*method*/,
                  const char* /*version*/, const char* /*body*/, std::size_t* /*size*/, void** place) {
    static int seen = 0;
    if (*place == nullptr) {
        *place = &seen;
        return MHD_YES;
    }
    auto& fleet = *static_cast<Fleet*>(served);
    const auto server = ServerOf(path, fleet.scrapes.size());
    const char* const at = MHD_lookup_connection_value(connection, MHD_GET_ARGUMENT_KIND, "at");
    std::string text = server ? Body(fleet, *server, at) : "There is no such server.\n";
    const std::unique_ptr<MHD_Response, Stop> response(
        MHD_create_response_from_buffer(text.size(), text.data(), MHD_RESPMEM_MUST_COPY));
    if (!response) {
        return MHD_NO;
    }
    MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, "text/plain; version=0.0.4");
    return MHD_queue_response(connection, server ? MHD_HTTP_OK : MHD_HTTP_NOT_FOUND, response.get());
}

/// Until somebody ends it.
void Serve(const sockaddr_in& place, Fleet& fleet) {
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigaddset(&ends, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    constexpr unsigned kConnections = 12000;
    const std::unique_ptr<MHD_Daemon, Stop> daemon(MHD_start_daemon(
        MHD_USE_EPOLL_INTERNAL_THREAD, 0, nullptr, nullptr, &Answer, &fleet, MHD_OPTION_SOCK_ADDR, &place,
        MHD_OPTION_CONNECTION_LIMIT, kConnections, MHD_OPTION_END));
    if (!daemon) {
        throw std::runtime_error(std::string("nobody can be served: ") + std::strerror(errno));
    }
    int signal = 0;
    sigwait(&ends, &signal);
}

int Main(int count, char** words) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    const auto port = count == 6 ? NumberOf(words[2]) : std::nullopt;
    const auto servers = count == 6 ? NumberOf(words[3]) : std::nullopt;
    if (!port || *port > UINT16_MAX || !servers || inet_pton(AF_INET, words[1], &place.sin_addr) != 1) {
        std::fputs("usage: bench_servers ADDRESS PORT COUNT WELL FAILING\n", stderr);
        return 2;
    }
    place.sin_port = htons(static_cast<std::uint16_t>(*port));
    Fleet fleet{Printed(TextOf(words[4])), Printed(TextOf(words[5])), std::vector<std::uint64_t>(*servers)};
    Serve(place, fleet);
    return 0;
}

}  // namespace
}  // namespace bench

int main(int count, char** words) {
    try {
        return bench::Main(count, words);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_servers: %s\n", error.what());
        return 1;
    }
}
