#include "Documents.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace views::test {
namespace {

// 2031-04-05 06:07:08 UTC
constexpr std::chrono::seconds kTime{1933135628};

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isPlain = byte >= ' ' && character != '&' && character != '<' && character != '"';
        escaped += isPlain ? std::string(1, character) : "&#" + std::to_string(byte) + ";";
    }
    return escaped;
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += text;
    }
    return joined;
}

inventory::Snapshot SnapshotOfXml(const std::string& xml) {
    return SnapshotWith(inventory::Document::Read(xml), {});
}

}  // namespace

inventory::Snapshot SnapshotWith(inventory::Document document, std::vector<inventory::DriveAnswer> answers) {
    inventory::Snapshot snapshot(std::move(document), "", std::move(answers));
    snapshot.takenAt = std::chrono::system_clock::time_point(kTime);
    return snapshot;
}

std::string DocumentOf(const std::string& scenario, const std::vector<std::string>& drive) {
    std::vector<std::string> words = {"--scenario", scenario, drive.empty() ? "get-info" : "get-pd-info"};
    words.insert(words.end(), drive.begin(), drive.end());
    return testsupport::RunCommand(std::move(words)).out;
}

inventory::Snapshot SnapshotOf(const std::string& scenario, const std::vector<std::string>& drive) {
    return SnapshotOfXml(DocumentOf(scenario, drive));
}

inventory::Snapshot SnapshotWithSmart(const std::string& scenario) {
    inventory::Document document = inventory::Document::Read(DocumentOf(scenario));
    std::vector<std::vector<std::string>> drives;
    for (const inventory::Controller& controller : inventory::Survey(document).controllers) {
        for (const inventory::Drive& drive : controller.drives) {
            drives.push_back({controller.number, drive.enclosure, drive.slot});
        }
    }
    std::vector<inventory::DriveAnswer> answers;
    for (const std::vector<std::string>& drive : drives) {
        // Some drives of some scenarios are made to fail.
        if (const std::string xml = DocumentOf(scenario, drive); !xml.empty()) {
            answers.push_back({drive[0], drive[1], drive[2], inventory::Document::Read(xml)});
        }
    }
    EXPECT_FALSE(answers.empty()) << scenario;
    return SnapshotWith(std::move(document), std::move(answers));
}

inventory::Snapshot SnapshotFrom(const std::string& items) {
    return SnapshotOfXml("<RAID version=\"1\">" + items + "</RAID>");
}

std::string ItemXml(const std::string& name, const std::string& value) {
    return "<Item Name=\"" + Escaped(name) + "\" Value=\"" + Escaped(value) + "\" Valid=\"TRUE\"/>";
}

std::string ParentXml(const std::string& name, const std::vector<std::string>& items) {
    return "<Item Name=\"" + Escaped(name) + "\" Valid=\"TRUE\">" + Joined(items) + "</Item>";
}

std::string DriveXml(const std::string& slot, const std::vector<std::string>& keys,
                     const std::vector<std::string>& sections) {
    std::vector<std::string> general = keys;
    const auto add = [&](const std::string& name, const std::string& value) {
        const std::string item = ItemXml(name, value);
        const std::string start = item.substr(0, item.find(" Value="));
        if (std::none_of(keys.begin(), keys.end(), [&](const auto& key) { return key.starts_with(start); })) {
            general.push_back(item);
        }
    };
    add("PD No.", "PD" + slot);
    add("PD Status", "NO ERROR");
    add("PD Status(Detail)", "ONLINE");
    std::vector<std::string> items = {
        ParentXml("### General Information ###", general),
        ParentXml("### Enclosure Properties Information ###",
                  {ItemXml("Enclosure No.", "252"), ItemXml("Slot No.", slot)})};
    items.insert(items.end(), sections.begin(), sections.end());
    return ParentXml("Physical Drive Information", items);
}

std::string ControllerXml(const std::vector<std::string>& keys) {
    std::vector<std::string> general = keys;
    general.push_back(ItemXml("Controller No.", "0"));
    return ParentXml("Controller Information", {ParentXml("### General Information ###", general)});
}

std::string WellControllerXml(const std::string& number) {
    return ParentXml(
        "Controller Information",
        {ParentXml("### General Information ###",
                   {ItemXml("Controller No.", number), ItemXml("Product Name", "Gate")}),
         ParentXml("### Controller Settings Information ###", {ItemXml("Rebuild Rate", "30 %")})});
}

testsupport::Ended RunScript(const std::string& script, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VIEWS_TEST_FOLDER "/" + script);
    return testsupport::Command{.words = std::move(arguments), .program = VIEWS_TEST_PYTHON}.Run();
}

std::string Ask(const std::string& script, const std::vector<std::string>& arguments) {
    const testsupport::Ended ended = RunScript(script, arguments);
    if (ended.ExitStatus() == 0) {
        return "";
    }
    const std::string complaint = ended.out + ended.err;
    return complaint.empty() ? script + " ended without a word" : complaint;
}

}  // namespace views::test
