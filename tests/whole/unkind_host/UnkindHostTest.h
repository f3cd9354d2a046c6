#pragma once

#include "LoadedProvider.h"
#include "StandIn.h"
#include "test_support/TempFolder.h"
#include "test_support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace unkindhost {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kHasAddressSanitizer = true;
#else
constexpr bool kHasAddressSanitizer = false;
#endif

/// A host: a process that has loaded the module, and hears its trace.
class Host final {
  public:
    /// `folder` is one that the process may always write to, whoever it becomes.
    explicit Host(std::filesystem::path folder) : m_Folder(std::move(folder)) {}

    /// Both methods, one document behind the other. A failure has its reason with it: "status 00000000,
    /// return value 000000a1, MSGID_MNGSRV_RAID_0001_F 01".
    [[nodiscard]] std::string Ask();

    /// Puts the cheap stand-in in the tool's place, for the rest of the process.
    StandIn& UseStandIn() { return m_StandIn.emplace(m_Folder); }

    LoadedProvider m_Provider;
    testsupport::TraceRecorder m_Trace;

  private:
    [[nodiscard]] std::string WithReason(const std::string& answer);

    std::filesystem::path m_Folder;
    std::optional<StandIn> m_StandIn;
};

/// Tests of the module's file in processes that are hard to live in, with an install root of their own. The
/// simulator stands in the tool's place with its scenario "small", and a pause between two attempts takes no
/// time.
class UnkindHostTest : public testing::Test {
  protected:
    UnkindHostTest();
    ~UnkindHostTest() override;

    /// What `work` says in a host of its own, and what it left behind there.
    [[nodiscard]] std::string InHost(const std::function<std::string(Host&)>& work) const;

    /// What `Host::Ask` says in a host that makes no trouble.
    [[nodiscard]] std::string KindAnswer() const;

    /// What it says when no tool run succeeds.
    static const std::string kNoToolRuns;

    /// Becomes an ordinary user where the process is root, which no limit of the system's would hold.
    static void BecomeOrdinary();

    /// Whether such a user may read what is built; not below /root and the like.
    [[nodiscard]] static bool OrdinaryUserMayLook();

    testsupport::TempFolder m_Root;
};

}  // namespace unkindhost
