// Runs the cases of a folder through the module as it is built for use and writes down what is to be seen.
//
//     model_replay CASES OBSERVATIONS
//
// Exit status 0: every case has its observation, whatever stands in it.
#include "CaseFile.h"
#include "FrameworkHooks.h"
#include "FrameworkObjects.h"
#include "Json.h"
#include "Ledger.h"
#include "PrivateView.h"
#include "Surroundings.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

replay::Ledger& ReplayLedger() {
    static replay::Ledger ledger;
    return ledger;
}

namespace {

using replay::CaseFile;

constexpr const char* kInside = "REPLAY_INSIDE";
constexpr unsigned kSecondsPerCase = 120;

constexpr const char* kResultFileEnd = "_MngSrvRaid.txt";

/// A result file's name, "00001a2b_00000005_MngSrvRaid.txt", taken apart; what does not fit is kept whole.
struct ResultFileName {
    explicit ResultFileName(const std::string& name) : m_Whole(name) {
        const std::size_t end = name.find('_');
        m_Thread = name.substr(0, end);
        m_Counter = end == std::string::npos ? 0 : std::strtoul(name.c_str() + end + 1, nullptr, 16);
    }
    [[nodiscard]] std::string Expected() const { return WithThread(OwnThread()); }
    [[nodiscard]] std::string WithThread(const std::string& thread) const {
        std::array<char, 32> counter{};
        std::snprintf(counter.data(), counter.size(), "_%08lx", m_Counter);
        return thread + counter.data() + kResultFileEnd;
    }
    [[nodiscard]] bool IsWellFormed() const { return m_Whole == Expected(); }
    static std::string OwnThread() {
        std::array<char, 32> thread{};
        std::snprintf(thread.data(), thread.size(), "%08lx", static_cast<unsigned long>(::gettid()));
        return thread.data();
    }

