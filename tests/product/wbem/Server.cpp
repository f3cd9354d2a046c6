// A server of HTTP around the room, for real clients: Server COMMAND SCENARIO [PORT], on loopback. Says its
// port, and serves until it is ended or its parent goes. The answer about the server, and the answers of
// methods, are what the command prints.

#include "wbem/ObjectManager.h"

#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace {

struct Printed {
    std::string text;
    int status = -1;
};

Printed Run(const std::vector<std::string>& words) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        std::vector<char*> pointers;
        for (const std::string& word : words) {
            pointers.push_back(const_cast<char*>(word.c_str()));
        }
        pointers.push_back(nullptr);
        ::execv(pointers[0], pointers.data());
        ::_exit(127);
    }
    ::close(ends[1]);
    Printed printed;
    std::array<char, 65536> part{};
    for (ssize_t got = 0; (got = ::read(ends[0], part.data(), part.size())) > 0;) {
        printed.text.append(part.data(), static_cast<std::size_t>(got));
    }
    ::close(ends[0]);
    ::waitpid(child, &printed.status, 0);
    return printed;
}

class Served final {
  public:
    Served(std::string command, std::string scenario)
        : m_Front{std::move(command), "--scenario", std::move(scenario)} {
        m_Board.host = "made-up";
        const Printed printed = Call({"get-info"});
        if (printed.status == 0) {
            m_Board.snapshot =
                std::make_shared<const inventory::Snapshot>(inventory::Document::Read(printed.text));
        }
    }

    [[nodiscard]] http::Response Answer(const http::Request& request) const {
        const auto answer = m_Manager.Answer(request, m_Board);
        const auto* const call = std::get_if<wbem::MethodCall>(&answer);
        return call != nullptr ? m_Manager.AnswerOf(*call, Make(*call)) : std::get<http::Response>(answer);
    }

  private:
    [[nodiscard]] Printed Call(std::vector<std::string> words) const {
        words.insert(words.begin(), m_Front.begin(), m_Front.end());
        return Run(words);
    }

    [[nodiscard]] wbem::MethodOutcome Make(const wbem::MethodCall& call) const {
        std::vector<std::string> words{call.method == "GetInfo" ? "get-info" : "get-pd-info"};
        for (const wbem::MethodArgument& argument : call.arguments) {
            words.push_back(argument.value);
        }
        Printed printed = Call(words);
        if (printed.status != 0) {
            return {.returnValue = 0xA1U};
        }
        return {.returnValue = 0U, .document = std::move(printed.text)};
    }

    const std::vector<std::string> m_Front;
    const wbem::ObjectManager m_Manager;
    board::Board m_Board;
};

MHD_Result TakeHeader(void* headers, MHD_ValueKind /*kind*/, const char* name, const char* value) {
    static_cast<std::vector<http::Field>*>(headers)->emplace_back(name, value != nullptr ? value : "");
    return MHD_YES;
}

MHD_Result Handle(void* served, MHD_Connection* connection, const char* path, const char* method,
                  const char* /*version*/, const char* body, size_t* size, void** place) {
    if (*place == nullptr) {
        *place = new http::Request{.method = method, .path = path};
        return MHD_YES;
    }
    auto& request = *static_cast<http::Request*>(*place);
    if (*size > 0) {
        request.body.append(body, *size);
        *size = 0;
        return MHD_YES;
    }
    MHD_get_connection_values(connection, MHD_HEADER_KIND, &TakeHeader, &request.headers);
    const http::Response answer = static_cast<const Served*>(served)->Answer(request);
    MHD_Response* const response = MHD_create_response_from_buffer(
        answer.Text().size(), const_cast<char*>(answer.Text().data()), MHD_RESPMEM_MUST_COPY);
    for (const auto& [name, value] : answer.headers) {
        MHD_add_response_header(response, name.c_str(), value.c_str());
    }
    const MHD_Result result = MHD_queue_response(connection, static_cast<unsigned>(answer.status), response);
    MHD_destroy_response(response);
    return result;
}

void Forget(void* /*served*/, MHD_Connection* /*connection*/, void** place,
            MHD_RequestTerminationCode /*how*/) {
    delete static_cast<http::Request*>(*place);
}

}  // namespace

int main(int count, char** words) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
    Served served(words[1], words[2]);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(count > 3 ? std::stoi(words[3]) : 0));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    MHD_Daemon* const daemon = MHD_start_daemon(
        MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_AUTO, 0, nullptr, nullptr, &Handle, &served,
        MHD_OPTION_SOCK_ADDR, &address, MHD_OPTION_NOTIFY_COMPLETED, &Forget, nullptr, MHD_OPTION_END);
    if (daemon == nullptr) {
        return 1;
    }
    std::cout << MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT)->port << std::endl;
    for (;;) {
        ::pause();
    }
}
