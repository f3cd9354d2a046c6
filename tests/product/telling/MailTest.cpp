#include "Bench.h"
#include "Receiver.h"

namespace telling::test {
namespace {

// With a mail program of Debian's, which hands mail on to the receiver.
class MailTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { s_Receiver = new Receiver; }
    static void TearDownTestSuite() { delete s_Receiver; }

    void SetUp() override {
        m_Before = s_Receiver->Mails().size();
        m_Home.Write(".msmtprc", "account default\nhost 127.0.0.1\nport " + s_Receiver->Port("smtp") +
                                     "\nfrom bounces@example.org\ntls off\nauth off\ndomain localhost\n");
        std::filesystem::permissions(m_Home / ".msmtprc", std::filesystem::perms::owner_read);
        ::setenv("HOME", m_Home.Path().c_str(), 1);
    }
    void TearDown() override {
        ::setenv("HOME", m_HomeBefore.c_str(), 1);
        s_Receiver->Unset("mail-is-down");
    }

    [[nodiscard]] std::vector<nlohmann::json> Mails() const {
        std::vector<nlohmann::json> mails = s_Receiver->Mails();
        mails.erase(mails.begin(), mails.begin() + static_cast<std::ptrdiff_t>(m_Before));
        return mails;
    }

    [[nodiscard]] static std::string HeaderOf(const nlohmann::json& mail, const std::string& name) {
        for (const nlohmann::json& header : mail["headers"]) {
            if (header[0] == name) {
                return header[1];
            }
        }
        return "none";
    }

    static inline Receiver* s_Receiver = nullptr;
    const Channel m_Channel{.name = "mail",
                            .way = Mail{.recipients = {"storage@example.org", "on-call@example.org"},
                                        .sender = "raid@example.org",
                                        .program = "/usr/bin/msmtp"}};
    TempFolder m_Home;
    std::string m_HomeBefore = std::getenv("HOME") == nullptr ? "/" : std::getenv("HOME");
    std::size_t m_Before = 0;
};

TEST_F(MailTest, Arrives) {
    Bench bench({m_Channel});
    watch::Event event = MakeEvent("20310405T060708Z-3f2a9c41");
    event.words =
        "controller 0, RG1, PD9: \xC3\xBC"
        "berhitzt";
    bench.courier.Add("mail", event);
    bench.Settle();
    ASSERT_THAT(bench.Which(What::Delivered), ElementsAre("mail 20310405T060708Z-3f2a9c41"))
        << bench.LastWords();
    ASSERT_EQ(Mails().size(), 1U);
    const nlohmann::json mail = Mails().front();
    EXPECT_EQ(mail["recipients"], nlohmann::json({"<storage@example.org>", "<on-call@example.org>"}));
    EXPECT_EQ(mail["defects"], nlohmann::json::array());
    EXPECT_EQ(HeaderOf(mail, "To"), "storage@example.org, on-call@example.org");
    EXPECT_EQ(HeaderOf(mail, "From"), "raid@example.org");
    EXPECT_EQ(HeaderOf(mail, "Subject"),
              "storage7: CRITICAL began: controller 0, RG1, PD9: \xC3\xBC"
              "berhitzt");
    EXPECT_EQ(HeaderOf(mail, "Date"), "Sat, 05 Apr 2031 06:07:08 +0000");
    EXPECT_EQ(HeaderOf(mail, "Message-ID"), "<20310405T060708Z-3f2a9c41@storage7>");
    EXPECT_EQ(HeaderOf(mail, "Auto-Submitted"), "auto-generated");
    EXPECT_EQ(
        mail["text"],
        "CRITICAL began: controller 0, RG1, PD9: \xC3\xBC"
        "berhitzt\n\nReplace it.\n\n"
        "Server:         storage7\nTime:           2031-04-05T06:07:08Z\nLevel:          CRITICAL, until now "
        "OK\n"
        "Drive:          TF600S15, serial number 7K00025200C4\nEvent:          20310405T060708Z-3f2a9c41\n");
}

TEST_F(MailTest, IsTheSameWhenItIsTriedAgain) {
    s_Receiver->Set("mail-is-down");
    Bench bench({m_Channel});
    bench.Add("mail", "1");
    bench.Settle();
    EXPECT_THAT(bench.LastWords(), StartsWith("/usr/bin/msmtp ended with status "));
    EXPECT_THAT(bench.LastWords(), HasSubstr("could not send mail"));
    s_Receiver->Unset("mail-is-down");
    bench.now += seconds(10);
    bench.Settle();
    EXPECT_THAT(bench.Which(What::Delivered), ElementsAre("mail 1"));
    ASSERT_EQ(Mails().size(), 1U);
    EXPECT_EQ(HeaderOf(Mails().front(), "Message-ID"), "<1@storage7>");
}

TEST_F(MailTest, LineWithADotAloneEndsNothing) {
    Bench bench({m_Channel});
    watch::Event event = MakeEvent("1");
    event.advice = ".";
    bench.courier.Add("mail", event);
    bench.Settle();
    ASSERT_EQ(Mails().size(), 1U);
    EXPECT_THAT(Mails().front()["text"].get<std::string>(), HasSubstr("\n.\n\nServer:"));
}

TEST_F(MailTest, ProgramGetsItsTwoWordsAndNothingOfTheEvent) {
    const TempFolder folder;
    Bench bench({{.name = "mail",
                  .way = Mail{.recipients = {"root"},
                              .program = MakeScript(folder, "sendmail",
                                                    "echo \"$@\" > " + (folder / "words") +
                                                        "\nenv | grep -c MNGSRVRAID >> " +
                                                        (folder / "words") + "\n")}}});
    bench.Add("mail", "1");
    bench.Settle();
    EXPECT_EQ(folder.Read("words"), "-t -oi\n0\n");
}

}  // namespace
}  // namespace telling::test
