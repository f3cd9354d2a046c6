#include "HostedProvider.h"

#include "test_support/MethodCaller.h"
#include "test_support/Pattern.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace testsupport {

namespace {

using Parameters = std::map<std::string, std::string>;
const Parameters kDrive = {{"CtrlNo", "0"}, {"EnclNo", "252"}, {"PDNo", "3"}};

constexpr const char* kDriveReport =
    "PD3(LD0)\n"
    "### General Information ###\n"
    "Interface Type : SAS\n"
    "PD Status : ONLINE\n"
    "Temperature : 31 C\n";

// By the stems of the commands.
const std::map<std::string, std::string> kWellTexts = {
    {"v", "Product Version : 3.9\n"},
    {"ctrlinfo_aAll", "RAID Controller : 0\n"},
    {"ctrlinfo_a0", "RAID Controller : 0\n### General Information ###\nProduct Name : Gate SR-4i\n"},
    {"ldpdinfo_a0", "RG0(RAID 1)\nRG No. : RG0\n>LD0(SYSTEM, 9 GB, OPTIMAL)\n>>PD3(ONLINE)\nSlot No. : 3\n"},
    {"pdinfo_a0", kDriveReport},
    {"pdinfo_pd252.3_a0", kDriveReport}};

std::string Hex(DWORD code) {
    char text[16];
    std::snprintf(text, sizeof text, "%08x", code);
    return text;
}

std::vector<pid_t> Children() {
    std::ifstream list("/proc/self/task/" + std::to_string(::gettid()) + "/children");
    return {std::istream_iterator<pid_t>(list), {}};
}

std::string ProcessName(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

// The tool's own processes are named after it.
std::size_t CountShells() {
    const std::vector<pid_t> children = Children();
    return static_cast<std::size_t>(std::count_if(children.begin(), children.end(),
                                                  [](pid_t child) { return ProcessName(child) == "sh"; }));
}

std::ptrdiff_t CountDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

std::vector<std::string> WithoutPaths(std::vector<std::string> lines) {
    constexpr const char* kPath = "[^( ]*/tmp/MSRAID/[0-9a-f]{8,}_[0-9a-f]{8,}_MngSrvRaid\\.txt";
    for (std::string& line : lines) {
        line = testsupport::Replaced(line, kPath, "FILE");
    }
    return lines;
}

std::vector<std::string> WithoutNumbers(std::vector<std::string> names) {
    constexpr const char* kNumbers = "[0-9a-f]{8,}_[0-9a-f]{8,}_";
    for (std::string& name : names) {
        name = testsupport::Replaced(name, kNumbers, "NUMBER_");
    }
    return names;
}

std::string ReasonIn(const std::vector<std::string>& messages) {
    std::string reasons;
    for (const std::string& message : messages) {
        constexpr std::string_view kId = "MSGID_MNGSRV_RAID_0001_F ";
        EXPECT_TRUE(message.starts_with(kId)) << message;
        reasons += message.substr(kId.size());
    }
    return reasons;
}

// A difference in a document of megabytes is not shown by printing it twice.
std::string Shown(const std::string& document) {
    constexpr std::size_t kReadable = 64 * 1024;
    return document.size() <= kReadable
               ? document
               : "a document of " + std::to_string(document.size()) + " bytes, hash " +
                     std::to_string(std::hash<std::string>()(document)) + '\n';
}

std::string Lines(const char* title, const std::vector<std::string>& lines) {
    std::string text = title;
    for (const std::string& line : lines) {
        text += "\n    " + line;
    }
    return text + '\n';
}

// The runs of a well call, with `count` runs of the command at that place, the last one when `isLast`.
std::vector<std::string> RunsWith(const ToolCommand& command, std::size_t count, bool isLast) {
    std::vector<std::string> runs = Success(command.method).runs;
    const auto place = runs.begin() + static_cast<std::ptrdiff_t>(command.place);
    if (isLast) {
        runs.erase(place + 1, runs.end());
    }
    runs.insert(runs.begin() + static_cast<std::ptrdiff_t>(command.place), count - 1, command.arguments);
    return runs;
}

Seen FailureAfter(const ToolCommand& command, std::size_t runs) {
    const bool isFatal = command.name != "Version";
    Seen seen = Success(command.method);
    seen.runs = RunsWith(command, runs, isFatal);
    seen.pauses = runs - 1;
    seen.failures = {"Failed to execute vdkcli command.(vdkcli " + command.arguments + ")"};
    if (isFatal) {
        seen.document = "";
        seen.returnValue = 0xA1;
        seen.reason = "01";
        seen.failures.emplace_back("Failed to execute vdkcli command 000000a1.");
        seen.failures.insert(seen.failures.end(), command.failures.begin(), command.failures.end());
        seen.failures.push_back("CZORBALT_MngSrvRaid::" + command.method + "() Error[reason:01]");
    }
    return seen;
}

}  // namespace

std::string Document(const std::string& items) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RAID version=\"1\">\n" + items + "</RAID>\n";
}

