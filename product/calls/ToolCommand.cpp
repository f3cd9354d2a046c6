#include "calls/ToolCommand.h"

#include "basics/Words.h"

#include <algorithm>
#include <vector>

namespace calls {
namespace {

std::string ReportName(const std::vector<std::string_view>& words) {
    const std::string_view report = words.size() > 1 ? words[1] : "";
    if (report == "-ctrlinfo") {
        return "controller data";
    }
    if (report == "-ldpdinfo") {
        return "logical drives";
    }
    if (report == "-pdinfo") {
        constexpr std::string_view kDrive = "-pd[";
        for (const std::string_view word : words) {
            if (word.starts_with(kDrive) && word.ends_with(']')) {
                return "drive " + std::string(word.substr(kDrive.size(), word.size() - kDrive.size() - 1));
            }
        }
        return "physical drives";
    }
    return report == "-v" ? "version of the tool" : "report";
}

}  // namespace

std::string DescribeCommand(std::string_view command) {
    constexpr std::string_view kController = "-a";
    const std::vector<std::string_view> words = basics::Words(command);
    std::string text = ReportName(words);
    if (words.size() > 1 && words.back() == "-aAll") {
        text = "all controllers: " + text;
    } else if (words.size() > 1 && words.back().starts_with(kController)) {
        text = "controller " + std::string(words.back().substr(kController.size())) + ": " + text;
    }
    text.append(" (").append(command).append(")");
    std::replace_if(
        text.begin(), text.end(), [](char character) { return character < ' ' || character > '~'; }, '?');
    return text;
}

}  // namespace calls
