// The least that an HTTP server can do with the library that the doors stand on: the same three bytes for
// everybody. Run beside it, the doors' own share shows.
//
//     bench_hello 127.0.0.1 8283

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <poll.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

struct Stop {
    void operator()(MHD_Daemon* daemon) const noexcept { MHD_stop_daemon(daemon); }
    void operator()(MHD_Response* response) const noexcept { MHD_destroy_response(response); }
};

// Whoever is answered before his request is whole has to connect anew for the next one.
MHD_Result Answer(void* response, MHD_Connection* connection, const char* /*path*/, const char* /*method*/,
                  const char* /*version*/, const char* /*body*/, std::size_t* /*size*/, void** place) {
    static int seen = 0;
    if (*place == nullptr) {
        *place = &seen;
        return MHD_YES;
    }
    return MHD_queue_response(connection, MHD_HTTP_OK, static_cast<MHD_Response*>(response));
}

}  // namespace

int main(int count, char** words) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    if (count != 3 || inet_pton(AF_INET, words[1], &place.sin_addr) != 1) {
        std::fputs("usage: bench_hello ADDRESS PORT\n", stderr);
        return 2;
    }
    place.sin_port = htons(static_cast<std::uint16_t>(std::atoi(words[2])));
    char text[] = "ok\n";
    const std::unique_ptr<MHD_Response, Stop> response(
        MHD_create_response_from_buffer(3, text, MHD_RESPMEM_PERSISTENT));
    constexpr unsigned kConnections = 12000;
    const std::unique_ptr<MHD_Daemon, Stop> daemon(
        MHD_start_daemon(MHD_USE_EPOLL, 0, nullptr, nullptr, &Answer, response.get(), MHD_OPTION_SOCK_ADDR,
                         &place, MHD_OPTION_CONNECTION_LIMIT, kConnections, MHD_OPTION_END));
    if (!daemon) {
        std::perror("bench_hello");
        return 1;
    }
    pollfd news = {MHD_get_daemon_info(daemon.get(), MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd, POLLIN, 0};
    while (true) {
        MHD_UNSIGNED_LONG_LONG left = 0;
        const bool isDue = MHD_get_timeout(daemon.get(), &left) == MHD_YES;
        (void)poll(&news, 1, isDue ? static_cast<int>(left) : -1);
        (void)MHD_run(daemon.get());
    }
}