std::string ControllerItems() {
    return R"xml(  <Item Name="Controller Information" Valid="TRUE">
    <Item Name="### General Information ###" Valid="TRUE">
      <Item Name="Controller No." Value="0" Valid="TRUE"/>
      <Item Name="Product Name" Value="Gate SR-4i" Valid="TRUE"/>
    </Item>
  </Item>
)xml";
}

std::string LogicalDriveItems() {
    return R"xml(  <Item Name="Logical Drive Information" Valid="TRUE">
    <Item Name="PD List" Valid="TRUE">
      <Item Name="PD No." Value="PD3" Valid="TRUE"/>
      <Item Name="Slot No." Value="3" Valid="TRUE"/>
    </Item>
  </Item>
)xml";
}

std::string DriveItems() {
    return R"xml(  <Item Name="Physical Drive Information" Valid="TRUE">
    <Item Name="### General Information ###" Valid="TRUE">
      <Item Name="PD No." Value="PD3" Valid="TRUE"/>
      <Item Name="RG No." Value="RG0" Valid="TRUE"/>
      <Item Name="LD No." Value="LD0" Valid="TRUE"/>
      <Item Name="Interface Type" Value="SAS" Valid="TRUE"/>
      <Item Name="PD Status" Value="NO ERROR" Valid="TRUE"/>
      <Item Name="PD Status(Detail)" Value="ONLINE" Valid="TRUE"/>
      <Item Name="Temperature" Value="31 C" Valid="TRUE"/>
    </Item>
  </Item>
)xml";
}

std::string Describe(const Seen& seen) {
    return "status " + Hex(seen.status) + ", return value " + Hex(seen.returnValue) + ", reason " +
           seen.reason + ", pauses " + std::to_string(seen.pauses) + ", descriptors left " +
           std::to_string(seen.descriptorsLeft) + ", shells left " + std::to_string(seen.shellsLeft) + '\n' +
           Lines("runs", seen.runs) + Lines("failures", seen.failures) + Lines("files left", seen.filesLeft) +
           Shown(seen.document);
}

void PrintTo(const ToolCommand& command, std::ostream* out) {
    *out << command.name;
}

const std::vector<ToolCommand>& ToolCommands() {
    static const std::string kController = "CMSRAID_CtrlInfoGetter::GetInfo is FAILED (re=000000a1).";
    static const std::string kGroups = "CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (hr=000000a1).";
    static const std::string kDrives = "CMSRAID_PDInfoGetter::GetInfo is FAILED (re=000000a1).";
    static const std::vector<ToolCommand> commands = {
        {"Version", "v", "-v", "GetInfo", 0, {}},
        {"Count",
         "ctrlinfo_aAll",
         "-ctrlinfo -aAll",
         "GetInfo",
         1,
         {"CMSRAID_CtrlInfoGetter::GetCtrlNum is FAILED (re=000000a1)."}},
        {"Controller", "ctrlinfo_a0", "-ctrlinfo -a0", "GetInfo", 2, {kController}},
        {"LogicalDrives",
         "ldpdinfo_a0",
         "-ldpdinfo -a0",
         "GetInfo",
         3,
         {"CMSRAID_LDInfoGetter::GetInfo is FAILED (re=000000a1)."}},
        {"GroupsOfDrives", "ldpdinfo_a0", "-ldpdinfo -a0", "GetInfo", 4, {kGroups, kDrives}},
        {"Drives", "pdinfo_a0", "-pdinfo -a0", "GetInfo", 5, {kDrives}},
        {"GroupOfOneDrive", "ldpdinfo_a0", "-ldpdinfo -a0", "GetPDInfo", 0, {kGroups, kDrives}},
        {"OneDrive", "pdinfo_pd252.3_a0", "-pdinfo -pd[252:3] -a0", "GetPDInfo", 1, {kDrives}}};
    return commands;
}

const ToolCommand& CommandNamed(const std::string& name) {
    const auto found = std::find_if(ToolCommands().begin(), ToolCommands().end(),
                                    [&name](const ToolCommand& command) { return command.name == name; });
    if (found == ToolCommands().end()) {
        throw std::invalid_argument(name);
    }
    return *found;
}

