// faults SCENE [--stride N] [--kind NAME]
#include "tests/faults/Scene.h"
#include "tests/faults/Sweep.h"

#include <sys/prctl.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace {

using namespace faults;

std::unique_ptr<Scene> MakeScene(const std::string& name) {
    if (name == "get-info") {
        return MakeCallScene("GetInfo", {});
    }
    if (name == "sas-drive") {
        return MakeCallScene("GetPDInfo", {{"CtrlNo", "0"}, {"EnclNo", "252"}, {"PDNo", "0"}});
    }
    if (name == "sata-drive") {
        return MakeCallScene("GetPDInfo", {{"CtrlNo", "0"}, {"EnclNo", "16"}, {"PDNo", "3"}});
    }
    if (name == "life") {
        return MakeLifeScene("GetPDInfo", {{"CtrlNo", "0"}, {"EnclNo", "252"}, {"PDNo", "0"}});
    }
    throw std::runtime_error("no scene of that name: " + name);
}

SweepOptions ReadOptions(int count, char** arguments) {
    SweepOptions options;
    for (int at = 2; at + 1 < count; at += 2) {
        const std::string name = arguments[at];
        const std::string value = arguments[at + 1];
        if (name == "--stride") {
            options.memoryStride = std::stoul(value);
        } else if (name == "--kind") {
            for (std::size_t kind = 0; kind < kKinds; ++kind) {
                if (value == NameOf(static_cast<Kind>(kind))) {
                    options.only = static_cast<Kind>(kind);
                }
            }
        } else {
            throw std::runtime_error("no option of that name: " + name);
        }
    }
    return options;
}

}  // namespace

int main(int count, char** arguments) try {
    if (count < 2) {
        std::fprintf(stderr, "usage: faults SCENE [--stride N] [--kind NAME]\n");
        return EXIT_FAILURE;
    }
    // What a point that died had started comes back here to be waited for.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    Root::Enter();
    const auto scene = MakeScene(arguments[1]);
    return Sweep(*scene, ReadOptions(count, arguments)) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const std::exception& exception) {
    std::fprintf(stderr, "faults: %s\n", exception.what());
    return EXIT_FAILURE;
}
