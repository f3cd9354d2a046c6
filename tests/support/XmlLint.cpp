#include "test_support/XmlLint.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace testsupport {
namespace {

using File = std::unique_ptr<std::FILE, decltype([](std::FILE* file) { std::fclose(file); })>;

/// How a run of xmllint ended: its exit status and all that it printed.
struct Outcome {
    int status;
    std::string output;
};

File MakeTemporaryFile() {
    File file(std::tmpfile());
    if (!file) {
        throw std::runtime_error("no temporary file");
    }
    return file;
}

std::string ReadAll(std::FILE* file) {
    std::rewind(file);
    std::string text;
    char chunk[4096];
    while (const std::size_t count = std::fread(chunk, 1, sizeof chunk, file)) {
        text.append(chunk, count);
    }
    return text;
}

Outcome RunXmlLint(const std::string& xml, std::vector<std::string> arguments) {
    const File input = MakeTemporaryFile();
    const File output = MakeTemporaryFile();
    if (std::fwrite(xml.data(), 1, xml.size(), input.get()) != xml.size()) {
        throw std::runtime_error("the document does not fit into a temporary file");
    }
    std::rewind(input.get());

    arguments.insert(arguments.begin(), {"xmllint", "--nonet", "--huge"});
    arguments.emplace_back("-");
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fileno(input.get()), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(output.get()), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(output.get()), STDERR_FILENO);
    pid_t child = 0;
    const int error = posix_spawnp(&child, "xmllint", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error(std::string("xmllint cannot be run: ") + std::strerror(error));
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child) {
        throw std::runtime_error("xmllint was lost");
    }
    return {status, ReadAll(output.get())};
}

}  // namespace

std::string ValidateAgainstSchema(const std::string& xml) try {
    const Outcome outcome = RunXmlLint(xml, {"--noout", "--schema", TEST_SUPPORT_SCHEMA_PATH});
    if (outcome.status == 0) {
        return "";
    }
    return outcome.output.empty() ? "xmllint failed without a word" : outcome.output;
} catch (const std::runtime_error& error) {
    return error.what();
}

std::string EvaluateXPath(const std::string& xml, const std::string& expression) {
    Outcome outcome = RunXmlLint(xml, {"--xpath", expression});
    if (outcome.status != 0 || !outcome.output.ends_with('\n')) {
        throw std::runtime_error(outcome.output);
    }
    outcome.output.pop_back();
    return outcome.output;
}

}  // namespace testsupport
