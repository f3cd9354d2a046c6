#pragma once

#include "Call.h"

#include <filesystem>
#include <memory>
#include <string>

namespace faults {

/// Where the module runs in the sweep: an install root in memory, in this process's private view of the file
/// system, with the module and the libraries of this build, an application key, and a tool that answers from
/// the server/ folder beside this file.
class Root final {
  public:
    /// Enters the private view; once in a process. Throws.
    static void Enter();

    [[nodiscard]] static const std::filesystem::path& Path();
    [[nodiscard]] static std::filesystem::path Module();
    [[nodiscard]] static std::filesystem::path ResultFolder();
};

/// What is done over and over, with another call failing every time.
class Scene {
  public:
    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    virtual ~Scene() = default;

    /// Once, before the points, so that what is done lazily has been done.
    virtual void Prepare() {}

    /// Whether the first runs make what the framework keeps for good, so that memory is rightly left.
    [[nodiscard]] virtual bool IsFirstUse() const { return false; }

    [[nodiscard]] virtual Observed Run() = 0;

    virtual void SetMischief(Caller::Mischief mischief) = 0;
};

/// One call through a provider that has served one before.
[[nodiscard]] std::unique_ptr<Scene> MakeCallScene(const char* method, const Caller::Parameters& parameters);

/// The same with the whole trace written to a file.
[[nodiscard]] std::unique_ptr<Scene> MakeTracedScene(const char* method,
                                                     const Caller::Parameters& parameters);

/// A module that is loaded into a fresh process, makes a provider that serves one call, and is unloaded.
[[nodiscard]] std::unique_ptr<Scene> MakeLifeScene(const char* method, const Caller::Parameters& parameters);

}  // namespace faults
