#include "telling/Channel.h"

#include "Bench.h"
#include "basics/Words.h"

#include <unistd.h>

namespace telling::test {
namespace {

std::string Words(const std::vector<Fault>& faults) {
    return basics::Joined(faults, "; ", [](const Fault& fault) { return fault.key + ": " + fault.words; });
}

std::string FaultsOfUrl(const std::string& url, bool mayBePlain = false) {
    return Words(FaultsOf({.name = "web", .way = Http{.url = url, .mayBePlain = mayBePlain}}));
}

std::string FaultsOfHeader(const std::string& header) {
    return Words(FaultsOf({.name = "web", .way = Http{.url = "https://a", .headers = {header}}}));
}

std::string FaultsOfRecipient(const std::string& recipient) {
    return Words(FaultsOf({.name = "mail", .way = Mail{.recipients = {recipient}}}));
}

TEST(Channel, WantsWhatIsNotOnlyInformation) {
    const Channel channel{.name = "any"};
    EXPECT_FALSE(Wants(channel, MakeEvent("1", Level::Ok)));
    EXPECT_TRUE(Wants(channel, MakeEvent("1", Level::Unknown)));
    EXPECT_TRUE(Wants(channel, MakeEvent("1", Level::Critical)));
}

TEST(Channel, WantsTheEndOfWhatItWantedTheBeginningOf) {
    watch::Event ended = MakeEvent("1", Level::Ok);
    ended.before = Level::Warning;
    EXPECT_TRUE(Wants({.name = "any", .least = Level::Warning}, ended));
    EXPECT_FALSE(Wants({.name = "any", .least = Level::Critical}, ended));
}

TEST(Channel, WantsEveryTest) {
    watch::Event event = MakeEvent("1", Level::Ok);
    event.kind = watch::EventKind::Test;
    EXPECT_TRUE(Wants({.name = "any", .least = Level::Critical}, event));
}

TEST(Channel, SaysOfWhichKindItIs) {
    EXPECT_EQ(NameOfKind({.name = "a", .way = Journal{}}), "journal");
    EXPECT_EQ(NameOfKind({.name = "a", .way = Exec{}}), "exec");
    EXPECT_EQ(NameOfKind({.name = "a", .way = Mail{}}), "mail");
    EXPECT_EQ(NameOfKind({.name = "a", .way = Http{}}), "http");
}

TEST(Channel, HasNoFaultAsItIsMeant) {
    EXPECT_EQ(Words(FaultsOf({.name = "log", .way = Journal{}})), "");
    EXPECT_EQ(
        Words(FaultsOf({.name = "on-call.1", .way = Exec{.program = "/bin/true", .arguments = {"-a b"}}})),
        "");
    EXPECT_EQ(Words(FaultsOf(
                  {.name = "mail", .way = Mail{.recipients = {"root", "a+b@c.example"}, .sender = "x@y"}})),
              "");
    EXPECT_EQ(Words(FaultsOf({.name = "web",
                              .way = Http{.url = "https://alerts.example.org:8443/hook?for=storage%207",
                                          .authorityFile = "/etc/ca.pem",
                                          .headers = {"Authorization: Bearer 0123"},
                                          .headersFile = "/etc/token"}})),
              "");
}

TEST(Channel, NameIsOneWord) {
    for (const char* const name : {"", "two words", "a/b", "a\nb", "\xC3\xA4"}) {
        EXPECT_THAT(Words(FaultsOf({.name = name})), StartsWith("name: it is one word")) << name;
    }
    EXPECT_THAT(Words(FaultsOf({.name = std::string(65, 'a')})), StartsWith("name: "));
    EXPECT_EQ(Words(FaultsOf({.name = std::string(64, 'a')})), "");
}

TEST(Channel, QueueIsBounded) {
    EXPECT_EQ(Words(FaultsOf({.name = "a", .capacity = 0})), "queue: it is a whole number from 1 to 100000");
    EXPECT_EQ(Words(FaultsOf({.name = "a", .capacity = 100'001})),
              "queue: it is a whole number from 1 to 100000");
    EXPECT_EQ(Words(FaultsOf({.name = "a", .capacity = 100'000})), "");
}

TEST(Channel, TimeLimitIsFromASecondToAnHour) {
    for (const seconds limit : {seconds(0), seconds(-1), seconds(3601)}) {
        EXPECT_EQ(Words(FaultsOf({.name = "a", .way = Exec{.program = "/a", .timeLimit = limit}})),
                  "timeout: it is from 1s to 1h");
    }
    EXPECT_EQ(Words(FaultsOf({.name = "a", .way = Exec{.program = "/a", .timeLimit = seconds(3600)}})), "");
}

TEST(Channel, ProgramIsAFullPath) {
    EXPECT_EQ(Words(FaultsOf({.name = "a", .way = Exec{.program = "notify"}})),
              "program: it is a full path, from / on");
    EXPECT_EQ(Words(FaultsOf({.name = "a", .way = Mail{.recipients = {"root"}, .program = ""}})),
              "program: it is a full path, from / on");
    EXPECT_EQ(
        Words(FaultsOf({.name = "a", .way = Exec{.program = "/a", .arguments = {std::string("a\0b", 3)}}})),
        "arguments: none can hold the character 0");
}

TEST(Channel, MailHasAddressesAndNothingElse) {
    EXPECT_EQ(Words(FaultsOf({.name = "a", .way = Mail{}})), "to: nobody is named");
    for (const char* const bad :
         {"",      "a b",  "a@b c",   "a,b",     "a\nBcc: b", "a\r",        "-oQ/tmp",
          "<a@b>", "a@",   "@b",      "a@b@c",   "a..b@c",    "a@b..c",     ".a@b",
          "a.@b",  "a@.b", "A <a@b>", "\"a\"@b", "a@b;c",     "\xC3\xA4@b", "a@[127.0.0.1]"}) {
        EXPECT_THAT(FaultsOfRecipient(bad), StartsWith("to: each is an address")) << bad;
    }
    EXPECT_THAT(FaultsOfRecipient(std::string(251, 'a') + "@b.c"), HasSubstr("to: "));
    for (const char* const good : {"root", "a@b", "first.last+tag@sub.example-1.org", "o'brien@x.org"}) {
        EXPECT_EQ(FaultsOfRecipient(good), "") << good;
    }
    EXPECT_THAT(Words(FaultsOf({.name = "a", .way = Mail{.recipients = {"a"}, .sender = "A B"}})),
                StartsWith("from: "));
}

TEST(Channel, HttpIsForThisMachineAlone) {
    for (const char* const near : {"http://localhost/", "http://LOCALHOST:80", "http://127.0.0.1:8080/a",
                                   "http://127.9.9.9", "http://[::1]:8080/a", "https://far.example"}) {
        EXPECT_EQ(FaultsOfUrl(near), "") << near;
    }
    for (const char* const far :
         {"http://far.example/", "http://10.0.0.1", "http://localhost.far.example",
          "http://127.0.0.1.far.example", "http://[fe80::1]/", "http://0.0.0.0/", "http://128.0.0.1/"}) {
        EXPECT_EQ(FaultsOfUrl(far), "url: http goes to this machine alone; use https, or set plain") << far;
        EXPECT_EQ(FaultsOfUrl(far, true), "") << far;
    }
}

TEST(Channel, UrlIsOneOfAWebServerWithoutSecrets) {
    for (const char* const bad : {"",
                                  "far.example",
                                  "ftp://far.example",
                                  "HTTPS://far.example",
                                  "file:///etc/passwd",
                                  "https://",
                                  "https:///a",
                                  "https://:80",
                                  "https://a b",
                                  "https://a/\n",
                                  "https://a\\@b",
                                  "https://a#b",
                                  "https://name:word@a/",
                                  "https://a@b",
                                  "https://a:0",
                                  "https://a:65536",
                                  "https://a:b",
                                  "https://a:",
                                  "https://[a]",
                                  "https://[::1",
                                  "https://[::1]x",
                                  "https://[::1]x80",
                                  "https://a/\xC3\xA4"}) {
        EXPECT_THAT(FaultsOfUrl(bad), StartsWith("url: ")) << bad;
    }
    EXPECT_EQ(FaultsOfUrl("https://name:word@a/"),
              "url: a name and a password are not for a URL; put them into headers_file");
    EXPECT_EQ(FaultsOfUrl("https://a/?user=x@y"), "");
}

TEST(Channel, HeadersAreLinesThatTheServiceDoesNotSetItself) {
    for (const char* const bad :
         {"", "Authorization", ": a", "A:", "A: ", "A b: c", " A: b", "A: b\r\nC: d", "A: b\n", "A\t: b"}) {
        EXPECT_THAT(FaultsOfHeader(bad), StartsWith("headers: ")) << bad;
    }
    for (const char* const name :
         {"Content-Type", "content-length", "Idempotency-Key", "Transfer-Encoding", "Host", "Expect"}) {
        EXPECT_EQ(FaultsOfHeader(std::string(name) + ": a"),
                  "headers: " + std::string(name) + " is set by the service itself");
    }
    EXPECT_EQ(FaultsOfHeader("X-Token:0123"), "");
}

TEST(Channel, FilesAreFullPaths) {
    EXPECT_EQ(
        Words(FaultsOf({.name = "a",
                        .way = Http{.url = "https://a", .authorityFile = "ca.pem", .headersFile = "token"}})),
        "ca_file: it is a full path, from / on; headers_file: it is a full path, from / on");
}

TEST(Channel, TellsWhatThisMachineLacks) {
    const TempFolder folder;
    folder.Write("text", "");
    EXPECT_EQ(Words(MissingFor({.name = "a", .way = Journal{}})), "");
    EXPECT_EQ(Words(MissingFor(ExecChannel("a", "/bin/sh"))), "");
    EXPECT_EQ(Words(MissingFor(ExecChannel("a", "/no/such"))),
              "program: /no/such: No such file or directory");
    EXPECT_EQ(Words(MissingFor(ExecChannel("a", folder / "text"))),
              "program: " + (folder / "text") + ": Permission denied");
    EXPECT_EQ(Words(MissingFor(ExecChannel("a", "/tmp"))), "program: /tmp: it is no file");
    EXPECT_EQ(Words(MissingFor({.name = "a", .way = Mail{.recipients = {"a"}, .program = "/no/such"}})),
              "program: /no/such: No such file or directory");
}

TEST(Channel, TellsWhatItsFilesLack) {
    const TempFolder folder;
    folder.Write("headers", "# for alerts.example.org\n\nAuthorization: Bearer 0123\r\nnonsense\n");
    const Channel channel{
        .name = "a",
        .way = Http{.url = "https://a", .authorityFile = "/no/ca", .headersFile = folder / "headers"}};
    EXPECT_EQ(Words(MissingFor(channel)),
              "ca_file: /no/ca: No such file or directory; headers_file: " + (folder / "headers") +
                  ": each is a line such as \"Authorization: Bearer 0123\"");
    folder.Write("headers", "# for alerts.example.org\n\nAuthorization: Bearer 0123\r\n");
    EXPECT_EQ(
        Words(MissingFor({.name = "a", .way = Http{.url = "https://a", .headersFile = folder / "headers"}})),
        "");
    EXPECT_THAT(Words(MissingFor({.name = "a", .way = Http{.url = "https://a", .headersFile = "/no/such"}})),
                HasSubstr("/no/such cannot be read"));
}

}  // namespace
}  // namespace telling::test
