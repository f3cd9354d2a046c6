// faults SCENE [--stride N] [--lines N] [--calls N] [--kind NAME] [--once]: the sweep over a scene.
// faults folders | checks: result folders that are of no use; what the checks notice.
#include "Checks.h"
#include "Folders.h"
#include "Scene.h"
#include "Sweep.h"
#include "Trace.h"

#include <sys/prctl.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace faults;

const Caller::Parameters kSasDrive = {{"CtrlNo", "0"}, {"EnclNo", "252"}, {"PDNo", "0"}};
const Caller::Parameters kSataDrive = {{"CtrlNo", "0"}, {"EnclNo", "16"}, {"PDNo", "3"}};

std::unique_ptr<Scene> MakeScene(const std::string& name) {
    if (name == "get-info" || name == "folders") {
        return MakeCallScene("GetInfo", {});
    }
    if (name == "sas-drive" || name == "checks") {
        return MakeCallScene("GetPDInfo", kSasDrive);
    }
    if (name == "sata-drive") {
        return MakeCallScene("GetPDInfo", kSataDrive);
    }
    if (name == "traced-drive") {
        return MakeTracedScene("GetPDInfo", kSasDrive);
    }
    if (name == "life") {
        return MakeLifeScene("GetPDInfo", kSasDrive);
    }
    throw std::runtime_error("no scene of that name: " + name);
}

Kind KindNamed(const std::string& name) {
    for (std::size_t kind = 0; kind < kKinds; ++kind) {
        if (name == NameOf(static_cast<Kind>(kind))) {
            return static_cast<Kind>(kind);
        }
    }
    throw std::runtime_error("no kind of call of that name: " + name);
}

SweepOptions ReadOptions(const std::vector<std::string>& words) {
    SweepOptions options;
    for (std::size_t at = 0; at < words.size(); ++at) {
        if (words[at] == "--once") {
            options.isOnceOnly = true;
        } else if (words[at] == "--stride") {
            options.memoryStride = std::stoul(words.at(++at));
        } else if (words[at] == "--lines") {
            options.traceStride = std::stoul(words.at(++at));
        } else if (words[at] == "--calls") {
            options.callStride = std::stoul(words.at(++at));
        } else if (words[at] == "--kind") {
            options.only = KindNamed(words.at(++at));
        } else {
            throw std::runtime_error("no option of that name: " + words[at]);
        }
    }
    return options;
}

unsigned long Run(const std::string& name, Scene& scene, const SweepOptions& options) {
    if (name == "folders") {
        return TryFolders(scene);
    }
    return name == "checks" ? ProveChecks(scene) : Sweep(scene, options);
}

}  // namespace

int main(int count, char** arguments) try {
    if (count < 2) {
        std::fprintf(stderr,
                     "usage: faults SCENE [--stride N] [--lines N] [--calls N] [--kind NAME] [--once]\n");
        return EXIT_FAILURE;
    }
    // What a trial that died had started comes back here to be waited for.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    Root::Enter();
    LetTraceFail();
    // Never destroyed: a framework keeps its providers until the process ends.
    static Scene* const scene = MakeScene(arguments[1]).release();
    return Run(arguments[1], *scene, ReadOptions({arguments + 2, arguments + count})) == 0 ? EXIT_SUCCESS
                                                                                           : EXIT_FAILURE;
} catch (const std::exception& exception) {
    std::fprintf(stderr, "faults: %s\n", exception.what());
    return EXIT_FAILURE;
}
