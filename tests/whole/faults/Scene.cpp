#include "Scene.h"

#include "Fault.h"
#include "sandbox/Sandbox.h"

#include "qel/portable/CTraceOutput.h"
#include "qel/portable/CVersionLog.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <new>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

namespace faults {
namespace {

constexpr const char* kModuleFile = "libqelp_ZORBALT_MngSrvRaid.so";
constexpr const char* kLibraryFile = "libqel_MngSrv_QelLib.so";
using Create = CZORBALT_ServerService*();

std::string LoaderError() {
    const char* const text = ::dlerror();
    return text == nullptr ? "no reason is known" : text;
}

class CallScene : public Scene {
  public:
    CallScene(const char* method, const Caller::Parameters& parameters) : m_Caller(method, parameters) {}

    void Prepare() override {
        void* const module = ::dlopen(Root::Module().c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) {
            throw std::runtime_error(LoaderError());
        }
        m_Provider = reinterpret_cast<Create*>(::dlsym(module, "create"))();
        (void)Run();
    }

    Observed Run() override { return m_Caller.Call(*m_Provider); }
    void SetMischief(Caller::Mischief mischief) override { m_Caller.SetMischief(std::move(mischief)); }

  private:
    Caller m_Caller;
    CZORBALT_ServerService* m_Provider = nullptr;  // lives as long as the process
};

class TracedScene final : public CallScene {
  public:
    using CallScene::CallScene;

    void Prepare() override {
        if (!CTraceOutput::OpenFile(Root::Path() / "trace.txt")) {
            throw std::runtime_error("the trace file cannot be opened");
        }
        CTraceOutput::SetLevels(CTraceOutput::ALL_LEVELS);
        CallScene::Prepare();
    }
};

class LifeScene final : public Scene {
  public:
    LifeScene(const char* method, Caller::Parameters parameters)
        : m_Method(method), m_Parameters(std::move(parameters)) {}

    // Else what the dynamic loader and the C library keep of every library that comes and goes, and use again
    // for the next, would look like the module's.
    void Prepare() override {
        (void)CVersionLog::Entries();  // Its exit handler must not come to stand behind the module's.
        constexpr int kUntilNothingIsAdded = 4;
        for (int time = 0; time < kUntilNothingIsAdded; ++time) {
            ::dlclose(::dlopen(Root::Module().c_str(), RTLD_NOW | RTLD_LOCAL));
        }
    }

    bool IsFirstUse() const override { return true; }

    Observed Run() override {
        void* const module = Load();
        if (module == nullptr) {
            return {Outcome::NotLoaded, "", ""};
        }
        Observed seen;
        CZORBALT_ServerService* const provider = MakeProvider(module, seen.outcome);
        if (provider != nullptr) {
            if (!m_Caller) {  // The first to use the repository.
                m_Caller.emplace(m_Method, m_Parameters);
                m_Caller->SetMischief(m_Mischief);
            }
            seen = m_Caller->Call(*provider);
        }
        const Window window;
        delete provider;
        ::dlclose(module);
        return seen;
    }
    void SetMischief(Caller::Mischief mischief) override { m_Mischief = std::move(mischief); }

  private:
    static void* Load() {
        const std::string path = Root::Module();
        g_place = Place::LoadingModule;
        const Window window;
        return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    }

    // Null where there is no `create` or the provider's constructor throws; then that is the outcome.
    static CZORBALT_ServerService* MakeProvider(void* module, Outcome& outcome) {
        g_place = Place::Creating;
        const Window window;
        auto* const create = reinterpret_cast<Create*>(::dlsym(module, "create"));
        outcome = create == nullptr ? Outcome::NotLoaded : Outcome::Escaped;
        try {
            return create == nullptr ? nullptr : create();
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    }

    const char* m_Method;
    Caller::Parameters m_Parameters;
    Caller::Mischief m_Mischief;
    std::optional<Caller> m_Caller;
};

}  // namespace

void Root::Enter() {
    const fs::path build = fs::read_symlink("/proc/self/exe").parent_path().parent_path();
    sandbox::EnterSandbox(FAULTS_SIMULATOR, FAULTS_SERVER);
    fs::create_directories(Path() / "cim");
    fs::create_directories(Path() / "etc");
    for (const char* const file : {kModuleFile, kLibraryFile}) {
        fs::create_symlink(build / "cim" / file, Path() / "cim" / file);
    }
    std::ofstream(Path() / "etc" / "app.key") << kAppKey << '\n';
    ::umask(0);
    const char* const path = std::getenv("PATH");
    const std::string search = std::string(FAULTS_SHELL_FOLDER) + ":" + (path == nullptr ? "" : path);
    ::setenv("PATH", search.c_str(), 1);
    ::setenv("ZORBALT_INSTALL_DIR", Path().c_str(), 1);
}

const fs::path& Root::Path() {
    // Below the cover of the tool's directory, which is gone with the process.
    static const fs::path path = "/opt/zorbalt/vdk/root";
    return path;
}

fs::path Root::Module() {
    return Path() / "cim" / kModuleFile;
}

fs::path Root::ResultFolder() {
    return Path() / "tmp" / "MSRAID";
}

std::unique_ptr<Scene> MakeCallScene(const char* method, const Caller::Parameters& parameters) {
    return std::make_unique<CallScene>(method, parameters);
}

std::unique_ptr<Scene> MakeTracedScene(const char* method, const Caller::Parameters& parameters) {
    return std::make_unique<TracedScene>(method, parameters);
}

std::unique_ptr<Scene> MakeLifeScene(const char* method, const Caller::Parameters& parameters) {
    return std::make_unique<LifeScene>(method, parameters);
}

}  // namespace faults
