#include "Support.h"

#include "qel/CZORBALT_SysService.h"
#include "qel/QelException.h"
#include "qel/portable/CWbemRepository.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using qel::test::Owned;
using qel::test::RunInChild;
using qel::test::ScopedVariable;
using qel::test::TempFolder;
using qel::test::WriteFile;

class AuthorityTest : public testing::Test {
  protected:
    AuthorityTest() { std::filesystem::create_directory(m_Root.Path() / "etc"); }

    [[nodiscard]] std::string KeyFile() const { return m_Root / "etc/app.key"; }
    void Configure(const std::string& contents) const { WriteFile(KeyFile(), contents); }
    [[nodiscard]] std::string ConfiguredKey() const { return m_Service.GetOperatingAuthorityAppKey(); }

    // An input instance as a method of the RAID class gets it.
    static Owned<IWbemClassObject> Input(const std::optional<std::string>& key) {
        IWbemClassObject* definition = nullptr;
        IWbemClassObject* signature = nullptr;
        IWbemClassObject* instance = nullptr;
        EXPECT_EQ(
            CWbemRepository::Process().GetObject("ZORBALT_MngSrvRaid", 0, nullptr, &definition, nullptr), 0);
        const Owned<IWbemClassObject> ownedDefinition(definition);
        EXPECT_EQ(definition->GetMethod("GetPDInfo", 0, &signature, nullptr), 0);
        const Owned<IWbemClassObject> ownedSignature(signature);
        EXPECT_EQ(signature->SpawnInstance(0, &instance), 0);
        if (key) {
            EXPECT_EQ(instance->Put(CZORBALT_ServerService::APP_KEY_PROPERTY, *key), 0);
        }
        return Owned<IWbemClassObject>(instance);
    }
    [[nodiscard]] bool HasAuthority(const std::optional<std::string>& key) const {
        return m_Service.HasOperatingAuthority(Input(key).get());
    }
    void ExpectNobodyGetsIn() const {
        EXPECT_THROW((void)ConfiguredKey(), QelException);
        EXPECT_THROW((void)HasAuthority(std::nullopt), QelException);
        EXPECT_THROW((void)HasAuthority(""), QelException);
    }

    TempFolder m_Root;
    ScopedVariable m_Variable{"ZORBALT_INSTALL_DIR", m_Root.Path().string()};
    CZORBALT_SysService m_Service{"test", "zorbalt", "1.0"};
};

TEST_F(AuthorityTest, WithoutAKeyFileTheKeyIsEmpty) {
    EXPECT_EQ(ConfiguredKey(), "");
    EXPECT_FALSE(HasAuthority("anything"));
    EXPECT_FALSE(HasAuthority(std::nullopt));
    EXPECT_FALSE(m_Service.HasOperatingAuthority(nullptr));
    std::filesystem::remove(m_Root.Path() / "etc");
    EXPECT_EQ(ConfiguredKey(), "");
}

TEST_F(AuthorityTest, WithoutAnInstallRootTheKeyIsEmpty) {
    const ScopedVariable unknown("ZORBALT_INSTALL_DIR", "");
    EXPECT_EQ(ConfiguredKey(), "");
}

TEST_F(AuthorityTest, TheRightKeyHasAuthority) {
    Configure("open sesame\n");
    EXPECT_EQ(ConfiguredKey(), "open sesame");
    EXPECT_TRUE(HasAuthority("open sesame"));
}

TEST_F(AuthorityTest, AWrongKeyOfAnyLengthHasNone) {
    const std::string right = "open sesame";
    Configure(right);
    for (std::size_t length = 0; length < 64; ++length) {
        EXPECT_FALSE(HasAuthority(std::string(length, 'o'))) << length;
        if (length != right.size()) {
            std::string piece = (right + right + right + right + right + right).substr(0, length);
            EXPECT_FALSE(HasAuthority(piece)) << piece;
        }
    }
    for (std::size_t at = 0; at < right.size(); ++at) {
        for (const char change : {'\x01', '\x20', '\x40', '\x80'}) {
            std::string wrong = right;
            wrong[at] = static_cast<char>(wrong[at] ^ change);
            EXPECT_FALSE(HasAuthority(wrong)) << at;
        }
    }
    EXPECT_FALSE(HasAuthority(right + '\0'));
    EXPECT_FALSE(HasAuthority(right + '\n'));
    EXPECT_FALSE(HasAuthority(std::string(1U << 20U, 'o')));
    EXPECT_TRUE(HasAuthority(right));
}

