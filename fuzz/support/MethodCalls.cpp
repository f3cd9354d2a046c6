#include "MethodCalls.h"

#include "CheckedLibrary.h"
#include "FrameworkCaller.h"
#include "InstallRoots.h"
#include "Property.h"
#include "ResultFiles.h"
#include "ScriptedTool.h"
#include "itemconv/ResultCode.h"

#include "qel/portable/CTraceOutput.h"

#include <algorithm>
#include <array>
#include <string>

namespace fuzzing {
namespace {

/// What the first section asks for.
struct CallPlan {
    Root root = Root::Plain;
    bool hasKey = false;
    std::vector<std::string> parameters;
};

CallPlan Prepare(std::string_view section) {
    constexpr unsigned kUnlessAsked = 1;
    CallPlan plan;
    for (Directive directive; TakeDirective(section, directive);) {
        switch (directive.what) {
            case 'u':
                ScriptedTool::UninstallFrom(directive.value);
                break;
            case 'r':
                CheckedLibrary::RefuseItemsFrom(std::size_t{directive.value} + 1);
                break;
            case 'R':
                CheckedLibrary::RefuseInterface();
                break;
            case 'k':
                plan.root = Root::WithKey;
                plan.hasKey = directive.value == kUnlessAsked;
                break;
            case 'l':
                plan.root = Root::WithoutLibrary;
                break;
            default:
                break;
        }
    }
    for (const std::string_view word : Split(section, ' ')) {
        plan.parameters.emplace_back(word);
    }
    return plan;
}

constexpr std::string_view kToolFailed = "01";
constexpr std::string_view kConversionFailed = "02";
constexpr std::string_view kNotInstalled = "03";
constexpr std::string_view kReportNotReadable = "04";
constexpr std::string_view kNoLibrary = "05";
constexpr std::string_view kReportNotParsable = "06";
constexpr std::string_view kNoAuthority = "07";
constexpr std::string_view kParameter = "09";

struct Failure {
    ResultCode code;
    std::string_view reason;
};

// "08", a document that cannot be stored, needs a framework that is not this one.
constexpr std::array<Failure, 8> kFailures = {{{msraid::kToolOrXmlFailed, kToolFailed},
                                               {msraid::kToolOrXmlFailed, kConversionFailed},
                                               {msraid::kToolNotInstalled, kNotInstalled},
                                               {msraid::kGeneralFailure, kReportNotReadable},
                                               {msraid::kGeneralFailure, kNoLibrary},
                                               {msraid::kGeneralFailure, kReportNotParsable},
                                               {msraid::kNoAuthority, kNoAuthority},
                                               {msraid::kGeneralFailure, kParameter}}};

void CheckClosings(std::size_t loads) {
    Require(InstallRoots::LibraryClosings() == loads, "the library is closed as often as it was loaded");
}

/// Exactly the failures that were scripted happened.
void CheckReason(const CallPlan& plan, const CallResult& result, std::size_t parameters) {
    const std::string& reason = result.messages.front();
    const bool isKnown = std::any_of(kFailures.begin(), kFailures.end(), [&](const Failure& each) {
        return each.code == result.returnValue && each.reason == reason;
    });
    Require(isKnown, "a failure has its return value and its reason");
    Require((reason == kNotInstalled) == ScriptedTool::IsMissingAtFirst(),
            "reason 03: the tool was not there at first");
    Require(
        (reason == kNoAuthority) == (plan.root == Root::WithKey && !plan.hasKey && reason != kNotInstalled),
        "reason 07: the caller lacks the key");
    Require((reason == kNoLibrary) == (plan.root == Root::WithoutLibrary && reason != kNotInstalled),
            "reason 05: the library is not there");
    Require((reason == kConversionFailed) == CheckedLibrary::HasRefusedTheInterface(),
            "reason 02: the library refused");
    const bool isBeforeParameters = reason == kNotInstalled || reason == kNoAuthority || reason == kNoLibrary;
    Require((reason == kParameter) == (plan.parameters.size() < parameters && !isBeforeParameters),
            "reason 09: a parameter is missing");
    CheckClosings(isBeforeParameters ? 0 : 1);
    if (reason == kToolFailed || reason == kReportNotReadable || reason == kReportNotParsable) {
        const bool failed = ScriptedTool::HasLastCommandFailed();
        const bool noFile = ScriptedTool::HasLastCommandNoFile();
        Require((reason == kToolFailed) == failed, "reason 01: the last command came to no good end");
        Require((reason == kReportNotReadable) == (!failed && noFile), "reason 04: it left no report");
    }
    Require(!result.hasDocument, "a document comes with success only");
}

void CheckSuccess(const CallPlan& plan, const CallResult& result, std::size_t parameters) {
    Require(result.messages.empty(), "success has no message");
    Require(result.hasDocument && result.document == CheckedLibrary::LastDocument(),
            "the document is the one that the library made");
    Require(plan.root != Root::WithoutLibrary && (plan.root != Root::WithKey || plan.hasKey),
            "nobody gets a document without the library or the key");
    Require(plan.parameters.size() >= parameters, "every parameter is needed");
    Require(!ScriptedTool::HasLastCommandFailed() && !ScriptedTool::HasLastCommandNoFile(),
            "no document is made without a report");
    Require(!CheckedLibrary::HasRefusedAnItem() && !CheckedLibrary::HasRefusedTheInterface(),
            "no document lacks an item");
    CheckClosings(1);
}

/// Whether the version query ends in an exception for this text: a colon ends the line of the version.
bool HasNoVersionBehindColon(std::string_view text) {
    const std::size_t key = text.find("Product Version");
    if (key == std::string_view::npos) {
        return false;
    }
    std::string_view line = text.substr(0, text.find('\n', key));
    line.remove_prefix(line.rfind('\n') == std::string_view::npos ? 0 : line.rfind('\n') + 1);
    return line.find(':') == line.size() - 1;
}

void CheckException(const CallResult& result, bool isInVersionQuery) {
    Require(result.status == WBEM_E_FAILED && result.returnValue == msraid::kDispatchException,
            "an exception has its status and its return value");
    Require(!result.hasDocument && result.messages.empty(), "an exception leaves no document and no message");
    if (isInVersionQuery) {
        Require(ScriptedTool::Commands() == 1 && HasNoVersionBehindColon(ScriptedTool::LastText()),
                "GetInfo throws for one reason only");
    }
    CheckClosings(isInVersionQuery ? 0 : 1);
}

class SilentListener final : public ITraceListener {
  public:
    void OnTrace(const TraceLine& line) noexcept override {
        Require(line.category == "msraid", "every line is the module's");
    }
};

CallResult Call(FrameworkCaller& caller, const Sections& sections, std::size_t parameters) {
    CheckedLibrary::Begin();
    ScriptedTool::Begin(sections);
    const CallPlan plan = Prepare(sections.front());
    InstallRoots::Process().Use(plan.root);
    CallResult result = caller.Call(plan.parameters, plan.hasKey);

    Require(result.indications == 1 && result.statuses == 1, "a call has one result and one status");
    const bool failsInVersionQuery = parameters == 0 && result.status != 0;
    if (result.status != 0) {
        CheckException(result, failsInVersionQuery);
    } else if (result.returnValue != msraid::kSuccess) {
        Require(result.messages.size() == 1, "a failure has one message");
        CheckReason(plan, result, parameters);
    } else {
        CheckSuccess(plan, result, parameters);
    }
    CheckedLibrary::RequireNothingAlive();
    Require(!ResultFiles::IsOneOpen(), "no report is left open");

    // The version query's file stays when a colon ends its line, and only that.
    Require(ResultFiles::RemoveAll() == (failsInVersionQuery ? 1U : 0U), "no result file is left");
    return result;
}

}  // namespace

void CheckMethod(const char* method, std::string_view input) {
    const std::size_t parameters = std::string_view(method) == "GetPDInfo" ? 3 : 0;
    static FrameworkCaller caller(method);
    const Sections sections = Split(input, kSectionEnd);
    const CallResult result = Call(caller, sections, parameters);
    if (IsRunTwice(input)) {
        SilentListener listener;
        CTraceOutput::SetListener(&listener);
        Require(Call(caller, sections, parameters) == result,
                "the same reports give the same answer, watched or not");
        CTraceOutput::SetListener(nullptr);
    }
}

}  // namespace fuzzing