Seen Success(const std::string& method) {
    Seen seen;
    for (const ToolCommand& command : ToolCommands()) {
        if (command.method == method) {
            seen.runs.push_back(command.arguments);
        }
    }
    seen.document =
        Document(method == "GetInfo" ? ControllerItems() + LogicalDriveItems() + DriveItems() : DriveItems());
    return seen;
}

Seen Well(const ToolCommand& command) {
    return Success(command.method);
}

Seen WithoutController() {
    Seen seen = Success();
    seen.document = Document(LogicalDriveItems() + DriveItems());
    return seen;
}

Seen SuccessAtRun(const ToolCommand& command, std::size_t run) {
    Seen seen = Success(command.method);
    seen.runs = RunsWith(command, run, false);
    seen.pauses = run - 1;
    return seen;
}

Seen Failure(const ToolCommand& command) {
    return FailureAfter(command, 3);
}

Seen Rejection(const ToolCommand& command) {
    return FailureAfter(command, 1);
}

Seen Unreadable(const ToolCommand& command) {
    Seen seen = Success(command.method);
    if (command.name == "Version") {
        return seen;
    }
    seen.document = "";
    seen.returnValue = 0x80000001;
    seen.reason = "04";
    seen.runs.resize(command.place + 1);
    seen.failures = {"Failed to open file output by vdkcli(FILE)."};
    for (std::string line : command.failures) {
        seen.failures.push_back(line.replace(line.find("000000a1"), 8, "80000001"));
    }
    seen.failures.push_back("CZORBALT_MngSrvRaid::" + command.method + "() Error[reason:04]");
    return seen;
}

MisbehaviourTest::MisbehaviourTest() : m_Module(calls::Module::Load(TEST_MODULE_FILE)) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);  // What a run leaves behind becomes this process's, which ends it.
    m_Root.UseLibrary(TEST_CONVERSION_LIBRARY);
    ResetPauses();
    AnswerWell();
}

MisbehaviourTest::~MisbehaviourTest() {
    ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

void MisbehaviourTest::TearDown() {
    EndProcesses();
    ResetPauses();
    m_Tool.StartOver();
    AnswerWell();
    Seen expected = Success(m_LastMethod);
    expected.filesLeft = WithoutNumbers(m_Root.ResultFiles());
    Expect(Call(m_LastMethod), expected);
    EndProcesses();
}

void MisbehaviourTest::AnswerWell() {
    for (const auto& [stem, text] : kWellTexts) {
        m_Tool.Answer(stem + ".txt", text);
    }
}

const std::string& MisbehaviourTest::WellText(const ToolCommand& command) {
    return kWellTexts.at(command.stem);
}

void MisbehaviourTest::Print(const ToolCommand& command, const std::string& text) {
    m_Tool.Answer(command.stem + ".txt", text);
}

void MisbehaviourTest::Instruct(const ToolCommand& command, const std::string& instructions) {
    const bool isSecondRun = command.name == "GroupsOfDrives";
    m_Tool.Answer(command.stem + ".do", (isSecondRun ? "pass-first 1\n" : "") + instructions + '\n');
}

Seen MisbehaviourTest::Call(const std::string& method) {
    m_Trace.Clear();
    m_LastMethod = method;
    const std::size_t runsBefore = ToolBench::Runs().size();
    const std::size_t pausesBefore = PausesTaken();
    const std::ptrdiff_t descriptorsBefore = CountDescriptors();
    Seen seen;
    RecordingSink sink;
    seen.status =
        CallMethod(m_Module.Provider(), method, method == "GetPDInfo" ? kDrive : Parameters{}, sink);
    seen.returnValue = std::get<std::uint32_t>(sink.m_ReturnValue);
    if (const auto* const document = std::get_if<std::string>(&sink.m_XmlData)) {
        seen.document = *document;
    }
    seen.descriptorsLeft = CountDescriptors() - descriptorsBefore;
    seen.shellsLeft = CountShells();
    seen.pauses = PausesTaken() - pausesBefore;
    seen.runs = ToolBench::Runs();
    seen.runs.erase(seen.runs.begin(), seen.runs.begin() + static_cast<std::ptrdiff_t>(runsBefore));
    seen.reason = ReasonIn(m_Trace.Texts(0));
    seen.failures = WithoutPaths(m_Trace.Texts(2));
    seen.filesLeft = WithoutNumbers(m_Root.ResultFiles());
    return seen;
}

std::size_t MisbehaviourTest::EndProcesses() {
    std::size_t running = 0;
    for (std::vector<pid_t> children = Children(); !children.empty(); children = Children()) {
        for (const pid_t child : children) {
            ::kill(child, SIGKILL);
            int status = 0;
            EXPECT_EQ(::waitpid(child, &status, 0), child);
            running += WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL ? 1U : 0U;
        }
    }
    return running;
}

}  // namespace testsupport