TEST_F(AuthorityTest, NoKeyAndNoInstanceHaveNone) {
    Configure("open sesame\n");
    EXPECT_FALSE(HasAuthority(std::nullopt));
    EXPECT_FALSE(m_Service.HasOperatingAuthority(nullptr));
}

TEST_F(AuthorityTest, TheKeyIsTheFirstLineWithoutWhiteSpaceAtItsEnd) {
    const struct {
        const char* contents;
        const char* key;
    } cases[] = {
        {"key", "key"},       {"key\n", "key"}, {"key\r\n", "key"},    {"key \t\r\n", "key"},
        {"  key\n", "  key"}, {"a b\n", "a b"}, {"key\nother", "key"}, {"", ""},
        {"\n", ""},           {" \t\r\n", ""},  {"\nkey\n", ""},       {"k\xC3\xBC\n", "k\xC3\xBC"},
    };
    for (const auto& each : cases) {
        Configure(each.contents);
        EXPECT_EQ(ConfiguredKey(), each.key) << '"' << each.contents << '"';
    }
}

TEST_F(AuthorityTest, TheKeyIsReadAnewForEveryCaller) {
    Configure("first\n");
    EXPECT_TRUE(HasAuthority("first"));
    Configure("second\n");
    EXPECT_FALSE(HasAuthority("first"));
    EXPECT_TRUE(HasAuthority("second"));
}

TEST_F(AuthorityTest, ADirectoryInTheKeyFilesPlaceLetsNobodyIn) {
    std::filesystem::create_directory(KeyFile());
    ExpectNobodyGetsIn();
}

TEST_F(AuthorityTest, AKeyFileThatLeadsNowhereLetsNobodyIn) {
    std::filesystem::create_symlink(m_Root / "missing", KeyFile());
    ExpectNobodyGetsIn();
    std::filesystem::remove(KeyFile());
    std::filesystem::create_symlink(KeyFile(), KeyFile());
    ExpectNobodyGetsIn();
}

TEST_F(AuthorityTest, AKeyFileBehindALinkIsRead) {
    WriteFile(m_Root / "elsewhere", "linked\n");
    std::filesystem::create_symlink(m_Root / "elsewhere", KeyFile());
    EXPECT_EQ(ConfiguredKey(), "linked");
}

TEST_F(AuthorityTest, AKeyFileThatMayNotBeReadLetsNobodyIn) {
    Configure("secret\n");
    // 0: nobody gets in, 1: somebody does, 2: this user may read everything and cannot become another.
    const auto tryAsOrdinaryUser = [this] {
        if (::geteuid() == 0 && ::setuid(65534) != 0) {
            return 2;
        }
        try {
            (void)ConfiguredKey();
            return 1;
        } catch (const QelException&) {
            return 0;
        }
    };
    ASSERT_EQ(::chmod(m_Root.Path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod((m_Root / "etc").c_str(), 0755), 0);
    ASSERT_EQ(::chmod(KeyFile().c_str(), 0), 0);
    const int ofFile = RunInChild(tryAsOrdinaryUser);
    if (ofFile == 2) {
        GTEST_SKIP() << "no ordinary user to be had";
    }
    EXPECT_EQ(ofFile, 0);
    ASSERT_EQ(::chmod(KeyFile().c_str(), 0644), 0);
    EXPECT_EQ(RunInChild(tryAsOrdinaryUser), 1) << "readable again";
    ASSERT_EQ(::chmod((m_Root / "etc").c_str(), 0), 0);
    EXPECT_EQ(RunInChild(tryAsOrdinaryUser), 0);
    ASSERT_EQ(::chmod((m_Root / "etc").c_str(), 0755), 0);
}

TEST_F(AuthorityTest, TheExceptionNamesTheFile) {
    std::filesystem::create_directory(KeyFile());
    try {
        (void)ConfiguredKey();
        FAIL() << "no exception";
    } catch (const std::exception& exception) {
        EXPECT_NE(std::string(exception.what()).find(KeyFile()), std::string::npos) << exception.what();
    }
}

}  // namespace
