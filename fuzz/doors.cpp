// What is read where clients come in, and between the two processes of the service. The first byte says what
// the rest is: a target of a request, a message of one kind or another, a list of accounts, networks with an
// address between them 0x1F, or an address to listen at.

#include "Accounts.h"
#include "Configuration.h"
#include "Networks.h"

#include "basics/Failure.h"
#include "board/Messages.h"
#include "board/Wire.h"
#include "http/Target.h"
#include "support/Input.h"
#include "support/Property.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using fuzzing::Require;

bool IsClean(std::string_view text) {
    return std::none_of(text.begin(), text.end(),
                        [](char each) { return static_cast<unsigned char>(each) < ' ' || each == 0x7F; });
}

void CheckTarget(std::string_view text) {
    const std::optional<http::Target> target = http::TargetFrom(text);
    if (!target) {
        return;
    }
    Require(!target->path.empty() && target->path.front() == '/', "a path begins with a slash");
    std::size_t size = target->path.size();
    bool isClean = IsClean(target->path);
    for (const auto& [name, value] : target->query) {
        size += name.size() + value.size();
        isClean = isClean && IsClean(name) && IsClean(value);
    }
    Require(isClean, "no control character comes through");
    Require(size <= text.size(), "nothing grows");
}

/// As it came, where it is one way to write what it tells.
template <typename Unpack>
void CheckMessage(std::string_view bytes, bool isExact, Unpack unpack) {
    std::string again;
    try {
        again = Pack(unpack(bytes));
    } catch (const board::WireError&) {
        return;
    }
    Require(!isExact || again == bytes, "what was unpacked packs to the same bytes");
    Require(Pack(unpack(again)) == again, "what was packed can be unpacked");
}

void CheckAccounts(std::string_view text) {
    try {
        const doors::AccountList list = doors::AccountList::Read(text);
        Require(list.HashOf("") == nullptr, "nobody is without a name");
    } catch (const basics::Failure& error) {
        Require(std::string_view(error.what()).substr(0, 5) == "line ", "the line is told");
    }
}

void CheckNetworks(std::string_view text) {
    const fuzzing::Sections words = fuzzing::Split(text, fuzzing::kFieldEnd);
    const std::string address(words.front());
    const std::vector<std::string> nets(words.begin() + 1, words.end());
    const std::optional<doors::Networks> networks = doors::Networks::From(nets);
    const std::optional<doors::Networks> itself = doors::Networks::From({address});
    if (itself && address.find('/') == std::string::npos) {
        Require(itself->Contain(address), "an address is in itself");
        Require(doors::Networks::From({"::/0"})->Contain(address) || address.find(':') == std::string::npos,
                "all addresses are in the net of all");
    }
    Require(!networks || !nets.empty() || !networks->Contain(address), "no net, nobody in it");
}

void CheckAddress(const std::string& text) {
    const std::optional<service::Address> address = service::AddressFrom(text);
    if (!address) {
        return;
    }
    Require(address->text == text, "it is called as it was written");
    Require(address->path.empty() == (address->port != 0), "it is a file's or the network's");
    const bool isHere = address->host == "::1" || address->host.rfind("127.", 0) == 0 ||
                        doors::Networks::From({"::1"})->Contain(address->host);
    Require(!address->path.empty() || isHere || address->isEncrypted, "beyond this machine it is encrypted");
}

void Check(char what, std::string_view rest) {
    switch (what) {
        case 'R':
            CheckMessage(rest, false, board::UnpackReport);  // JSON inside: not every blank comes again.
            break;
        case 'D':
            CheckMessage(rest, true, board::UnpackDrives);
            break;
        case 'C':
            CheckMessage(rest, true, board::UnpackCall);
            break;
        case 'O':
            CheckMessage(rest, true, board::UnpackOutcome);
            break;
        case 'S':
            CheckMessage(rest, true, board::UnpackSettings);
            break;
        case 'A':
            CheckAccounts(rest);
            break;
        case 'N':
            CheckNetworks(rest);
            break;
        case 'L':
            CheckAddress(std::string(rest));
            break;
        default:
            CheckTarget(rest);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = fuzzing::TextOf(data, size);
    if (!input.empty()) {
        Check(input.front(), input.substr(1));
    }
    return 0;
}
