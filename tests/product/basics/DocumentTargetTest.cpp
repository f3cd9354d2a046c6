#include "basics/DocumentTarget.h"

#include "basics/Failure.h"
#include "test_support/InChild.h"
#include "test_support/TempFolder.h"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <linux/posix_acl.h>
#include <linux/posix_acl_xattr.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

namespace basics::test {
namespace {

using testsupport::InChild;
using testsupport::TempFolder;
using testsupport::WriteFile;

namespace fs = std::filesystem;

/// The modes of the files that are given away, before they are.
std::string& ModesBeforeChown() {
    static std::string modes;
    return modes;
}

}  // namespace
}  // namespace basics::test

extern "C" int fchown(int descriptor, uid_t owner, gid_t group) noexcept {
    struct stat status {};
    if (::fstat(descriptor, &status) == 0) {
        constexpr mode_t kAccess = 0777;
        basics::test::ModesBeforeChown() +=
            std::to_string(status.st_mode & kAccess) + "/" + std::to_string(status.st_size) + " ";
    }
    return static_cast<int>(::syscall(SYS_fchown, descriptor, owner, group));
}

namespace basics::test {
namespace {

constexpr const char* kList = "system.posix_acl_access";
constexpr const char* kDefaultList = "system.posix_acl_default";

// Of nobody in particular.
constexpr uid_t kOwner = 41234;
constexpr uid_t kOther = 41235;
constexpr gid_t kGroup = 42345;
constexpr gid_t kOtherGroup = 42346;

/// A list by which a user has access besides.
std::string ListWith(uid_t user, std::uint16_t access) {
    const posix_acl_xattr_entry entries[] = {
        {ACL_USER_OBJ, ACL_READ | ACL_WRITE, 0U - 1},
        {ACL_USER, access, user},
        {ACL_GROUP_OBJ, ACL_READ, 0U - 1},
        {ACL_MASK, ACL_READ | ACL_WRITE, 0U - 1},
        {ACL_OTHER, 0, 0U - 1},
    };
    const posix_acl_xattr_header header = {POSIX_ACL_XATTR_VERSION};
    std::string bytes(sizeof header + sizeof entries, '\0');
    std::memcpy(bytes.data(), &header, sizeof header);
    std::memcpy(bytes.data() + sizeof header, entries, sizeof entries);
    return bytes;
}

class ReplacedFile : public testing::Test {
  protected:
    ReplacedFile() {
        fs::permissions(m_Folder.Path(), fs::perms::all);
        WriteFile(Path(), "old");
        ModesBeforeChown().clear();
    }

    [[nodiscard]] std::string Path() const { return m_Folder / "raid.xml"; }

    void Set(uid_t owner, gid_t group, mode_t mode) const {
        EXPECT_EQ(::chown(Path().c_str(), owner, group), 0) << std::strerror(errno);
        EXPECT_EQ(::chmod(Path().c_str(), mode), 0);
    }

    [[nodiscard]] bool SetList(const std::string& list) const {
        return ::setxattr(Path().c_str(), kList, list.data(), list.size(), 0) == 0;
    }

    [[nodiscard]] std::string Attribute(const char* name) const {
        char bytes[512];
        const ssize_t size = ::getxattr(Path().c_str(), name, bytes, sizeof bytes);
        return size < 0 ? "" : std::string(bytes, static_cast<std::size_t>(size));
    }

    /// "41234:42345 640" of what is there now; it is the new document, and nothing else is left.
    [[nodiscard]] std::string Access() const {
        struct stat status {};
        EXPECT_EQ(::stat(Path().c_str(), &status), 0);
        EXPECT_EQ(status.st_size, 3 + (m_IsNew ? 1 : 0));
        EXPECT_EQ(m_Folder.Names(), std::vector<std::string>{"raid.xml"});
        char text[64];
        std::snprintf(text, sizeof text, "%u:%u %o", status.st_uid, status.st_gid, status.st_mode & 07777U);
        return text;
    }

    void Store() {
        m_IsNew = true;
        DocumentTarget(Path()).Store("news");
    }

    /// The same as somebody who may not give files away: the owner and group of the new file. What went
    /// wrong.
    std::string StoreAs(uid_t user, gid_t group, const std::vector<gid_t>& more = {}) {
        m_IsNew = true;
        return InChild([&]() -> std::string {
            if (::setgroups(more.size(), more.data()) != 0 || ::setresgid(group, group, group) != 0 ||
                ::setresuid(user, user, user) != 0) {
                return std::strerror(errno);
            }
            DocumentTarget(Path()).Store("news");
            return "";
        });
    }

