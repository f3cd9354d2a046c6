#include "MailText.h"

#include "Bench.h"
#include "basics/Text.h"
#include "basics/Words.h"

#include <cstdio>

namespace telling::test {
namespace {

const Mail kMail{.recipients = {"storage@example.org", "root@example.org"}, .sender = "raid@example.org"};

// The line that begins so, with those that it is continued in.
std::string HeaderOf(const std::string& text, const std::string& name) {
    std::size_t begin = ("\n" + text).find("\n" + name + ":");
    std::size_t end = text.find('\n', begin);
    while (end != std::string::npos && end + 1 < text.size() && text[end + 1] == ' ') {
        end = text.find('\n', end + 1);
    }
    return begin == std::string::npos ? "" : text.substr(begin, end - begin);
}

TEST(MailText, IsAMail) {
    EXPECT_EQ(MailTextOf(kMail, MakeMessage()),
              "To: storage@example.org, root@example.org\n"
              "From: raid@example.org\n"
              "Subject: storage7: CRITICAL began: controller 0, RG1, PD9 in enclosure 16\n"
              " slot 1: FAILED\n"
              "Date: Sat, 05 Apr 2031 06:07:08 +0000\n"
              "Message-ID: <20310405T060708Z-3f2a9c41@storage7>\n"
              "Auto-Submitted: auto-generated\n"
              "MIME-Version: 1.0\n"
              "Content-Type: text/plain; charset=UTF-8\n"
              "Content-Transfer-Encoding: quoted-printable\n"
              "\n"
              "CRITICAL began: controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED\n"
              "\n"
              "Replace it.\n"
              "\n"
              "Server:         storage7\n"
              "Time:           2031-04-05T06:07:08Z\n"
              "Level:          CRITICAL, until now OK\n"
              "Drive:          TF600S15, serial number 7K00025200C4\n"
              "Event:          20310405T060708Z-3f2a9c41\n");
}

TEST(MailText, TellsHowManyEventsWereDropped) {
    Message message = MakeMessage();
    message.dropped = 3;
    EXPECT_THAT(
        MailTextOf(kMail, message),
        HasSubstr(
            "\n\n3 events before this one were dropped, because too many waited for this cha=\nnnel.\n"));
    message.dropped = 1;
    EXPECT_THAT(MailTextOf(kMail, message), HasSubstr("\n\n1 event before this one was dropped, because"));
}

TEST(MailText, LeavesTheSenderToTheMailProgramWhereNoneIsNamed) {
    EXPECT_EQ(HeaderOf(MailTextOf({.recipients = {"root"}}, MakeMessage()), "From"), "");
}

TEST(MailText, SubjectIsEncodedInWholeCharactersWhereItIsNotAscii) {
    std::string words;
    for (int count = 0; count < 30; ++count) {
        words += "\xE2\x82\xAC";  // a euro sign
    }
    const std::string subject = HeaderOf(MailTextOf(kMail, MakeMessage(words)), "Subject");
    EXPECT_THAT(subject, StartsWith("Subject: =?UTF-8?Q?storage7=3A_CRITICAL_began=3A_=E2=82=AC"));
    std::size_t euros = 0;
    for (const std::string_view line : basics::Words(subject, "\n")) {
        EXPECT_LE(line.size(), 76U) << line;
        EXPECT_TRUE(line.ends_with("=AC?=")) << line;
        for (std::size_t at = line.find("=E2=82=AC"); at != std::string_view::npos;
             at = line.find("=E2=82=AC", at + 1)) {
            ++euros;
        }
    }
    EXPECT_EQ(euros, 30U);
}

TEST(MailText, SubjectThatLooksEncodedIsNoneThatIsDecoded) {
    EXPECT_THAT(HeaderOf(MailTextOf(kMail, MakeMessage("=?UTF-8?Q?all_is_well?=")), "Subject"),
                HasSubstr("=3D=3FUTF=2D8=3FQ=3Fall?=\n =?UTF-8?Q?=5Fis=5Fwell=3F=3D?="));
}

TEST(MailText, SubjectIsShort) {
    const std::string subject = HeaderOf(MailTextOf(kMail, MakeMessage(std::string(5000, 'x'))), "Subject");
    EXPECT_LT(subject.size(), 400U);
    EXPECT_TRUE(subject.ends_with("=E2=80=A6?=")) << subject;
}

TEST(MailText, MessageIdIsMadeOfLettersWhateverTheNamesAre) {
    Message message = MakeMessage();
    message.host = "a>\nb";
    EXPECT_EQ(HeaderOf(MailTextOf(kMail, message), "Message-ID"),
              "Message-ID: <20310405T060708Z-3f2a9c41@localhost>");
    message.host = "storage7.example.org";
    message.event.id = "a@b\nc";
    EXPECT_EQ(HeaderOf(MailTextOf(kMail, message), "Message-ID"),
              "Message-ID: <unknown@storage7.example.org>");
}

TEST(MailText, ManyRecipientsAreFolded) {
    Mail mail{.recipients = {}};
    for (int number = 0; number < 20; ++number) {
        mail.recipients.push_back("administrator" + std::to_string(number) + "@example.org");
    }
    const std::string to = HeaderOf(MailTextOf(mail, MakeMessage()), "To");
    for (const std::string_view line : basics::Words(to, "\n")) {
        EXPECT_LE(line.size(), 76U) << line;
    }
    EXPECT_THAT(to, HasSubstr("administrator19@example.org"));
}

TEST(MailText, BodyHasShortLinesOfAscii) {
    const std::string text = MailTextOf(kMail, MakeMessage("=" + std::string(200, 'x') + "\xC3\xA4 \n "));
    const std::string body = text.substr(text.find("\n\n") + 2);
    EXPECT_THAT(body, StartsWith("CRITICAL began: =3Dxxxx"));
    for (const std::string_view line : basics::Words(body, "\n")) {
        EXPECT_LE(line.size(), 76U) << line;
        EXPECT_FALSE(line.ends_with(' ')) << line;
        EXPECT_TRUE(std::all_of(line.begin(), line.end(), [](char letter) {
            return ' ' <= letter && letter <= '~';
        })) << line;
    }
}

// What another program reads in mails of events that hold anything.
TEST(MailText, NothingInAnEventAddsAHeader) {
    const TempFolder folder;
    const TempFolder outside;
    const std::string hostile[] = {"a\nBcc: victim@example.org",
                                   "a\r\nBcc: victim@example.org\r\n\r\nnew body",
                                   "a\r\rb",
                                   std::string("a\0b", 3),
                                   "\xFF\xFE",
                                   "a\xE2\x80\xA8"
                                   "Bcc: b",
                                   "\x1B[2J",
                                   "=?UTF-8?B?QUFB?=",
                                   std::string(3000, '\xE4'),
                                   "  leading and trailing  ",
                                   "a\n.\nMAIL FROM:<x>",
                                   ""};
    int number = 0;
    for (const std::string& text : hostile) {
        Message message = MakeMessage(text);
        message.host = message.event.advice = message.event.about.product = message.event.about.serial = text;
        folder.Write(std::to_string(number), MailTextOf(kMail, message));
        outside.Write(std::to_string(number++), basics::Shortened(TitleOf(message), 200));
    }
    const std::string program = R"(
import email, email.policy, pathlib, sys
want = ["To", "From", "Subject", "Date", "Message-ID", "Auto-Submitted", "MIME-Version", "Content-Type", "Content-Transfer-Encoding"]
for path in pathlib.Path(sys.argv[1]).iterdir():
    mail = email.message_from_bytes(path.read_bytes(), policy=email.policy.default)
    defects = [each for part in [mail, *mail.values()] for each in part.defects]
    subject = (pathlib.Path(sys.argv[2]) / path.name).read_text()
    good = mail.keys() == want and not defects and mail["Subject"].split() == subject.split() and "Event:" in mail.get_content()
    if not good or [each.addr_spec for each in mail["To"].addresses] != ["storage@example.org", "root@example.org"]:
        print(path.name, mail.keys(), defects, mail["Subject"])
)";
    outside.Write("check.py", program);
    std::FILE* const check = ::popen(("/usr/bin/python3 " + (outside / "check.py") + " " +
                                      folder.Path().string() + " " + outside.Path().string() + " 2>&1")
                                         .c_str(),
                                     "r");
    ASSERT_NE(check, nullptr);
    std::string said;
    for (int letter = std::fgetc(check); letter != EOF; letter = std::fgetc(check)) {
        said += static_cast<char>(letter);
    }
    EXPECT_EQ(::pclose(check), 0);
    EXPECT_EQ(said, "");
}

}  // namespace
}  // namespace telling::test