    std::string m_Whole;
    std::string m_Thread;
    unsigned long m_Counter = 0;
};

struct ToolRun {
    std::string m_Arguments;
    fs::path m_OutputPath;
    std::string m_Descriptors;  ///< those behind which the output file is
    [[nodiscard]] unsigned long Counter() const { return ResultFileName(m_OutputPath.filename()).m_Counter; }
};

std::vector<ToolRun> ReadRunLog() {
    std::vector<ToolRun> runs;
    std::ifstream file(replay::kRunLog);
    std::string line;
    while (std::getline(file, line)) {
        const std::size_t path = line.find('\t') + 1;
        const std::size_t descriptors = line.rfind('\t') + 1;
        runs.push_back(
            {line.substr(0, path - 1), line.substr(path, descriptors - 1 - path), line.substr(descriptors)});
    }
    return runs;
}

std::vector<std::string> FilesIn(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::size_t OpenDescriptors() {
    return FilesIn("/proc/self/fd").size();
}

std::string ItemsAsJson(const std::vector<replay::ItemTexts>& items) {
    std::vector<std::string> values;
    for (const replay::ItemTexts& item : items) {
        values.push_back(replay::json::Texts({item.begin(), item.end()}));
    }
    return replay::json::List(values);
}

std::string TraceAsJson(const replay::TraceRecorder& trace) {
    std::vector<std::string> values;
    for (const auto& [level, text] : trace.Lines()) {
        values.push_back(replay::json::List({std::to_string(level), replay::json::Text(text)}));
    }
    return replay::json::List(values);
}

std::string RunsAsJson(const std::vector<ToolRun>& runs) {
    std::vector<std::string> values;
    for (const ToolRun& run : runs) {
        values.push_back(
            replay::json::List({replay::json::Text(run.m_Arguments), std::to_string(run.Counter())}));
    }
    return replay::json::List(values);
}

std::string StatusesAsJson(const std::vector<std::uint32_t>& statuses) {
    std::vector<std::string> values;
    for (const std::uint32_t status : statuses) {
        values.push_back(std::to_string(status));
    }
    return replay::json::List(values);
}

/// All cases go through one provider, so that what a call leaves behind would show in the next.
class Replay final {
  public:
    explicit Replay(const fs::path& buildRoot)
        : m_Surroundings(buildRoot), m_Module(buildRoot / "cim/libqelp_ZORBALT_MngSrvRaid.so") {}

    /// The observation of one case.
    std::string Observe(const fs::path& folder);

  private:
    DWORD Call(const CaseFile& wanted, unsigned long number, replay::RecordingSink& sink);
    static void AddLedger(replay::json::Object& seen);
    void AddFiles(replay::json::Object& seen, const std::vector<ToolRun>& runs);
    void AddOutput(replay::json::Object& seen, const replay::RecordingSink& sink);
    void LookForRemains(std::size_t descriptors);
    static void Fault(const std::string& text) { ReplayLedger().RecordFault(text); }

    replay::Surroundings m_Surroundings;
    replay::LoadedModule m_Module;
    unsigned long m_NextCounter = 0;
};

DWORD Replay::Call(const CaseFile& wanted, unsigned long number, replay::RecordingSink& sink) {
    CZORBALT_ServerService& provider = m_Module.Provider(wanted.Choice("wrapper", "present", "absent"));
    provider.SetObjectManager(&replay::ManagerFor(wanted));
    const replay::ClassObject input = replay::MakeInput(wanted, number);
    std::string className = "ZORBALT_MngSrvRaid";
    std::string methodName = wanted.Text("method");
    try {
        return provider.ExecMethodAsync(className.data(), methodName.data(), 0, nullptr, input.get(), &sink);
    } catch (const std::exception& exception) {
        Fault(std::string("an exception left the call: ") + exception.what());
        return 0;
    }
}

std::string Replay::Observe(const fs::path& folder) {
    const CaseFile wanted(folder);
    const unsigned long number = std::strtoul(folder.filename().c_str(), nullptr, 10);
    m_Surroundings.Arrange(wanted, folder, number);
    ReplayLedger().Begin(replay::Surroundings::LibraryOrders(wanted));
    const std::size_t descriptors = OpenDescriptors();

    replay::RecordingSink sink;
    replay::json::Object seen;
    {
        replay::TraceRecorder trace;
        seen.Add("hr", std::to_string(Call(wanted, number, sink)));
        seen.Add("trace", TraceAsJson(trace));
    }
    AddLedger(seen);  // before a library that was left open is closed
    LookForRemains(descriptors);
    AddFiles(seen, ReadRunLog());
    AddOutput(seen, sink);

    seen.Add("faults", replay::json::Texts(ReplayLedger().Faults()));
    return seen.Whole();
}

void Replay::AddLedger(replay::json::Object& seen) {
    const replay::Ledger& ledger = ReplayLedger();
    seen.Add("items", ledger.Conversion() ? ItemsAsJson(*ledger.Conversion()) : "null");
    seen.Add("creations", ItemsAsJson(ledger.Creations()));
    seen.Add("created", std::to_string(ledger.Created()));
    seen.Add("deleted", std::to_string(ledger.Deleted()));
    seen.Add("loads", std::to_string(ledger.Loads()));
    seen.Add("unloads", std::to_string(ledger.Unloads()));
    seen.Add("pauses", std::to_string(replay::Hooks().m_Pauses));
}

void Replay::AddFiles(replay::json::Object& seen, const std::vector<ToolRun>& runs) {
    seen.Add("runs", RunsAsJson(runs));
    seen.Add("first_counter", std::to_string(m_NextCounter));
    for (const ToolRun& run : runs) {
        if (run.m_OutputPath.parent_path() != m_Surroundings.ResultFolder() ||
            !ResultFileName(run.m_OutputPath.filename()).IsWellFormed()) {
            Fault("a run wrote to " + run.m_OutputPath.string());
        }
        if (run.m_Descriptors != "1,2") {
            Fault("a run had its output behind the descriptors " + run.m_Descriptors);
        }
        m_NextCounter = std::max(m_NextCounter, run.Counter() + 1);
    }
    std::vector<std::string> left;
    for (const std::string& name : FilesIn(m_Surroundings.ResultFolder())) {
        const ResultFileName parts(name);
        left.push_back(parts.IsWellFormed() ? parts.WithThread("<TID>") : name);
    }
    seen.Add("files_left", replay::json::Texts(left));
    for (const std::string& name : FilesIn(m_Surroundings.OtherResultFolder())) {
        Fault("a file in the wrong folder: " + name);
    }
    m_Surroundings.Clear();
}

void Replay::AddOutput(replay::json::Object& seen, const replay::RecordingSink& sink) {
    WbemValue returnValue;
    WbemValue xml;
    if (sink.m_Output != nullptr) {
        sink.m_Output->Get("ReturnValue", &returnValue);
        sink.m_Output->Get("XmlData", &xml);
        sink.m_Output->AddRef();
        if (sink.m_Output->Release() != 1) {
            Fault("the output instance was not released");
        }
    }
    const auto* const number = std::get_if<std::uint32_t>(&returnValue);
    const auto* const text = std::get_if<std::string>(&xml);
    if (text != nullptr && *text != "<RAID/>") {
        Fault("another text was stored than the library gave");
    }
    if (sink.m_References != 1) {
        Fault("the sink's references do not balance");
    }
    for (const std::string& fault : sink.m_Faults) {
        Fault(fault);
    }
    seen.Add("return_value", number == nullptr ? "null" : std::to_string(*number));
    seen.Add("xml_stored", text == nullptr ? "false" : "true");
    seen.Add("indicates", std::to_string(sink.m_Indicates));
    seen.Add("set_status", StatusesAsJson(sink.m_Statuses));
    // The portable framework has one answer to a method that no provider knows.
    seen.Add("base_status", std::to_string(m_Module.Provider(true).CZORBALT_ServerService::ExecMethodAsync(
                                nullptr, nullptr, 0, nullptr, nullptr, nullptr)));
}

void Replay::LookForRemains(std::size_t descriptors) {
    replay::Ledger& ledger = ReplayLedger();
    ledger.End();
    if (OpenDescriptors() != descriptors) {
        Fault("descriptors: " + std::to_string(descriptors) + " before, " +
              std::to_string(OpenDescriptors()) + " after");
    }
    if (::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD) {
        Fault("a child is left");
    }
    if (replay::Hooks().m_OtherPauses != 0) {
        Fault("a pause of another length");
    }
    // Only an incomplete library may be open still.
    const std::size_t open = ledger.Loads() - ledger.Unloads();
    const std::size_t unloads = ledger.Unloads();
    const bool wasOpen = m_Surroundings.CloseLibrary();
    if (wasOpen != (open == 1) || ledger.Unloads() != unloads + open) {
        Fault("the library's loads and unloads do not balance");
    }
}

int ReplayAll(const fs::path& buildRoot, const fs::path& cases, const fs::path& observations) {
    std::vector<fs::path> folders{fs::directory_iterator(cases), fs::directory_iterator()};
    std::sort(folders.begin(), folders.end());
    // Never destroyed: the framework keeps its providers, and a provider its wrapper, until the process ends.
    static Replay& replay = *new Replay(buildRoot);
    int result = EXIT_SUCCESS;
    for (const fs::path& folder : folders) {
        ::alarm(kSecondsPerCase);  // A call that does not come back ends the replay.
        try {
            std::ofstream(observations / (folder.filename().string() + ".json")) << replay.Observe(folder);
        } catch (const std::exception& exception) {
            std::fprintf(stderr, "%s: %s\n", folder.c_str(), exception.what());
            result = EXIT_FAILURE;
        }
    }
    return result;
}

// The loader notes which folders it may search when the process starts, so the process starts again in its
// view.
[[noreturn]] void StartInside(const fs::path& program, char** arguments, const std::vector<fs::path>& kept) {
    replay::EnterPrivateView(kept);
    fs::create_directories(replay::kLibrarySearchFolder);
    const char* const old = std::getenv("LD_LIBRARY_PATH");
    const std::string search =
        std::string(replay::kLibrarySearchFolder) + (old == nullptr ? "" : ":") + (old == nullptr ? "" : old);
    ::setenv("LD_LIBRARY_PATH", search.c_str(), 1);
    ::setenv(kInside, "1", 1);
    ::execv(program.c_str(), arguments);
    throw std::system_error(errno, std::generic_category(), program.string());
}

}  // namespace

int main(int argumentCount, char** arguments) try {
    if (argumentCount != 3) {
        std::fprintf(stderr, "usage: model_replay CASES OBSERVATIONS\n");
        return EXIT_FAILURE;
    }
    const fs::path program = fs::read_symlink("/proc/self/exe");
    const fs::path buildRoot = program.parent_path().parent_path();
    const fs::path cases = fs::canonical(arguments[1]);
    fs::create_directories(arguments[2]);
    const fs::path observations = fs::canonical(arguments[2]);
    if (std::getenv(kInside) == nullptr) {
        StartInside(program, arguments, {buildRoot, cases, observations});
    }
    return ReplayAll(buildRoot, cases, observations);
} catch (const std::exception& exception) {
    std::fprintf(stderr, "model_replay: %s\n", exception.what());
    return EXIT_FAILURE;
}