    TempFolder m_Folder;
    bool m_IsNew = false;
};

TEST_F(ReplacedFile, NewOneHasTheModeOfTheUmask) {
    fs::remove(Path());
    const mode_t before = ::umask(027);
    Store();
    ::umask(before);
    EXPECT_EQ(Access(), std::to_string(::geteuid()) + ":" + std::to_string(::getegid()) + " 640");
}

TEST_F(ReplacedFile, KeepsItsMode) {
    for (const mode_t mode : {0600U, 0640U, 0666U, 0604U, 0755U, 0777U}) {
        EXPECT_EQ(::chmod(Path().c_str(), mode), 0);
        Store();
        struct stat status {};
        EXPECT_EQ(::stat(Path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, mode);
    }
}

/// Of those that root alone can make.
class ReplacedFileOfAnother : public ReplacedFile {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only root may give files away";
        }
    }
};

TEST_F(ReplacedFileOfAnother, KeepsItsOwnerAndGroup) {
    Set(kOwner, kGroup, 0640);
    Store();
    EXPECT_EQ(Access(), "41234:42345 640");
    Set(kOwner, kGroup, 02775);
    Store();
    EXPECT_EQ(Access(), "41234:42345 2775");
}

TEST_F(ReplacedFileOfAnother, NobodyElseHasAccessBeforeItIsGivenAway) {
    Set(kOwner, kGroup, 0666);
    Store();
    EXPECT_EQ(Access(), "41234:42345 666");
    EXPECT_EQ(ModesBeforeChown(), std::to_string(0600) + "/4 ");
}

TEST_F(ReplacedFileOfAnother, SymbolicLinkKeepsLeadingToIt) {
    const TempFolder links;
    Set(kOwner, kGroup, 0640);
    fs::create_symlink(Path(), links / "link");
    m_IsNew = true;
    DocumentTarget(links / "link").Store("news");
    EXPECT_EQ(Access(), "41234:42345 640");
    EXPECT_TRUE(fs::is_symlink(links / "link"));
}

TEST_F(ReplacedFileOfAnother, KeepsItsListAndItsAttributes) {
    Set(kOwner, kGroup, 0660);
    const std::string list = ListWith(kOther, ACL_READ);
    if (!SetList(list) || ::setxattr(Path().c_str(), "user.origin", "east", 4, 0) != 0) {
        GTEST_SKIP() << "the file system has no access control lists or attributes: " << std::strerror(errno);
    }
    Store();
    EXPECT_EQ(Access(), "41234:42345 660");
    EXPECT_EQ(Attribute(kList), list);
    EXPECT_EQ(Attribute("user.origin"), "east");
}

TEST_F(ReplacedFileOfAnother, GetsNoListThatItsFolderGivesNewFiles) {
    const std::string list = ListWith(kOther, ACL_READ);
    if (::setxattr(m_Folder.Path().c_str(), kDefaultList, list.data(), list.size(), 0) != 0) {
        GTEST_SKIP() << "the file system has no access control lists: " << std::strerror(errno);
    }
    Set(kOwner, kGroup, 0640);
    Store();
    EXPECT_EQ(Attribute(kList), "");
    EXPECT_EQ(Access(), "41234:42345 640");
}

TEST_F(ReplacedFileOfAnother, OwnerWhoIsNotRootKeepsHisOwnAndHisGroups) {
    Set(kOwner, kGroup, 0640);
    EXPECT_EQ(StoreAs(kOwner, kOtherGroup, {kGroup}), "");
    EXPECT_EQ(Access(), "41234:42345 640");
}

TEST_F(ReplacedFileOfAnother, WhoMayNotGiveItAwayOwnsItInTheSameGroup) {
    Set(kOwner, kGroup, 02664);
    EXPECT_EQ(StoreAs(kOther, kOtherGroup, {kGroup}), "");
    EXPECT_EQ(Access(), "41235:42345 664");
}

TEST_F(ReplacedFileOfAnother, OtherGroupGetsNoMoreThanAllHad) {
    const std::pair<mode_t, const char*> modes[] = {{0666, "41235:42346 666"},
                                                    {0662, "41235:42346 622"},
                                                    {0626, "41235:42346 622"},
                                                    {0606, "41235:42346 600"}};
    for (const auto& [mode, access] : modes) {
        Set(kOwner, kGroup, mode);
        EXPECT_EQ(StoreAs(kOther, kOtherGroup), "");
        EXPECT_EQ(Access(), access);
    }
}

TEST_F(ReplacedFileOfAnother, ListThatCannotBeKeptLeavesItToItsOwner) {
    Set(kOwner, kGroup, 0660);
    if (!SetList(ListWith(kOther, ACL_READ | ACL_WRITE))) {
        GTEST_SKIP() << "the file system has no access control lists: " << std::strerror(errno);
    }
    EXPECT_EQ(StoreAs(kOther, kOtherGroup), "");
    EXPECT_EQ(Access(), "41235:42346 600");
}

TEST_F(ReplacedFileOfAnother, ListIsKeptByWhomeverHasTheGroup) {
    Set(kOwner, kGroup, 0660);
    const std::string list = ListWith(kOther, ACL_READ | ACL_WRITE);
    if (!SetList(list)) {
        GTEST_SKIP() << "the file system has no access control lists: " << std::strerror(errno);
    }
    EXPECT_EQ(StoreAs(kOther, kOtherGroup, {kGroup}), "");
    EXPECT_EQ(Access(), "41235:42345 660");
    EXPECT_EQ(Attribute(kList), list);
}

}  // namespace
}  // namespace basics::test
