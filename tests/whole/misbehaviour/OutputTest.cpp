// What a run of the tool may print, as long as it ends.
#include "HostedProvider.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <ostream>

namespace {

using testsupport::CommandNamed;
using testsupport::Document;
using testsupport::Failure;
using testsupport::Rejection;
using testsupport::Seen;
using testsupport::Success;
using testsupport::ToolCommand;
using testsupport::ToolCommands;
using testsupport::Well;

using namespace std::string_literals;

const std::string kMarker = "Error - Invalid input at or near token";

class OutputTest : public testsupport::MisbehaviourTest {};

class OutputOfEachCommandTest : public OutputTest, public ::testing::WithParamInterface<ToolCommand> {};

INSTANTIATE_TEST_SUITE_P(EveryCommand, OutputOfEachCommandTest, ::testing::ValuesIn(ToolCommands()),
                         [](const auto& command) { return command.param.name; });

TEST_P(OutputOfEachCommandTest, TheLastLineNeedsNoLineFeed) {
    const std::string& text = WellText(GetParam());
    Print(GetParam(), text.substr(0, text.size() - 1));
    Expect(Call(GetParam()), Success(GetParam().method));
}

TEST_P(OutputOfEachCommandTest, LinesMayEndWithACarriageReturn) {
    std::string text;
    for (const char character : WellText(GetParam())) {
        text += character == '\n' ? "\r\n"s : std::string(1, character);
    }
    Print(GetParam(), text);
    Expect(Call(GetParam()), Success(GetParam().method));
}

TEST_P(OutputOfEachCommandTest, StandardErrorIsReadLikeStandardOutput) {
    Instruct(GetParam(), "stderr");
    Expect(Call(GetParam()), Success(GetParam().method));
}

TEST_P(OutputOfEachCommandTest, AMillionEmptyLinesInFrontArePassedOver) {
    Print(GetParam(), std::string(1'000'000, '\n') + WellText(GetParam()));
    Expect(Call(GetParam()), Success(GetParam().method));
}

TEST_P(OutputOfEachCommandTest, TheMarkerInFrontIsNotTriedAgain) {
    Instruct(GetParam(), "marker");
    Expect(Call(GetParam()), Rejection(GetParam()));
}

// A text and what it comes to.
struct Output {
    const char* name;
    const char* command;
    std::string text;
    const char* instructions;
    std::function<Seen(const ToolCommand&)> expected;
};

void PrintTo(const Output& output, std::ostream* out) {
    *out << output.name;
}

Seen WithItems(const std::string& items) {
    Seen seen = Success();
    seen.document = Document(items);
    return seen;
}

// A controller with these items under its general title, "name" and "value" by turns.
std::function<Seen(const ToolCommand&)> Controller(const std::vector<std::string>& items) {
    return [items](const ToolCommand& /*command*/) {
        std::string text =
            "  <Item Name=\"Controller Information\" Valid=\"TRUE\">\n"
            "    <Item Name=\"### General Information ###\" Valid=\"TRUE\">\n"
            "      <Item Name=\"Controller No.\" Value=\"0\" Valid=\"TRUE\"/>\n";
        for (std::size_t at = 0; at + 1 < items.size(); at += 2) {
            text +=
                "      <Item Name=\"" + items[at] + "\" Value=\"" + items[at + 1] + "\" Valid=\"TRUE\"/>\n";
        }
        text += "    </Item>\n  </Item>\n";
        return WithItems(text + testsupport::LogicalDriveItems() + testsupport::DriveItems());
    };
}

std::string General(const std::string& lines) {
    return "RAID Controller : 0\n### General Information ###\n" + lines;
}

Seen NoControllerItems(const ToolCommand& /*command*/) {
    return WithItems(testsupport::LogicalDriveItems() + testsupport::DriveItems());
}

Seen NoController(const ToolCommand& /*command*/) {
    Seen seen = Success();
    seen.document = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RAID version=\"1\"/>\n";
    seen.runs = {"-v", "-ctrlinfo -aAll"};
    return seen;
}

// The drives are asked for without their SMART data.
Seen NoSmart(const ToolCommand& /*command*/) {
    Seen seen = Success();
    seen.runs.back() = "-pdinfo -nosmart -a0";
    return seen;
}

// By exception; the version's file stays.
Seen NoVersion(const ToolCommand& /*command*/) {
    Seen seen;
    seen.status = 0x80041001;
    seen.returnValue = 0x80000002;
    seen.runs = {"-v"};
    seen.failures = {"CZORBALT_MngSrvRaid::ExecMethodAsync hr=0x80041001"};
    seen.filesLeft = {"NUMBER_MngSrvRaid.txt"};
    return seen;
}

// With two megabytes of x for "{x}". Made only here: every test of the program has the parameters of all.
std::string Lengthened(std::string text) {
    constexpr std::size_t kLength = std::size_t{2} << 20U;
    for (std::size_t at = text.find('{'); at != std::string::npos; at = text.find('{', at + kLength)) {
        text.replace(at, std::strlen("{x}"), kLength, text[at + 1]);
    }
    return text;
}

class OneOutputTest : public OutputTest, public ::testing::WithParamInterface<Output> {};

TEST_P(OneOutputTest, ComesTo) {
    const ToolCommand& command = CommandNamed(GetParam().command);
    Print(command, Lengthened(GetParam().text));
    Instruct(command, GetParam().instructions);
    Seen expected = GetParam().expected(command);
    expected.document = Lengthened(expected.document);
    Expect(Call(command), expected);
}

std::string NameOfOutput(const ::testing::TestParamInfo<Output>& output) {
    return output.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Marker, OneOutputTest,
    ::testing::Values(
        Output{"AtTheStart", "Controller", kMarker + " -a0\n", "exit 1", Rejection},
        Output{"WithoutLineFeed", "Controller", kMarker + " -a0", "exit 1", Rejection},
        Output{"WithoutToken", "Controller", kMarker, "exit 1", Rejection},
        Output{"FollowedByNul", "Controller", kMarker + "\0x"s, "exit 255", Rejection},
        Output{"OnStandardError", "Controller", kMarker + "\n", "stderr\nexit 1", Rejection},
        Output{"BeforeTwoMegabytes", "Drives", kMarker + "{x}", "exit 1", Rejection},
        Output{"WithSuccess", "Controller", kMarker + " -a0\n" + General("A : 1\n"), "exit 0",
               Controller({"A", "1"})},
        Output{"InTheSecondLine", "Controller", "\n" + kMarker, "exit 1", Failure},
        Output{"BehindABlank", "Controller", " " + kMarker, "exit 1", Failure},
        Output{"BehindACarriageReturn", "Controller", "\r" + kMarker, "exit 1", Failure},
        Output{"BehindNul", "Controller", "\0"s + kMarker, "exit 1", Failure},
        Output{"CutShort", "Controller", kMarker.substr(0, kMarker.size() - 1), "exit 1", Failure},
        Output{"CutByALineFeed", "Controller", kMarker.substr(0, 20) + "\n" + kMarker.substr(20), "exit 1",
               Failure},
        Output{"WithNulInside", "Controller", kMarker.substr(0, 20) + "\0"s + kMarker.substr(20), "exit 1",
               Failure},
        Output{"InLowerCase", "Controller", "error - invalid input at or near token", "exit 1", Failure}),
    NameOfOutput);

INSTANTIATE_TEST_SUITE_P(
    Nothing, OneOutputTest,
    ::testing::Values(Output{"ForTheVersion", "Version", "", "", Well},
                      Output{"ForTheCount", "Count", "", "", NoController},
                      Output{"ForTheController", "Controller", "", "", NoControllerItems},
                      Output{"OnAClosedStandardOutput", "Controller", "", "close-stdout", NoControllerItems},
                      Output{"ButMillionsOfLineFeeds", "Controller", "{\n}", "", NoControllerItems},
                      Output{"ButNul", "Controller", std::string(100, '\0'), "", NoControllerItems}),
    NameOfOutput);

// Item texts are handed over as C strings: what stands behind a NUL is lost, and becomes nothing else.
INSTANTIATE_TEST_SUITE_P(
    Nul, OneOutputTest,
    ::testing::Values(
        Output{"InAValue", "Controller", General("A : 1\0B : 2\nC : 3\n"s), "",
               Controller({"A", "1", "C", "3"})},
        Output{"InAKey", "Controller", General("A\0B : 1\n"s), "", Controller({"A", "1"})},
        Output{"BeforeTheColon", "Controller", General("\0: 1\n"s), "", Controller({"", "1"})},
        Output{"BehindTheColon", "Controller", General("A :\0 1\n"s), "", Controller({"A", ""})},
        Output{"AtTheEnd", "Controller", General("A : 1\0\n"s), "", Controller({"A", "1"})},
        Output{"InsteadOfALineFeed", "Controller", General("A : 1\0\0B : 2\0"s), "", Controller({"A", "1"})},
        Output{"InALineOfItsOwn", "Controller", General("\0\nA : 1\n"s), "", Controller({"A", "1"})},
        Output{"BehindATitle", "Controller", "RAID Controller : 0\n### General Information ###\0 x\nA : 1\n"s,
               "", Controller({"A", "1"})},
        Output{"InTheControllersNumber", "Controller",
               "RAID Controller : 0\0007\n### General Information ###\n"s, "", Controller({})},
        Output{"InTheCount", "Count", "RAID Controller\0: 0\n"s, "", Well},
        Output{"InADrivesStatus", "Drives",
               "PD3(LD0)\n### General Information ###\nInterface Type : SAS\0TA\nPD Status : ONLINE\0!\n"
               "Temperature : 31 C\0\n"s,
               "", Well},
        Output{"InADrivesHeader", "OneDrive",
               "PD3\0(LD0\0)\n### General Information ###\nInterface Type : SAS\nPD Status : ONLINE\n"
               "Temperature : 31 C\n"s,
               "", Well},
        Output{"InTheVersion", "Version", "Product Version : 4.1\0\n"s, "", NoSmart},
        Output{"InTheVersionsKey", "Version", "Product\0Version : 4.1\n"s, "", Well}),
    NameOfOutput);

INSTANTIATE_TEST_SUITE_P(
    TwoMegabytes, OneOutputTest,
    ::testing::Values(
        Output{"OfValue", "Controller", General("A : {x}\n"), "", Controller({"A", "{x}"})},
        Output{"OfKey", "Controller", General("{x} : 1\n"), "", Controller({"{x}", "1"})},
        Output{"WithoutColon", "Controller", General("{x}\nA : 1\n"), "", Controller({"A", "1"})},
        Output{"OfBlanks", "Controller", General("{ }A : 1\n"), "", Controller({"A", "1"})},
        Output{"OfBlanksAtTheEnd", "Controller", General("A : 1{ }"), "", Controller({"A", "1"})},
        Output{"OfColons", "Controller", General("A:{:}"), "", Controller({"A", "{:}"})},
        Output{"BehindTheCount", "Count", "RAID Controller : 0{x}", "", Well},
        Output{"BehindTheVersion", "Version", "Product Version : 3.9{x}", "", Well},
        Output{"BeforeTheVersion", "Version", "{x}\nProduct Version : 3.9", "", Well},
        Output{"BehindAGroup", "GroupOfOneDrive", "RG No. : RG0\n>>PD3(ONLINE){x}", "", Well}),
    NameOfOutput);

INSTANTIATE_TEST_SUITE_P(
    Version, OneOutputTest,
    ::testing::Values(
        Output{"WithoutMinorNumber", "Version", "Product Version : 4.\n", "", NoSmart},
        Output{"WithoutMajorNumber", "Version", "Product Version : .4\n", "", Well},
        Output{"OfADotOnly", "Version", "Product Version : .\n", "", Well},
        Output{"OfThreeParts", "Version", "Product Version : 4.1.2\n", "", Well},
        Output{"OfOnePart", "Version", "Product Version : 4\n", "", Well},
        Output{"ThatIsNegative", "Version", "Product Version : -4.1\n", "", Well},
        Output{"ThatIsHuge", "Version", "Product Version : 99999999999999999999.1\n", "", NoSmart},
        Output{"ThatIsNoNumber", "Version", "Product Version : four.one\n", "", Well},
        Output{"OfBlanks", "Version", "Product Version :    \n", "", Well},
        Output{"WithoutKey", "Version", "Version : 4.1\n", "", Well},
        Output{"WithoutColon", "Version", "Product Version 4.1\nProduct Version : 4.1\n", "", Well},
        Output{"ThatIsACarriageReturn", "Version", "Product Version :\r\n", "", Well},
        Output{"EndingWithTheColon", "Version", "Product Version :\n", "", NoVersion},
        Output{"EndingTheReportWithTheColon", "Version", "Product Version :", "", NoVersion},
        Output{"EndingWithTheColonAfterAFailure", "Version", "Product Version :\n", "exit 1", Failure}),
    NameOfOutput);

TEST_F(OutputTest, TheToolReadsTheStandardInputOfTheHost) {
    const std::string input = m_Root.Path() / "input";
    testsupport::WriteFile(input, "A : 1\n");
    const int old = ::dup(STDIN_FILENO);
    const int file = ::open(input.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::dup2(file, STDIN_FILENO), STDIN_FILENO);
    Print(CommandNamed("Controller"), General(""));
    m_Tool.UseScript(R"(simulate "$@"; [ "$arguments" != '-ctrlinfo -a0' ] || cat)");
    Expect(Call(), Controller({"A", "1"})(CommandNamed("Controller")));
    ::dup2(old, STDIN_FILENO);
    ::close(old);
    ::close(file);
}

}  // namespace
