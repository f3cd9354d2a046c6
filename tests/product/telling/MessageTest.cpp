#include "Message.h"

#include "Bench.h"

namespace telling::test {
namespace {

TEST(Message, IsTheEventInOneLineOfJson) {
    EXPECT_EQ(JsonLineOf(MakeMessage()), watch::JsonOf(MakeMessage().event, "storage7") + "\n");
}

TEST(Message, SaysHowManyEventsWereDropped) {
    Message message = MakeMessage();
    message.dropped = 12;
    const std::string line = JsonLineOf(message);
    EXPECT_TRUE(line.ends_with(",\"dropped\":12}\n")) << line;
    EXPECT_EQ(watch::JsonOf(*watch::EventFrom(line), "storage7") + "\n", JsonLineOf(MakeMessage()));
    EXPECT_THAT(FieldsOf(message), testing::Contains("MNGSRVRAID_DROPPED=12"));
    EXPECT_EQ(DroppedNote(MakeMessage()), "");
}

TEST(Message, TitleNamesTheServerWhereItHasAName) {
    Message message = MakeMessage("a\nb");
    EXPECT_EQ(TitleOf(message), "storage7: CRITICAL began: a b");
    message.host = "";
    EXPECT_EQ(TitleOf(message), "CRITICAL began: a b");
}

TEST(Message, OfOthersIsShortAndPrintable) {
    EXPECT_EQ(OneShortLine(" a\tb\x1B \n"), "a b\xEF\xBF\xBD");
    EXPECT_EQ(OneShortLine(std::string(300, 'x')), std::string(300, 'x'));
    EXPECT_EQ(OneShortLine(std::string(301, 'x')), std::string(299, 'x') + "\xE2\x80\xA6");
    EXPECT_EQ(LastLineOf("one\ntwo\r\n \n\n"), "two");
    EXPECT_EQ(LastLineOf("one\rtwo"), "two");
    EXPECT_EQ(LastLineOf(""), "");
}

std::string Documentation() {
    return testsupport::ReadFile(TELLING_TEST_DOCUMENTATION);
}

TEST(Message, HasFieldsThatAreDocumented) {
    const std::string documentation = Documentation();
    Message message = MakeMessage();
    message.dropped = 1;
    for (const std::string& field : FieldsOf(message)) {
        EXPECT_THAT(documentation, HasSubstr(field.substr(0, field.find('=')))) << field;
    }
}

TEST(Channel, HasKeysThatAreDocumented) {
    const std::string documentation = Documentation();
    std::vector<Channel> channels{
        {.name = "", .way = Exec{.program = "", .arguments = {std::string(1, '\0')}}, .capacity = 0},
        {.name = "a", .way = Mail{.recipients = {}, .sender = "a b", .timeLimit = seconds(0)}},
        {.name = "b", .way = Http{.url = "", .authorityFile = "a", .headers = {""}, .headersFile = "a"}}};
    std::size_t count = 0;
    for (const Channel& channel : channels) {
        for (const Fault& fault : FaultsOf(channel)) {
            EXPECT_THAT(documentation, HasSubstr("| `" + fault.key + "` |"));
            ++count;
        }
    }
    EXPECT_EQ(count, 11U);
}

}  // namespace
}  // namespace telling::test
