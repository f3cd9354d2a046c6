#include "PrivateView.h"

#include "sandbox/Sandbox.h"

#include <sys/mount.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace replay {
namespace {

constexpr const char* kOuterTmp = "/opt/zorbalt/vdk/outer-tmp";

void Check(bool isDone, const std::string& what) {
    if (!isDone) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

void Bind(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::filesystem::create_directories(to);
    Check(::mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0,
          "binding " + from.string());
}

}  // namespace

void EnterPrivateView(const std::vector<std::filesystem::path>& kept) {
    sandbox::EnterSandboxWithoutTool();
    Bind("/tmp", kOuterTmp);
    Check(::mount("tmpfs", "/tmp", "tmpfs", MS_NOSUID | MS_NODEV, "mode=1777") == 0, "covering /tmp");
    for (const std::filesystem::path& folder : kept) {
        const std::filesystem::path inTmp = folder.lexically_relative("/tmp");
        if (!inTmp.empty() && *inTmp.begin() != "..") {
            Bind(kOuterTmp / inTmp, folder);
        }
    }
}

}  // namespace replay
