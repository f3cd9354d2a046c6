// What the service needs to let clients in, made for whoever sets it up: accounts, a key and a certificate.
// It is a program of its own, so that the one that faces the network writes no file, and may be kept from it.

#include "SetUp.h"
#include "basics/DocumentTarget.h"
#include "basics/Failure.h"
#include "basics/Text.h"

#include <exception>
#include <string>
#include <vector>

namespace doors {
namespace {

using basics::Failure;

void Say(const std::string& line) {
    (void)basics::WriteWhole(STDERR_FILENO, "mngsrvraidd: " + basics::OneLine(line) + "\n");
}

void Run(const std::vector<std::string>& words) {
    if (words.size() == 3 && words[0] == "passwd") {
        SetPassword(words[1], words[2]);
    } else if (words.size() == 2 && words[0] == "setup-tls") {
        basics::DocumentTarget::StandardOutput().Store(SetUpTls(words[1]));
    } else {
        throw Failure(Failure::Kind::Use, "started by mngsrvraidd, not by hand; see mngsrvraidd --help");
    }
}

int RunAndReport(const std::vector<std::string>& words) {
    try {
        Run(words);
        return 0;
    } catch (const Failure& error) {
        Say(error.what());
        return error.WhatKind() == Failure::Kind::Use ? 2 : 4;
    } catch (const std::exception& error) {
        Say(std::string("cannot go on: ") + error.what());
    }
    return 1;
}

}  // namespace
}  // namespace doors

int main(int count, char** words) {
    return doors::RunAndReport({words + 1, words + count});
}
