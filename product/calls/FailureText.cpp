#include "FailureText.h"

#include "basics/Words.h"
#include "calls/InstallRoot.h"
#include "calls/ToolCommand.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace calls {
namespace {

struct Reason {
    std::string_view code;
    const char* words;
    const char* advice;
};

constexpr const char* kSeeTrace = "run again with --trace all to see where";

constexpr std::array<Reason, 9> kReasons = {{
    {"01", "the tool's run failed", "run the command that --trace 1,2 shows by hand to see what it says"},
    {"02", "the conversion into XML failed", kSeeTrace},
    {"03", "the tool is not installed", "install it in /opt/zorbalt/vdk, or name a scenario by --scenario"},
    {"04", "the tool's report could not be opened",
     "see that the folder mngsrvraid.* below TMPDIR is left alone"},
    {"05", "the conversion library could not be loaded", "see that cim/ below the install root is complete"},
    {"06", "the tool's report could not be understood",
     "run the command that --trace 1,2 shows by hand and send what it prints to support"},
    {"07", "the caller has no operating authority", "give the right application key by --app-key"},
    {"08", "the document could not be stored in the output", kSeeTrace},
    {"09", "a parameter could not be read", "check the three parameters of get-pd-info"},
}};

const Reason* FindReason(std::string_view code) {
    const auto* const found = std::find_if(kReasons.begin(), kReasons.end(),
                                           [code](const Reason& reason) { return reason.code == code; });
    return found == kReasons.end() ? nullptr : found;
}

std::string Hex(DWORD value) {
    return "0x" + basics::Digits(value, 8, 16);
}

std::vector<std::string_view> SplitCodes(std::string_view reasons) {
    constexpr std::size_t kCodeSize = 2;
    std::vector<std::string_view> codes;
    for (; !reasons.empty(); reasons.remove_prefix(std::min(kCodeSize, reasons.size()))) {
        codes.push_back(reasons.substr(0, kCodeSize));
    }
    return codes;
}

std::string InWords(std::string_view code) {
    const Reason* const reason = FindReason(code);
    return std::string(reason == nullptr ? "unknown reason" : reason->words) + " (" + std::string(code) + ")";
}

bool IsOfReport(std::string_view code) {
    return code == "01" || code == "04" || code == "06";
}

std::string Advice(std::string_view code, const FailureSetting& setting) {
    if (IsOfReport(code) && setting.run && !setting.run->obstacle.empty()) {
        return "result files cannot be written below " + ResultPlace() + ": " + setting.run->obstacle +
               "; name another directory by the variable TMPDIR";
    }
    if (code == "01" && setting.isOfOneDrive) {
        return "check that there is such a drive (get-info lists them), or see what --trace 1,2 shows";
    }
    if ((code == "01" || code == "06") && !setting.scenario.empty()) {
        return "look at the scenario " + setting.scenario + ", and at what --trace 1,2 shows";
    }
    const Reason* const reason = FindReason(code);
    return reason == nullptr ? kSeeTrace : reason->advice;
}

/// Which report of the tool the reason is about, and how that came to be; empty for one that is about none.
std::string Place(std::string_view code, const FailureSetting& setting) {
    if (!IsOfReport(code) || !setting.command) {
        return "";
    }
    const std::string run = setting.run ? DescribeRun(*setting.run) : "";
    return " at " + DescribeCommand(*setting.command) + (run.empty() ? "" : ": " + run);
}

}  // namespace

std::string DescribeMethodFailure(DWORD returnValue, const std::optional<std::string>& reasons,
                                  const FailureSetting& setting) {
    std::string text = setting.call + " failed with return value " + Hex(returnValue) + ": ";
    const std::vector<std::string_view> codes = SplitCodes(reasons ? *reasons : std::string_view());
    if (codes.empty()) {
        return text + "no reason was given; " + kSeeTrace;
    }
    text += InWords(codes.front());
    for (std::size_t older = 1; older < codes.size(); ++older) {
        text += ", before that " + InWords(codes[older]);
    }
    return text + Place(codes.back(), setting) + "; " + Advice(codes.front(), setting);
}

std::string DescribeCallFailure(const MethodOutcome& outcome, const FailureSetting& setting) {
    if (outcome.status == WBEM_S_NO_ERROR) {
        return setting.call + " ended without a result; " + kSeeTrace;
    }
    std::string text = setting.call + " failed with WBEM status " + Hex(outcome.status) + ": ";
    switch (outcome.status) {
        case WBEM_E_NOT_SUPPORTED:
            return text + "the class repository does not have the provider's class; check the installation";
        case WBEM_E_INVALID_METHOD:
            return text + "the module does not know the method; module and command do not fit together";
        default:
            text += outcome.exception.empty() ? "an exception inside the module" : outcome.exception;
            return text + "; " + kSeeTrace;
    }
}

}  // namespace calls
