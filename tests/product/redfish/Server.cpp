// Serves documents to clients of Redfish, each on a port of its own on loopback, until standard input ends:
//
//     redfish_server [--account NAME:PASSWORD] DOCUMENT...
//
// Prints "PORT DOCUMENT" a line. A document that is "-" stands for a server that has not answered yet.

#include "Boards.h"
#include "KnownAccounts.h"
#include "redfish/Service.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

namespace redfish::test {
namespace {

/// A server's board behind a port.
class Door final {
  public:
    Door(std::shared_ptr<const board::Board> board,
         std::optional<std::pair<std::string, std::string>> account)
        : m_NeedsAccount(account.has_value()),
          m_Accounts(account ? std::map<std::string, std::string>{*account}
                             : std::map<std::string, std::string>{}),
          m_Service(std::move(board), m_Accounts) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        m_Daemon = ::MHD_start_daemon(MHD_USE_INTERNAL_POLLING_THREAD, 0, nullptr, nullptr, &Door::Take, this,
                                      MHD_OPTION_SOCK_ADDR, &address, MHD_OPTION_NOTIFY_COMPLETED,
                                      &Door::Forget, nullptr, MHD_OPTION_END);
    }
    Door(const Door&) = delete;
    Door& operator=(const Door&) = delete;
    ~Door() { ::MHD_stop_daemon(m_Daemon); }

    [[nodiscard]] unsigned Port() const {
        return ::MHD_get_daemon_info(m_Daemon, MHD_DAEMON_INFO_BIND_PORT)->port;
    }

  private:
    static MHD_Result Keep(void* list, MHD_ValueKind /*kind*/, const char* name, const char* value) {
        static_cast<std::vector<http::Field>*>(list)->emplace_back(name, value == nullptr ? "" : value);
        return MHD_YES;
    }

    static MHD_Result Take(void* door, MHD_Connection* connection, const char* path, const char* method,
                           const char* /*version*/, const char* data, std::size_t* size, void** state) {
        if (*state == nullptr) {
            *state = new http::Request{.method = method, .path = path};
            return MHD_YES;
        }
        auto& request = *static_cast<http::Request*>(*state);
        if (*size != 0) {
            request.body.append(data, *size);
            *size = 0;
            return MHD_YES;
        }
        ::MHD_get_connection_values(connection, MHD_GET_ARGUMENT_KIND, &Keep, &request.query);
        ::MHD_get_connection_values(connection, MHD_HEADER_KIND, &Keep, &request.headers);
        return Send(connection, static_cast<Door*>(door)->Answer(connection, request));
    }

    static void Forget(void* /*door*/, MHD_Connection* /*connection*/, void** state,
                       MHD_RequestTerminationCode /*why*/) {
        delete static_cast<http::Request*>(*state);
    }

    static MHD_Result Send(MHD_Connection* connection, const http::Response& answer) {
        MHD_Response* const response = ::MHD_create_response_from_buffer(
            answer.Text().size(), const_cast<char*>(answer.Text().data()), MHD_RESPMEM_MUST_COPY);
        for (const auto& [name, value] : answer.headers) {
            ::MHD_add_response_header(response, name.c_str(), value.c_str());
        }
        const MHD_Result result =
            ::MHD_queue_response(connection, static_cast<unsigned>(answer.status), response);
        ::MHD_destroy_response(response);
        return result;
    }

    http::Response Answer(MHD_Connection* connection, http::Request& request) {
        if (m_NeedsAccount) {
            request.account = WhoIs(connection, request);
            if (request.account.empty() && !IsOpen(request)) {
                return Unauthorized(request);
            }
        }
        return m_Service.Answer(request);
    }

    std::string WhoIs(MHD_Connection* connection, const http::Request& request) {
        if (const std::string* const token = request.Header("X-Auth-Token")) {
            return m_Accounts.WhoIs(*token).value_or("");
        }
        char* password = nullptr;
        char* const name = ::MHD_basic_auth_get_username_password(connection, &password);
        std::string account = name == nullptr ? "" : name;
        if (password == nullptr || !m_Accounts.IsProved(account, password)) {
            account.clear();
        }
        ::MHD_free(name);
        ::MHD_free(password);
        return account;
    }

    bool m_NeedsAccount;
    KnownAccounts m_Accounts;
    Service m_Service;
    MHD_Daemon* m_Daemon = nullptr;
};

std::string TextOfFile(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(name, std::ios::binary).rdbuf();
    return text.str();
}

int Serve(const std::vector<std::string>& words) {
    std::optional<std::pair<std::string, std::string>> account;
    std::vector<std::unique_ptr<Door>> doors;
    for (std::size_t each = 0; each < words.size(); ++each) {
        if (words[each] == "--account" && each + 1 < words.size()) {
            const std::string& pair = words[++each];
            account = {pair.substr(0, pair.find(':')), pair.substr(pair.find(':') + 1)};
            continue;
        }
        doors.push_back(std::make_unique<Door>(
            words[each] == "-" ? EmptyBoard() : BoardOfXml(TextOfFile(words[each])), account));
        std::cout << doors.back()->Port() << ' ' << words[each] << std::endl;
    }
    char byte = 0;
    while (::read(STDIN_FILENO, &byte, 1) > 0) {
    }
    return 0;
}

}  // namespace
}  // namespace redfish::test

int main(int argc, char** argv) {
    try {
        return redfish::test::Serve({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "redfish_server: " << error.what() << '\n';
        return 1;
    }
}
