#include "Browser.h"

#include "Documents.h"

#include <gtest/gtest.h>

#include <vector>

namespace views::test {
namespace {

using testsupport::Command;
using testsupport::Ended;
using testsupport::ReadFile;
using testsupport::TempFolder;

/// Runs the browser on a page, with a profile and a home of its own.
Ended Browse(const TempFolder& folder, const std::string& page, const Look& look, const std::string& task) {
    folder.Write("page.html", page);
    const std::string size = std::to_string(look.width) + "," + std::to_string(look.height);
    std::vector<std::string> words = {"120",  // seconds; it takes two
                                      "chromium",
                                      "--headless",
                                      "--no-sandbox",
                                      "--disable-gpu",
                                      "--disable-dev-shm-usage",
                                      "--no-first-run",
                                      "--hide-scrollbars",
                                      "--force-device-scale-factor=1",
                                      "--user-data-dir=" + folder / "profile",
                                      "--window-size=" + size,
                                      task};
    if (look.isDark) {
        words.emplace_back("--blink-settings=preferredColorScheme=0");
    }
    words.push_back("file://" + folder / "page.html");
    const Command command{
        .words = words, .environment = {{"HOME", folder.Path().string()}}, .program = "/usr/bin/timeout"};
    Ended ended = command.Run();
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    return ended;
}

void Replace(const std::string& from, const std::string& to, std::string& text) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
}

/// The page in a frame, because windows have a least width that is more than a phone's.
std::string Framed(std::string page, const Look& look) {
    Replace("&", "&amp;", page);
    Replace("\"", "&quot;", page);
    return "<!DOCTYPE html><meta name=\"color-scheme\" content=\"light dark\"/>"
           "<iframe style=\"border: 0\" width=\"" +
           std::to_string(look.width) + "\" height=\"" + std::to_string(look.height) + "\" srcdoc=\"" + page +
           "\"></iframe>";
}

/// The text of the attribute that the probe leaves.
std::string ProbeIn(const std::string& dom) {
    const std::string start = "data-probe=\"";
    const std::size_t first = dom.find(start);
    if (first == std::string::npos) {
        return "null";
    }
    std::string text = dom.substr(first + start.size());
    text.resize(text.find('"'));
    Replace("&quot;", "\"", text);
    Replace("&lt;", "<", text);
    Replace("&gt;", ">", text);
    Replace("&amp;", "&", text);
    return text;
}

}  // namespace

nlohmann::json Probe(const std::string& page, const Look& look) {
    const TempFolder folder;
    const std::string script = "<script>" + ReadFile(VIEWS_TEST_FOLDER "/probe.js") + "</script>";
    std::string probed = page;
    probed.insert(probed.rfind("</body>"), script);
    const nlohmann::json probe =
        nlohmann::json::parse(ProbeIn(Browse(folder, Framed(probed, look), look, "--dump-dom").out));
    EXPECT_EQ(probe["width"], look.width);
    EXPECT_EQ(probe["isDark"], look.isDark);
    EXPECT_GT(probe["texts"], 3);
    return probe;
}

nlohmann::json ColorsIn(const std::string& page, const Look& look, const nlohmann::json& boxes) {
    const TempFolder folder;
    const std::string picture = folder / "page.png";
    (void)Browse(folder, page, look, "--screenshot=" + picture);
    const Ended ended = RunScript("picture.py", {picture, boxes.dump()});
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    return nlohmann::json::parse(ended.out);
}

}  // namespace views::test
